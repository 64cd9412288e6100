/* The platform operations that a host needs beside the library's own calls: memory blocks, files,
 * the display's figures, message boxes and the cursor. They do what the library relies on, on any
 * system; all are safe to call from several threads at once. */
#ifndef VELLIM_PLATFORM_H
#define VELLIM_PLATFORM_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Memory blocks: bytes behind a 32-bit handle. ---- */

enum GlobalMemoryFlags {
    GMEM_FIXED = 0,
    GMEM_MOVEABLE = 0x2,
    GMEM_ZEROINIT = 0x40,
    GHND = GMEM_MOVEABLE | GMEM_ZEROINIT
};

/* A new block of exactly `bytes` bytes, always zero-filled, or 0. A block of 0 bytes is a block. */
VELLIM_API GlobalHandle GlobalAlloc(uint32_t flags, uint32_t bytes);

/* Changes a block's size, keeping its bytes. New bytes are zero if `flags` has GMEM_ZEROINIT, else
 * whatever was there. Gives the handle of the block, or 0 with the block left as it was. */
VELLIM_API GlobalHandle GlobalReAlloc(GlobalHandle block, uint32_t bytes, uint32_t flags);

/* The address of a block's bytes, valid until the block is grown or freed, and one more on its lock
 * count; null for a handle that isn't one. */
VELLIM_API void* GlobalLock(GlobalHandle block);

/* One less on the lock count. 1 while the block is still locked, else 0. */
VELLIM_API int32_t GlobalUnlock(GlobalHandle block);

/* Frees the block, locked or not. 0, or `block` for a handle that isn't one. */
VELLIM_API GlobalHandle GlobalFree(GlobalHandle block);

/* The size asked for, in bytes; 0 for a handle that isn't one. */
VELLIM_API uint32_t GlobalSize(GlobalHandle block);

/* Does nothing: there is no heap to be compacted. Gives the largest block that could be had. */
VELLIM_API uint32_t GlobalCompact(uint32_t bytes);

/* The same blocks under the names that edit controls (vellim/dialogs.h) use for theirs. */
typedef GlobalHandle LocalHandle;
enum LocalMemoryFlags {
    LMEM_MOVEABLE = 0x2,
    LMEM_ZEROINIT = 0x40,
    LHND = LMEM_MOVEABLE | LMEM_ZEROINIT
};
VELLIM_API LocalHandle LocalAlloc(uint32_t flags, uint32_t bytes);
VELLIM_API void* LocalLock(LocalHandle block);
VELLIM_API int32_t LocalUnlock(LocalHandle block);
VELLIM_API LocalHandle LocalFree(LocalHandle block);
VELLIM_API uint32_t LocalSize(LocalHandle block);

/* number x numerator / denominator in 64 bits, rounded to the nearest, a half away from zero; -1
 * for a denominator of 0 or a result beyond 32 bits. */
VELLIM_API int32_t MulDiv(int32_t number, int32_t numerator, int32_t denominator);

/* ---- Files. A file handle is positive; -1 is failure. ---- */

enum OpenFileStyle {
    OF_READ = 0x0000,
    OF_WRITE = 0x0001,
    OF_READWRITE = 0x0002,
    OF_SHARE_EXCLUSIVE = 0x0010,
    OF_SHARE_DENY_WRITE = 0x0020,
    OF_SHARE_DENY_READ = 0x0030,
    OF_SHARE_DENY_NONE = 0x0040,
    OF_CREATE = 0x1000, /* make it, or cut it to nothing */
    OF_EXIST = 0x4000   /* ask whether it can be opened, and close it again */
};

#define OFSTRUCT_PATH_BYTES 4096

/* What OpenFile tells of a file. */
typedef struct OFSTRUCT {
    uint32_t cBytes;
    uint32_t nErrCode;                    /* errno of a failure, else 0 */
    char szPathName[OFSTRUCT_PATH_BYTES]; /* full path */
} OFSTRUCT;

