/* The record of one decoding or encoding run, and the six buffer calls that an engine runs on.
 *
 * An application has no need of this header: it decodes with vellim/decode.h. It is the contract
 * with an engine that is loaded as a module of its own. */
#ifndef VELLIM_CODEC_H
#define VELLIM_CODEC_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes or gives one line. `line` holds the bytes of one line, `lineNumber` counts from 0 at the
 * top of the image, `callbackData` is the caller's own value. Result 0: go on. 3: stop, as a
 * success. Any other: stop, with that failure code. Decoding: the bytes stay the library's and are
 * overwritten by the next line; the callback may change them. Encoding: the callback writes all
 * bytes of the line; what it finds there means nothing, and `line` differs from call to call. */
typedef uint32_t (*LineCallback)(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData);

enum { TIFF_LINE_GO_ON = 0, TIFF_LINE_STOP = 3 };

/* A compression with its options: TIFF Compression in the low 16 bits, options in the high 16. */
typedef uint32_t CompressionKey;

enum TiffCompressionKey {
    TIFF_KEY_NONE = 1,
    TIFF_KEY_CCITT_1D_BARE = 2,  /* the next one, as TIFF names it */
    TIFF_KEY_CCITT_1D = 0x40002, /* TIFF 6.0 section 10: no EOL, lines on byte boundaries */
    TIFF_KEY_GROUP3_1D = 3,      /* T.4 one-dimensional, EOL before each line */
    TIFF_KEY_GROUP3_1D_FILL = 0x40003,
    TIFF_KEY_GROUP3_2D = 0x10003, /* T.4 two-dimensional, EOL and tag bit */
    TIFF_KEY_GROUP3_2D_FILL = 0x50003,
    TIFF_KEY_GROUP4 = 4,                 /* T.6 */
    TIFF_KEY_LZW = 0x10005,              /* TIFF 6.0 section 13 */
    TIFF_KEY_LZW_DIFFERENCING = 0x20005, /* section 14 */
    TIFF_KEY_JPEG = 6,                   /* TIFF 6.0 section 22 */
    TIFF_KEY_PACKBITS = 32773            /* section 9 */
};

/* One run. Packed: never take the address of a field. Handles name movable blocks that the run
 * owns. */
#pragma pack(push, 1)
typedef struct CodecState {
    uint8_t* CodeCursor;    /* next byte of the code buffer */
    uint8_t* LineCursor;    /* next byte of the line buffer */
    uint32_t CodeLeft;      /* bytes left behind CodeCursor */
    uint32_t LineBytesLeft; /* bytes of the line still to be filled or coded */
    int32_t LinePixels;     /* pixels of the line still to be coded; the width at a new line */
    uintptr_t CallbackData;
    uint32_t StripEnded;       /* non-zero: the line just passed on was its strip's last */
    TiffDimensions Dimensions; /* width, height and bits a pixel of the run */
    uint32_t RowBytes;         /* (width x bits + 7) / 8 */
    CompressionKey Key;
    uint32_t LineNumber;     /* of the next line */
    GlobalHandle WorkMemory; /* line area, code buffer, slack */
    StreamHandle Stream;
    uint32_t FillOrder; /* 1 or 2 */
    uint32_t ByteOrder; /* TIFF_LITTLE_ENDIAN or TIFF_BIG_ENDIAN */
    uint8_t* CodeBufferBase;
    uint32_t BufferMark; /* decoding: stream offset of the code buffer's first byte;
                            encoding: bytes free in it when the strip began */
    uint32_t CodeBufferSize;
    uint32_t StreamLimit; /* decoding: length of the stream; encoding: start of the strip */
    uint32_t StripIndex;
    uint32_t StreamCursor; /* decoding: stream offset of the next read; encoding: bytes of the
                              strip already written */
    uint32_t StripCount;
    uint32_t RowsPerStrip;
    uint32_t StripLastLine;    /* number of the strip's last line */
    GlobalHandle StripOffsets; /* 0: the stream is a single run of code */
    uint32_t StripOffsetType;  /* 3: 16-bit entries, else 32-bit entries */
    GlobalHandle StripByteCounts;
    LineCallback Callback;
    uint8_t* LineBuffer;
    uint32_t LineAreaSize; /* RowBytes + 256 */
    uint32_t TileWidth;
    uint32_t TileLength;
    uint32_t TileCount;
    uint16_t TilesAcross;
    uint16_t TilesDown;
    uint16_t Reserved;
    uint16_t JpegProc;
    uint16_t JpegRestartInterval;
    GlobalHandle JpegQTables;
    uint32_t JpegQTableCount;
    GlobalHandle JpegACTables;
    uint32_t JpegACTableCount;
    GlobalHandle JpegDCTables;
    uint32_t JpegDCTableCount;
    uint16_t SubsamplingH;
    uint16_t SubsamplingV;
    uint16_t PlanarConfig;
    uint32_t ReferenceBlackWhite[6]; /* three rationals */
    GlobalHandle JpegScratch;
} CodecState;
#pragma pack(pop)

/* Each takes the run and gives 0, 3 when the image is finished, or a failure code. */

/* Takes the work memory and positions on the first strip. 1 without memory, 6 when the strip can't
 * be reached. */
VELLIM_API uint32_t InitDecodeBuffers(CodecState* state);

/* Reads the next stretch of the stream into the code buffer. 5 at the stream's end, 6 on an I/O
 * failure. */
VELLIM_API uint32_t FillCodeBuffer(CodecState* state);

/* Gives the finished line to the callback and moves on to the next line, and to the next strip at
 * a strip's end (6 when that can't be reached). The callback's own result passes through. */
VELLIM_API uint32_t FlushDataBuffer(CodecState* state);

/* Takes the work memory and fetches the first line from the callback. 1 without memory. */
VELLIM_API uint32_t InitEncodeBuffers(CodecState* state);

/* Closes the strip if the last line ended one (its offset and byte count go into the tables, which
 * the run's owner has made with 32-bit entries), then fetches the next line. */
VELLIM_API uint32_t FillDataBuffer(CodecState* state);

/* Writes the filled part of the code buffer to the stream: whole bytes behind CodeCursor alone. 6
 * when it can't. */
VELLIM_API uint32_t FlushCodeBuffer(CodecState* state);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_CODEC_H */
