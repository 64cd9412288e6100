/* Heads and tails of IOCA image segments and MO:DCA picture data around MMR image data.
 *
 * To write: a head, EncodeMMRImage, a tail. To read: a head, then DecodeMMRImage from the head's
 * DataOffset. All work on a disk file at its position, which a failure leaves where it was met.
 * Numbers in these formats have their high byte first. Results are 1 and 0. */
#ifndef VELLIM_WRAPPERS_H
#define VELLIM_WRAPPERS_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Of these the writers take the resolutions and sizes alone. */
typedef struct IocaHeader {
    uint32_t SegmentName;    /* of Begin Segment, as one number; 0: none */
    uint16_t ImageContentId; /* of Begin Image Content */
    uint16_t XResolution;    /* of the Image Size parameter, in its own unit */
    uint16_t YResolution;
    uint16_t Width; /* pixels */
    uint16_t Height;
    uint16_t CompressionId; /* of the Image Encoding parameter; 1: MMR */
    uint16_t DataLength;    /* of the first Image Data chunk, bytes of code */
    uint32_t DataOffset;    /* file offset of that chunk's 0xFE; 0: there is none */
} IocaHeader;

/* Writes a head of 26 bytes. 0 with code 6 when it can't be written. */
VELLIM_API int32_t WriteIOCAHeader(StreamHandle stream, const IocaHeader* header);

/* Writes the four bytes that end a segment. 0, without a code, when they can't be written. */
VELLIM_API int32_t WriteIOCATail(StreamHandle stream);

/* Writes the three bytes that begin picture data, and an IOCA head. 0 with code 6 when they can't
 * be written. */
VELLIM_API int32_t WriteMODCAHeader(StreamHandle stream, const IocaHeader* header);

/* Writes an IOCA tail and the three bytes that end picture data. Where the picture's head begins at
 * file offset 30 or beyond, the two bytes at offset 28 belong to what the application has put in
 * front of it, and are made to tell how far it is from there to here. Where the head begins before
 * that, as this thread wrote it or as it is found in the file, they are the picture's own and stay.
 * 0 when the tail can't be written: with code 6 where it is the last three bytes, or the way back
 * to them. */
VELLIM_API int32_t WriteMODCATail(StreamHandle stream);

/* Reads a head: bytes up to a Begin Segment (0x70) are passed over, then come Begin Image Content,
 * Image Size, Image Encoding, and, each if it is there, IDE Size and LUT-ID. `header` is zeroed
 * first. On success the file stands behind the length field of the first Image Data chunk, or,
 * where there is none, behind the byte that ended the head or at the file's end. A segment name of
 * 1 to 4 bytes is the number that its bytes make; another has none, and isn't passed over. 0,
 * without a code, on failure; so it is for a file that ends within the head, or can't be sought. */
VELLIM_API int32_t ReadIOCAHeader(StreamHandle stream, IocaHeader* header);

/* The same behind the beginning of picture data, the bytes 0xD3 0xEE 0xFB. 2,048 places are tried
 * for it; a byte that broke off a match isn't tried as the first of another. */
VELLIM_API int32_t ReadMODCAHeader(StreamHandle stream, IocaHeader* header);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_WRAPPERS_H */