/* Opens `path`; `info` may be null. With OF_EXIST the result is positive but no open handle. A
 * folder is no file. */
VELLIM_API int32_t OpenFile(const char* path, OFSTRUCT* info, uint32_t style);

/* Opens an existing file by the low bits of OpenFile's styles. */
VELLIM_API int32_t _lopen(const char* path, int32_t style);

/* The number of bytes read or written, or -1. */
VELLIM_API int32_t _lread(int32_t file, void* buffer, uint32_t bytes);
VELLIM_API int32_t _lwrite(int32_t file, const void* buffer, uint32_t bytes);

/* Moves the position (`origin` 0: start, 1: current position, 2: end) and gives the new one, or -1
 * with the position kept where it can't be told in 31 bits. */
VELLIM_API int32_t _llseek(int32_t file, int32_t offset, int32_t origin);

/* 0, or -1 for a handle that isn't one. */
VELLIM_API int32_t _lclose(int32_t file);

/* 1, or 0. */
VELLIM_API int32_t DeleteFileA(const char* path);
VELLIM_API int32_t MoveFileA(const char* from, const char* to);

/* The number of files that may be open at once, raised to `count` where the system lets it. */
VELLIM_API int32_t SetHandleCount(int32_t count);

/* ---- The display, the cursor, message boxes. ---- */

/* The display that device contexts without a window stand for. */
typedef struct DisplaySettings {
    int32_t DotsPerInchX; /* 96 */
    int32_t DotsPerInchY; /* 96 */
    int32_t BitsPerPixel; /* 1, 8 or 24; 24 */
} DisplaySettings;

/* Sets the display of the whole process: 1, or 0 for figures that make no sense. Null sets the
 * default. */
VELLIM_API int32_t SetDisplay(const DisplaySettings* settings);

enum DeviceCapability {
    BITSPIXEL = 12,
    PLANES = 14,
    NUMCOLORS = 24,
    LOGPIXELSX = 88,
    LOGPIXELSY = 90,
    SIZEPALETTE = 104
};

/* A device context of the display (`window` 0) or of a window (vellim/windows.h), to be given back
 * with ReleaseDC. */
VELLIM_API DeviceContextHandle GetDC(WindowHandle window);
VELLIM_API int32_t ReleaseDC(WindowHandle window, DeviceContextHandle context);

/* A figure of the display; 0 for one that it doesn't have. */
VELLIM_API int32_t GetDeviceCaps(DeviceContextHandle context, int32_t capability);

/* Name of the wait cursor for LoadCursorA, which takes no module. */
#define IDC_WAIT 32514
#define IDC_ARROW 32512

VELLIM_API CursorHandle LoadCursorA(uint32_t module, uintptr_t name);

/* Sets the calling thread's cursor and gives the one before. */
VELLIM_API CursorHandle SetCursor(CursorHandle cursor);

enum MessageBoxStyle { MB_OK = 0, MB_ICONEXCLAMATION = 0x30, MB_TASKMODAL = 0x2000 };
enum { IDOK = 1, IDCANCEL = 2 };

/* Shows a message and gives the button pressed. Without a desktop the message is a line on standard
 * error and the result IDOK. */
VELLIM_API int32_t MessageBoxA(WindowHandle owner, const char* text, const char* caption,
                               uint32_t style);

/* What a person sees stands behind this record. A null function means the headless behaviour. */
typedef struct DesktopDriver {
    int32_t (*MessageBox)(WindowHandle owner, const char* text, const char* caption,
                          uint32_t style);
    void (*ShowCursor)(CursorHandle cursor); /* after each SetCursor, on the calling thread */

    /* Shows a dialog (vellim/dialogs.h) that has had its WM_INITDIALOG, until IsDialogEnded. Coming
     * back before that means that it couldn't be shown. */
    void (*RunDialog)(WindowHandle dialog);
} DesktopDriver;

/* Installs a copy of `driver` for the process; null makes the process headless again. */
VELLIM_API void SetDesktopDriver(const DesktopDriver* driver);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_PLATFORM_H */
