/* Notes: one block of plain text with a box over an image, kept in a tag or burned into the pixels.
 *
 * A note's text is bytes in Windows-1252 up to the first zero byte or the end of its block. Notes
 * have no font or colours of their own: they are measured and drawn with those that the context at
 * hand has. What can't be read or drawn is left out; no text is too bad. */
#ifndef VELLIM_NOTES_H
#define VELLIM_NOTES_H

#include "vellim/base.h"
#include "vellim/graphics.h"
#include "vellim/screen.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The tag that holds a note, HostComputer in TIFF 6.0 (section 8). Its ASCII value is
 * "~,1,O,10,20,110,36,5," and the text behind it: the mark, the version, "O" for opaque or "T", the
 * box from left to bottom, and the size of the text's block. */
enum { NOTE_TAG = 316, NOTE_TAG_BYTES = 1024 /* that a value has at most, terminator left out */ };

/* The record is the caller's; whoever empties it frees `Text`. */
typedef struct NoteRecord {
    int32_t StoreInHeader; /* non-zero: kept apart from the pixels; 0: burned, or no note */
    int32_t Opaque;        /* non-zero: on a solid background */
    GlobalHandle Text;     /* ends with zero, lines with CR and LF; 0: none */
    int32_t Left;          /* the box, a RECT in pixels */
    int32_t Top;
    int32_t Right;
    int32_t Bottom;
    DibHandle Dib; /* the image that it belongs to */
} NoteRecord;

/* Puts a note into the tags of an image in memory (GetTiffImage), in place of one that is there;
 * only writing the image's directory brings it to the file. `StoreInHeader` isn't looked at. A text
 * that makes the value too long is cut. Numbers below 0 don't come back as they are. Non-zero, or
 * 0: the codes of GetTiffImage and DefineTiffImageInfoBuffer, or the code left alone for a null
 * `note` or one without a text. */
VELLIM_API int32_t AddNoteTagToTiff(TiffFileHandle file, uint32_t image, const NoteRecord* note);

/* Reads the note of an image in memory. `Text` is a new block, the caller's, of as many bytes as
 * the value tells (the low 16 bits, at least one), which ends with zero whatever the value has; the
 * block that was in the record isn't freed. `StoreInHeader` becomes 1; `Dib` stays. The version
 * isn't looked at, and anything but "O" is transparent. Numbers beyond 32 bits stay at their edge;
 * bytes that are no digits give some number. 1, or 0 with the record as it was: the codes of
 * GetTiffImage and GetTiffImageInfoBuffer (13: no such tag), or the code left alone for a value
 * that doesn't begin with "~" or ends before its fifth number does, and without memory for the
 * text. */
VELLIM_API int32_t GetNoteTagFromTiff(TiffFileHandle file, uint32_t image, NoteRecord* note);

/* Flags of NotePlus; other bits mean nothing. */
enum NoteFlag {
    NOTE_WITHOUT_DENSITY = 4, /* the scale comes from the ratios alone */
    NOTE_CENTRED = 128        /* the image is shown in the middle of the window */
};

