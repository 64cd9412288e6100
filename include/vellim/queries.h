/* What an image's tags mean: its header, colour table, strips and resolution. The image must be in
 * memory (GetTiffImage); the file isn't touched.
 *
 * A DPI value is one 32-bit number: dots per inch, horizontal in the low 16 bits, vertical in the
 * high 16. */
#ifndef VELLIM_QUERIES_H
#define VELLIM_QUERIES_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Fills `dimensions`, with a stored height of 0 taken as 1000. Gives 0 or a failure code, which is
 * stored too: 10 (ImageWidth or ImageLength missing, or no such image in memory), 16 (planes, or a
 * depth other than 1, 4, 8 or 24). ResolutionUnit 1 and 2 count as inches, 3 as centimetres
 * (TIFF 6.0, section 8); any other unit gives a resolution of 0. A missing resolution is the
 * display's. A resolution above 31 bits becomes the highest number of 31 bits. */
VELLIM_API int32_t GetTiffDimensions(TiffFileHandle file, int32_t image,
                                     TiffDimensions* dimensions);

/* A new block of a TiffDimensions and its colour table, which the caller frees with GlobalFree, or
 * 0: the codes of GetTiffDimensions, 1 (memory), 10 (a palette image without ColorMap). */
VELLIM_API GlobalHandle GetTiffRGBQuad(TiffFileHandle file, int32_t image);

/* Lines a strip, at most the height; 0 when there is no ImageLength. */
VELLIM_API uint32_t GetTiffRowsPerStrip(TiffFileHandle file, int32_t image);

/* Number of strips; 0 when there are no StripOffsets. */
VELLIM_API uint32_t GetTiffStripCount(TiffFileHandle file, int32_t image);

/* Stores the image's DPI value through `dpi`, each direction cut to its low 16 bits. Gives 0, or 10
 * for a null `dpi`. */
VELLIM_API int32_t GetTiffImageDPI(TiffFileHandle file, int32_t image, uint32_t* dpi);

/* Stores a DPI value as XResolution and YResolution; ResolutionUnit stays as it is. 0, or 10. */
VELLIM_API int32_t SetTiffImageDPI(TiffFileHandle file, int32_t image, uint32_t dpi);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_QUERIES_H */
