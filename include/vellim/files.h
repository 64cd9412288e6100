/* TIFF files: opening, the table of images, closing.
 *
 * A TiffFileHandle is a table of up to 1000 images, not an open file: every call opens what it
 * needs and closes it again. TIFF 6.0, section 2, has the header and the chain of directories
 * (IFDs) that opening walks. */
#ifndef VELLIM_FILES_H
#define VELLIM_FILES_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A path, its terminator included, takes at most this many bytes. */
#define TIFF_PATH_BYTES 150
#define TIFF_MAX_IMAGES 1000

enum TiffOpenMode {
    T_READ = 0,   /* an existing file */
    T_APPEND = 2, /* an existing file that images are added to; as T_CREAT if it doesn't exist */
    T_CREAT = 3   /* a new file, made by the first write; any other value means this too */
};

/* Bits of an image's flags word, for NumberOfTiffImages. */
enum TiffImageFlags { TIFF_IMAGE_IN_MEMORY = 0x4000, TIFF_ALL_IMAGES = 0x8000 };

typedef struct TiffFileInfo {
    char PathName[TIFF_PATH_BYTES]; /* zero-terminated; empty for a memory TIFF */
    uint16_t ByteOrder;             /* TIFF_LITTLE_ENDIAN or TIFF_BIG_ENDIAN */
    uint32_t ImageCount;
    uint32_t FirstDirectoryOffset; /* of image 0 */
} TiffFileInfo;

/* Opens `path`. Gives a handle that the caller ends with CloseTiffFile, or 0. A chain of
 * directories that breaks behind the first image opens with the images before the break; TiffError
 * then gives 6. Failures: 1, 6 (missing, empty or unreadable), 7 (path), 8 (no 42), 14 (byte order
 * mark). */
VELLIM_API TiffFileHandle OpenTiffFile(const char* path, int32_t mode);

/* The same on the first `size` bytes of the movable block `block`. The block stays the
 * application's, but writing may replace it: GetMemoryTiffHandle gives the current one, whose size
 * is that of the file. With T_CREAT a `block` of 0 or a `size` of 0 begins a new file in memory,
 * which gets its header with the first image. */
VELLIM_API TiffFileHandle OpenTiffInMemory(GlobalHandle block, int32_t size, int32_t mode);

/* The block of a memory TIFF as it is now; 0 for a disk file. It is the application's to free. */
VELLIM_API GlobalHandle GetMemoryTiffHandle(TiffFileHandle file);

/* Frees the handle and the tags of its images. 1, or 0 for a handle that isn't one. */
VELLIM_API int32_t CloseTiffFile(TiffFileHandle file);

/* Fills `info`. 1, or 0 for a bad argument. */
VELLIM_API int32_t GetTiffFileInfo(TiffFileHandle file, TiffFileInfo* info);

/* Changes the path (if `path` is not null) and the byte order (if `byteOrder` is not 0) that later
 * operations use. 1; 0 with code 7 for a path of TIFF_PATH_BYTES or more without its terminator,
 * the byte order still being taken, or with code 14 for an unknown byte order. */
VELLIM_API int32_t ModiTiffFileInfo(TiffFileHandle file, const char* path, int32_t byteOrder);

/* 1 if the tags of `image` are in memory, else 0; code 3 if `image` is outside 0 to 999. */
VELLIM_API int32_t IsTiffImageRegistered(TiffFileHandle file, int32_t image);

/* With TIFF_ALL_IMAGES in `selector`: the number of images. Otherwise the number of images whose
 * whole flags word (subfile type in the low byte, TIFF_IMAGE_IN_MEMORY) equals `selector`. */
VELLIM_API int32_t NumberOfTiffImages(TiffFileHandle file, uint32_t selector);

/* Number of images in the file `path`, or -1 if it can't be opened. */
VELLIM_API int32_t GetNumberOfImagesInTiffFile(const char* path);

/* Asks the platform for `count` file handles and gives what it grants. */
VELLIM_API int32_t SetTiffDllFileHandle(int32_t count);

/* Copies the version text, "Version 6.14", into `buffer` of `size` bytes: with its terminator if
 * `size` is above 13, else the first `size` bytes without one. */
VELLIM_API void GetTiffVersion(char* buffer, int32_t size);

/* The library's entry point: 1 to go on, 0 to refuse. `reason` 0: process detach, 1: process
 * attach, 2 and 3: thread attach and detach; any other is refused. Process attach keeps `instance`
 * as the module that the library's dialogs come from. The shared object calls it itself when it is
 * loaded, with an `instance` of 0: its own dialogs. */
VELLIM_API int32_t DllMain(uint32_t instance, uint32_t reason, void* reserved);

/* The largest image that the library takes on, for the whole process; an image beyond it is
 * refused with code 1 before memory is taken for it. 0 keeps a limit as it is; above 268,435,456
 * (2^28) either limit is that. At the start a line has at most 1,048,576 pixels and a picture at
 * most 16,777,216 lines: A0 at 600 dpi is 19,866 x 28,087. */
VELLIM_API void SetTiffSizeLimits(uint32_t linePixels, uint32_t pictureLines);
VELLIM_API void GetTiffSizeLimits(uint32_t* linePixels, uint32_t* pictureLines);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_FILES_H */
