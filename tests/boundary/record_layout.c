/* The records of the boundary hold each field where an engine or a host built by another compiler
 * looks for it. A row is record, field, offset with 32-bit addresses, offset with 64-bit ones; the
 * field left over is the one at offset 0. Compiled as C11 and as C++20, in both widths. */
#include <stddef.h>

#include "vellim/vellim.h"

#ifdef __cplusplus
#define MUST_HOLD(condition, text) static_assert(condition, text)
#else
#define MUST_HOLD(condition, text) _Static_assert(condition, text)
#endif

#define BY_WIDTH(in32, in64) (sizeof(void*) == 4 ? (in32) : (in64))
#define SIZE(record, in32, in64) \
    MUST_HOLD(sizeof(record) == BY_WIDTH(in32, in64), "size of " #record)
#define FIELD(record, field, in32, in64) \
    MUST_HOLD(offsetof(record, field) == BY_WIDTH(in32, in64), #record "." #field)

MUST_HOLD(sizeof(void*) == 4 || sizeof(void*) == 8, "an address is 32 or 64 bits");
MUST_HOLD(sizeof(uintptr_t) == sizeof(void*), "callbackData is as wide as an address");
MUST_HOLD(sizeof(LineCallback) == sizeof(void*), "a line function is passed as its address");
MUST_HOLD(sizeof(StreamHandle) == 4 && (StreamHandle)-1 < 0, "streams are signed, 32 bits");
MUST_HOLD(sizeof(GlobalHandle) == 4 && (GlobalHandle)-1 > 0, "handles are unsigned, 32 bits");

SIZE(BITMAPINFOHEADER, 40, 40);
FIELD(BITMAPINFOHEADER, biWidth, 4, 4);
FIELD(BITMAPINFOHEADER, biHeight, 8, 8);
FIELD(BITMAPINFOHEADER, biPlanes, 12, 12);
FIELD(BITMAPINFOHEADER, biBitCount, 14, 14);
FIELD(BITMAPINFOHEADER, biCompression, 16, 16);
FIELD(BITMAPINFOHEADER, biSizeImage, 20, 20);
FIELD(BITMAPINFOHEADER, biXPelsPerMeter, 24, 24);
FIELD(BITMAPINFOHEADER, biYPelsPerMeter, 28, 28);
FIELD(BITMAPINFOHEADER, biClrUsed, 32, 32);
FIELD(BITMAPINFOHEADER, biClrImportant, 36, 36);

SIZE(RGBQUAD, 4, 4);
FIELD(RGBQUAD, rgbGreen, 1, 1);
FIELD(RGBQUAD, rgbRed, 2, 2);

SIZE(TiffFileInfo, 160, 160);
FIELD(TiffFileInfo, ByteOrder, 150, 150);
FIELD(TiffFileInfo, ImageCount, 152, 152);
FIELD(TiffFileInfo, FirstDirectoryOffset, 156, 156);

SIZE(LoadLineContext, 28, 40);
FIELD(LoadLineContext, Bitmap, 4, 4);
FIELD(LoadLineContext, HeaderBlock, 8, 8);
FIELD(LoadLineContext, Bits, 12, 16);
FIELD(LoadLineContext, Height, 16, 24);
FIELD(LoadLineContext, LineBytes, 20, 28);
FIELD(LoadLineContext, StrideOrUsage, 24, 32);

SIZE(ZoomRatios, 16, 16);
FIELD(ZoomRatios, XDenominator, 4, 4);
FIELD(ZoomRatios, YNumerator, 8, 8);
FIELD(ZoomRatios, YDenominator, 12, 12);

SIZE(ScreenLineContext, 40, 56);
FIELD(ScreenLineContext, LineBitmap, 4, 4);
FIELD(ScreenLineContext, HeaderBlock, 8, 8);
FIELD(ScreenLineContext, Reserved, 12, 12);
FIELD(ScreenLineContext, RowPixels, 16, 16);
FIELD(ScreenLineContext, LineBytes, 20, 20);
FIELD(ScreenLineContext, ColorUse, 24, 24);
FIELD(ScreenLineContext, Header, 28, 32);
FIELD(ScreenLineContext, RasterOp, 32, 40);
FIELD(ScreenLineContext, Scratch, 36, 48);

SIZE(CalsScreenContext, 92, 96);
FIELD(CalsScreenContext, DeviceContext, 4, 4);
FIELD(CalsScreenContext, LineDC, 8, 8);
FIELD(CalsScreenContext, ImageRect, 12, 12);
FIELD(CalsScreenContext, DestRect, 28, 28);
FIELD(CalsScreenContext, SourceRect, 44, 44);
FIELD(CalsScreenContext, PaintRect, 60, 60);
FIELD(CalsScreenContext, LineBytes, 76, 76);
FIELD(CalsScreenContext, Scratch, 80, 80);
FIELD(CalsScreenContext, RasterOp, 84, 88);
FIELD(CalsScreenContext, RowPixels, 88, 92);

SIZE(SaveLineContext, 32, 48);
FIELD(SaveLineContext, Bitmap, 4, 4);
FIELD(SaveLineContext, HeaderBlock, 8, 8);
FIELD(SaveLineContext, Header, 12, 16);
FIELD(SaveLineContext, Bits, 16, 24);
FIELD(SaveLineContext, Height, 20, 32);
FIELD(SaveLineContext, LineBytes, 24, 36);
FIELD(SaveLineContext, StrideOrUsage, 28, 40);

SIZE(BITMAP, 24, 32);
FIELD(BITMAP, bmWidth, 4, 4);
FIELD(BITMAP, bmHeight, 8, 8);
FIELD(BITMAP, bmWidthBytes, 12, 12);
FIELD(BITMAP, bmPlanes, 16, 16);
FIELD(BITMAP, bmBitsPixel, 18, 18);
FIELD(BITMAP, bmBits, 20, 24);

SIZE(POINT, 8, 8);
FIELD(POINT, y, 4, 4);

SIZE(RECT, 16, 16);
FIELD(RECT, top, 4, 4);
FIELD(RECT, right, 8, 8);
FIELD(RECT, bottom, 12, 12);

SIZE(PALETTEENTRY, 4, 4);
FIELD(PALETTEENTRY, peGreen, 1, 1);
FIELD(PALETTEENTRY, peBlue, 2, 2);
FIELD(PALETTEENTRY, peFlags, 3, 3);

SIZE(LOGPALETTE, 8, 8);
FIELD(LOGPALETTE, palNumEntries, 2, 2);
FIELD(LOGPALETTE, palPalEntry, 4, 4);

SIZE(BITMAPINFO, 44, 44);
FIELD(BITMAPINFO, bmiColors, 40, 40);

SIZE(OFSTRUCT, 4104, 4104);
FIELD(OFSTRUCT, szPathName, 8, 8);

SIZE(DisplaySettings, 12, 12);
FIELD(DisplaySettings, DotsPerInchY, 4, 4);
FIELD(DisplaySettings, BitsPerPixel, 8, 8);

SIZE(DesktopDriver, 12, 24);
FIELD(DesktopDriver, ShowCursor, 4, 8);
FIELD(DesktopDriver, RunDialog, 8, 16);

SIZE(LOGFONT, 60, 60);
FIELD(LOGFONT, lfWeight, 16, 16);
FIELD(LOGFONT, lfItalic, 20, 20);
FIELD(LOGFONT, lfFaceName, 28, 28);

SIZE(TEXTMETRIC, 56, 56);
FIELD(TEXTMETRIC, tmExternalLeading, 16, 16);
FIELD(TEXTMETRIC, tmFirstChar, 44, 44);

SIZE(PAINTSTRUCT, 24, 24);
FIELD(PAINTSTRUCT, rcPaint, 8, 8);

SIZE(NoteRecord, 32, 32);
FIELD(NoteRecord, Text, 8, 8);
FIELD(NoteRecord, Left, 12, 12);
FIELD(NoteRecord, Dib, 28, 28);

SIZE(ScrollRecord, 16, 16);
FIELD(ScrollRecord, Horizontal, 8, 8);

/* Packed: the address at its end isn't aligned. */
SIZE(FaxPageRequest, 486, 490);
FIELD(FaxPageRequest, PageWidth, 256, 256);
FIELD(FaxPageRequest, FontName, 272, 272);
FIELD(FaxPageRequest, PointSize, 400, 400);
FIELD(FaxPageRequest, XResolution, 404, 404);
FIELD(FaxPageRequest, LineSpacing, 412, 412);
FIELD(FaxPageRequest, TabStops, 416, 416);
FIELD(FaxPageRequest, Flags, 480, 480);
FIELD(FaxPageRequest, Font, 482, 482);

/* Packed: an address that follows an odd number of 32-bit fields isn't aligned. */
SIZE(CodecState, 236, 260);
FIELD(CodecState, LineCursor, 4, 8);
FIELD(CodecState, CodeLeft, 8, 16);
FIELD(CodecState, LineBytesLeft, 12, 20);
FIELD(CodecState, LinePixels, 16, 24);
FIELD(CodecState, CallbackData, 20, 28);
FIELD(CodecState, StripEnded, 24, 36);
FIELD(CodecState, Dimensions, 28, 40);
FIELD(CodecState, RowBytes, 68, 80);
FIELD(CodecState, Key, 72, 84);
FIELD(CodecState, LineNumber, 76, 88);
FIELD(CodecState, WorkMemory, 80, 92);
FIELD(CodecState, Stream, 84, 96);
FIELD(CodecState, FillOrder, 88, 100);
FIELD(CodecState, ByteOrder, 92, 104);
FIELD(CodecState, CodeBufferBase, 96, 108);
FIELD(CodecState, BufferMark, 100, 116);
FIELD(CodecState, CodeBufferSize, 104, 120);
FIELD(CodecState, StreamLimit, 108, 124);
FIELD(CodecState, StripIndex, 112, 128);
FIELD(CodecState, StreamCursor, 116, 132);
FIELD(CodecState, StripCount, 120, 136);
FIELD(CodecState, RowsPerStrip, 124, 140);
FIELD(CodecState, StripLastLine, 128, 144);
FIELD(CodecState, StripOffsets, 132, 148);
FIELD(CodecState, StripOffsetType, 136, 152);
FIELD(CodecState, StripByteCounts, 140, 156);
FIELD(CodecState, Callback, 144, 160);
FIELD(CodecState, LineBuffer, 148, 168);
FIELD(CodecState, LineAreaSize, 152, 176);
FIELD(CodecState, TileWidth, 156, 180);
FIELD(CodecState, TileLength, 160, 184);
FIELD(CodecState, TileCount, 164, 188);
FIELD(CodecState, TilesAcross, 168, 192);
FIELD(CodecState, TilesDown, 170, 194);
FIELD(CodecState, Reserved, 172, 196);
FIELD(CodecState, JpegProc, 174, 198);
FIELD(CodecState, JpegRestartInterval, 176, 200);
FIELD(CodecState, JpegQTables, 178, 202);
FIELD(CodecState, JpegQTableCount, 182, 206);
FIELD(CodecState, JpegACTables, 186, 210);
FIELD(CodecState, JpegACTableCount, 190, 214);
FIELD(CodecState, JpegDCTables, 194, 218);
FIELD(CodecState, JpegDCTableCount, 198, 222);
FIELD(CodecState, SubsamplingH, 202, 226);
FIELD(CodecState, SubsamplingV, 204, 228);
FIELD(CodecState, PlanarConfig, 206, 230);
FIELD(CodecState, ReferenceBlackWhite, 208, 232);
FIELD(CodecState, JpegScratch, 232, 256);

SIZE(CalsInfo, 24, 24);
FIELD(CalsInfo, rorient, 4, 4);
FIELD(CalsInfo, rpelcnt, 12, 12);
FIELD(CalsInfo, rdensty, 20, 20);

SIZE(CalsNote, 28, 56);
FIELD(CalsNote, dstdocis, 4, 8);
FIELD(CalsNote, txtfileid, 8, 16);
FIELD(CalsNote, figid, 12, 24);
FIELD(CalsNote, scrgph, 16, 32);
FIELD(CalsNote, doccls, 20, 40);
FIELD(CalsNote, notes, 24, 48);

SIZE(CalsLineContext, 20, 24);
FIELD(CalsLineContext, Height, 4, 8);
FIELD(CalsLineContext, LineBytes, 8, 12);
FIELD(CalsLineContext, Stride, 12, 16);
FIELD(CalsLineContext, Invert, 16, 20);

SIZE(IocaHeader, 24, 24);
FIELD(IocaHeader, ImageContentId, 4, 4);
FIELD(IocaHeader, XResolution, 6, 6);
FIELD(IocaHeader, YResolution, 8, 8);
FIELD(IocaHeader, Width, 10, 10);
FIELD(IocaHeader, Height, 12, 12);
FIELD(IocaHeader, CompressionId, 14, 14);
FIELD(IocaHeader, DataLength, 16, 16);
FIELD(IocaHeader, DataOffset, 20, 20);
