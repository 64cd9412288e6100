/* VELLIM: scanned-document and fax images. This header includes all the others.
 *
 *   vellim/files.h     open a TIFF file, count its images
 *   vellim/tags.h      read and define the tags of an image
 *   vellim/queries.h   size, colours, strips, resolution
 *   vellim/decode.h    an image, line by line
 *   vellim/load.h      an image as a DIB or a bitmap
 *   vellim/encode.h    an image stored, line by line
 *   vellim/save.h      a DIB or a bitmap stored as an image
 *   vellim/edit.h      tags of stored images changed, images copied from file to file
 *   vellim/cals.h      CALS raster files
 *   vellim/wrappers.h  IOCA and MO:DCA around MMR image data
 *   vellim/failures.h  what went wrong
 *   vellim/streams.h   bytes on disk or in memory
 *   vellim/codec.h     the record of a run, for engines in modules of their own
 *   vellim/platform.h  memory blocks, files, display, message boxes
 *   vellim/graphics.h  bitmaps, palettes, device contexts, drawing
 *   vellim/windows.h   windows, scroll bars, the clipboard
 *   vellim/screen.h    a picture painted straight from its file
 *   vellim/text.h      fonts, measuring and drawing text
 *   vellim/dialogs.h   dialogs, for those who show or answer them
 *   vellim/notes.h     notes on images
 *   vellim/fax.h       pages from text files, text over forms and pictures */
#ifndef VELLIM_VELLIM_H
#define VELLIM_VELLIM_H

#include "vellim/base.h"
#include "vellim/cals.h"
#include "vellim/codec.h"
#include "vellim/decode.h"
#include "vellim/dialogs.h"
#include "vellim/edit.h"
#include "vellim/encode.h"
#include "vellim/failures.h"
#include "vellim/fax.h"
#include "vellim/files.h"
#include "vellim/graphics.h"
#include "vellim/load.h"
#include "vellim/notes.h"
#include "vellim/platform.h"
#include "vellim/queries.h"
#include "vellim/save.h"
#include "vellim/screen.h"
#include "vellim/streams.h"
#include "vellim/tags.h"
#include "vellim/text.h"
#include "vellim/windows.h"
#include "vellim/wrappers.h"

#endif /* VELLIM_VELLIM_H */
