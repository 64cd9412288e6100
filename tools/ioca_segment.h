// IOCA image segments: a row of self-defining fields (a code, a length, data), which tell what the
// image contents of a segment are like and hold their data in chunks.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "coded_page.h"
#include "image_bytes.h"
#include "stray_bytes.h"

namespace vellim::tool {

enum IocaCompression : uint8_t {
    kIocaMmr = 0x01,
    kIocaUncompressed = 0x03,
    kIocaG3 = 0x80,
    kIocaG3TwoD = 0x81,
    kIocaG4 = 0x82,
};

enum IocaColour : uint8_t {
    kIocaRgb = 0x01,
    kIocaYCrCb = 0x02,
    kIocaCmyk = 0x04,
    kIocaYCbCr = 0x12
};

struct ImageContent {
    std::vector<uint8_t> segmentName;
    uint8_t id = 0;
    bool sized = false;
    StatedSize size;
    uint8_t compression = kIocaUncompressed;
    uint8_t recording = 1;  // RIDIC: rows from the left, the top one first
    uint8_t bitOrder = 0;   // not 0: the leftmost pixel in a byte's low bit
    uint32_t pixelBits = 1;
    uint8_t lookUpTable = 0;  // 0: none
    bool structured = false;  // the two below are stated
    bool subtractive = false;
    uint8_t colour = 0;
    std::vector<uint8_t> componentBits;
    bool tiles = false, bands = false, mask = false;
    std::vector<uint32_t> skipped;  // codes of fields that mean nothing here, each once
    uint64_t chunks = 0, dataBytes = 0;
    bool cut = false;  // the bytes end before the content does
};

// A walk through the segments of an image object, from one image content to the next.
struct SegmentWalk {
    ImageBytes bytes;
    bool inSegment = false;
    bool inContent = false;
    std::vector<uint8_t> segmentName;   // of a segment whose beginning the walk has passed
    std::optional<uint64_t> segmentAt;  // of a Begin Segment that no content has followed yet
    uint64_t contentAt = 0;             // where a walk may begin, in the segment, to come to it
    uint8_t contentId = 0;
    StrayBytes stray;  // between the segments passed so far
};

// Goes to behind the next Begin Image Content. False if there is none. Between two segments zeros
// and the short marks of picture data may stand; behind other bytes, which are `stray`, the next
// whole head of a segment is searched for.
bool NextContent(SegmentWalk& walk);

// Goes to the end, and adds to `places` where a walk may begin to come to each content first.
void AddPlaces(SegmentWalk& walk, std::vector<uint64_t>& places);

// Reads the content to its end, and adds its data to `code` if the coding is served: for MMR
// with block headers and the leftmost pixel in the high bit, for all others as it stands. False,
// with the reason in `why`, if they can't be kept.
bool ReadContent(SegmentWalk& walk, ImageContent& content, CodeFile& code, std::string& why);

// The coding of black and white that a compression stands for; nothing if it is none.
std::optional<FaxCoding> CodingOf(uint8_t compression);

}  // namespace vellim::tool
