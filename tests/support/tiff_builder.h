// TIFF files made to measure, byte by byte, without the library: what a test wants to read.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vellim/platform.h"

namespace vellim::test {

using Bytes = std::vector<uint8_t>;

// One directory entry. `value` holds `count` elements of `type` in host (little-endian) order.
struct TagSpec {
    uint16_t tag, type;
    uint32_t count;
    Bytes value;
};

TagSpec ShortTag(uint16_t tag, const std::vector<uint16_t>& values);
TagSpec LongTag(uint16_t tag, const std::vector<uint32_t>& values);
TagSpec RationalTag(uint16_t tag, uint32_t numerator, uint32_t denominator);
TagSpec AsciiTag(uint16_t tag, std::string_view text);  // the terminator is added

// One image: its tags, and its strips as stored. StripOffsets and StripByteCounts (LONG) are added
// unless there are no strips or the tags have them; entries are sorted by tag.
struct ImageSpec {
    std::vector<TagSpec> tags;
    std::vector<Bytes> strips;
};

// The tags that every image has. RowsPerStrip 0 is left out.
ImageSpec SimpleImage(uint32_t width, uint32_t height, uint16_t bits, uint16_t samples,
                      uint16_t compression, uint16_t photometric, uint32_t rowsPerStrip,
                      std::vector<Bytes> strips);

// The file: header; then per image strips, values, directory.
Bytes BuildTiff(const std::vector<ImageSpec>& images, bool bigEndian = false);

// `bytes` in a movable block, which the caller frees; `bytes` as a file, by its path, in a folder
// that goes away with the process.
GlobalHandle BlockOf(const Bytes& bytes);
std::string FileOf(const Bytes& bytes, std::string_view name);

}  // namespace vellim::test