/* Lets a person write, change or delete the note of an image, in the dialog "NOTEITDLG", which
 * `window` owns.
 *
 * Cancel leaves the record as it is: 0.
 *
 * Delete frees `Text` and sets it and `StoreInHeader` to 0; the box and `Opaque` stay: 0.
 *
 * Store puts what was written into `Text`, a new block, with the one before freed, and sets
 * `Opaque` and `StoreInHeader`. A note for the header then gets its box: 1; the caller saves it
 * with AddNoteTagToTiff. One for the pixels stays as written where there is no `Dib`: 0; else it
 * gets its box and is burned into a copy of the image. The copy takes the place of `Dib`, the image
 * stays the caller's, and `Text` is freed and 0: 1. Of one bit a pixel the copy has as many, else
 * as many as the display. Where it can't be made `Dib` stays: Note gives 1, NotePlus 0, and the
 * text is lost, unless the image isn't whole or `window` is none.
 *
 * If the dialog can't be shown the record is as it was: Note gives 1, NotePlus 0. Null for `note`:
 * 0.
 *
 * The box is as large as the text in the window's font; a blank line counts as a line of "WW". Its
 * corner is `point`, a place of the window, divided by the scale, plus `origin`; without a point it
 * is the corner that the record has. Null for `origin` takes how far the window is scrolled, its
 * bars running over all pixels of the image. The scale is the ratios `zoom` (null: 1), where both
 * numbers of an axis are above 0, times the display's density by the image's, where that is above
 * 40 a metre. With NOTE_CENTRED the margin around a picture in the middle of the window is taken
 * off `point`, where it stays taken off. Note has no point, origin, ratios or flags. */
VELLIM_API int32_t Note(WindowHandle window, NoteRecord* note);
VELLIM_API int32_t NotePlus(WindowHandle window, NoteRecord* note, POINT* point,
                            const POINT* origin, const ZoomRatios* zoom, uint32_t flags);

/* The dialog procedure of "NOTEITDLG", which gets the NoteRecord with WM_INITDIALOG and ends the
 * dialog with 0 (Cancel), 1 (Delete) or 2 (Store). Where Store has no memory for the text the
 * dialog stays open. One dialog at a time for each thread. 1 where it handled the message, else 0.
 */
VELLIM_API int32_t NoteDlgFn(WindowHandle dialog, uint32_t message, uint32_t first,
                             uintptr_t second);

/* Where a painted DIB is scrolled to, in pixels of the image. The first two are the caller's own.
 */
typedef struct ScrollRecord {
    int32_t Reserved1;
    int32_t Reserved2;
    int32_t Horizontal;
    int32_t Vertical;
} ScrollRecord;

enum PaintDibFlag { PAINT_DIB_FIT = 8 /* alone */, PAINT_DIB_INVERTED = 32 };

/* Answers a window's paint message (BeginPaint, EndPaint): shows a DIB from the client area's upper
 * left corner, its note over it, and the window's background around it. Nothing is drawn for a
 * `dib` that is 0 or whose block doesn't hold a 40-byte header and all colours and rows that it
 * tells of.
 *
 * With PAINT_DIB_FIT as the only flag the picture covers the client area, each axis drawn out or
 * together for itself, but no more pixels than it has of its own; both bars are hidden and no note
 * is drawn. `scroll`, `zoom` and `note` are not looked at.
 *
 * With any other flags it has its real size, by its density and the display's (a pixel of the
 * display for one of its own where it has none), times the ratios `zoom`, where both numbers of an
 * axis are other than 0; they may be null. A bar is shown where it is larger than the client area
 * and hidden where it isn't. Positions in `scroll` run over all pixels of the image, and those
 * outside count as its edge; null stands for the upper left corner.
 *
 * The note, which may be null, is drawn if it has a text and `StoreInHeader`: from the upper left
 * corner of what is seen of its box, which lies on the scaled image; lines cut to 40 bytes. */
VELLIM_API void PaintDIBWithNote(WindowHandle window, DibHandle dib, const ScrollRecord* scroll,
                                 const ZoomRatios* zoom, uint32_t flags, const NoteRecord* note);

/* Draws a note that has a text and `StoreInHeader` on a context: its corner lies as far from
 * `target` as it does from `base` on the image, times the scales; the box keeps its size. Lines are
 * cut to 40 bytes. Nothing is drawn for a note that begins left of `base` or above it, or for a
 * null pointer. The context keeps the background mode that the note had; `window` isn't looked at.
 */
VELLIM_API void PaintNotePlus(WindowHandle window, DeviceContextHandle dc, const POINT* base,
                              double scaleX, double scaleY, const POINT* target,
                              const NoteRecord* note);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_NOTES_H */
