#include "wrappers/ioca_head.h"

#include <optional>

namespace vellim {
namespace {

constexpr uint8_t kBeginSegment = 0x70;
constexpr uint8_t kBeginImageContent = 0x91;
constexpr uint8_t kImageSize = 0x94;
constexpr uint8_t kImageEncoding = 0x95;
constexpr uint8_t kIdeSize = 0x96;
constexpr uint8_t kLutId = 0x97;
constexpr uint8_t kImageData[] = {0xFE, 0x92};

constexpr uint32_t kLongestName = 4;
constexpr uint32_t kSizeBytes = 9;
constexpr int32_t kChunkHeadBytes = 4;

constexpr uint8_t HighByte(uint16_t number) {
    return static_cast<uint8_t>(number >> 8);
}
constexpr uint8_t LowByte(uint16_t number) {
    return static_cast<uint8_t>(number);
}

// A number of up to four bytes.
template <typename T>
bool ReadNumber(HeadReader& reader, T& number, uint32_t bytes = sizeof(T)) {
    uint32_t value = 0;
    for (uint32_t i = 0; i < bytes; i++) {
        const auto byte = reader.Byte();
        if (!byte) return false;
        value = value << 8 | *byte;
    }
    number = static_cast<T>(value);
    return true;
}

// A code that has to come next.
bool ReadCode(HeadReader& reader, uint8_t code) {
    const auto byte = reader.Byte();
    return byte == code;
}

// Code and length of a parameter that has to come next, with so many bytes of data at least. The
// length is what is left of it.
bool BeginParameter(HeadReader& reader, uint8_t code, uint32_t least, uint32_t& left) {
    return ReadCode(reader, code) && ReadNumber(reader, left, 1) && left >= least;
}

bool SkipParameter(HeadReader& reader) {
    const auto length = reader.Byte();
    return length && reader.Skip(*length);
}

bool FindSegment(HeadReader& reader) {
    auto byte = reader.Byte();
    while (byte && *byte != kBeginSegment)
        byte = reader.Byte();
    return byte.has_value();
}

// A name longer than a number holds isn't one, and its length is all that there is of it.
bool ReadName(HeadReader& reader, IocaHeader& header) {
    const auto length = reader.Byte();
    if (!length) return false;
    return *length > kLongestName || ReadNumber(reader, header.SegmentName, *length);
}

// A parameter whose first byte of data is all that counts.
bool ReadFirstByte(HeadReader& reader, uint8_t code, uint16_t& value) {
    uint32_t left = 0;
    return BeginParameter(reader, code, 1, left) && ReadNumber(reader, value, 1) &&
           reader.Skip(left - 1);
}

bool ReadSize(HeadReader& reader, IocaHeader& header) {
    uint32_t left = 0;
    return BeginParameter(reader, kImageSize, kSizeBytes, left) && reader.Skip(1) &&
           ReadNumber(reader, header.XResolution) && ReadNumber(reader, header.YResolution) &&
           ReadNumber(reader, header.Width) && ReadNumber(reader, header.Height) &&
           reader.Skip(left - kSizeBytes);
}

// What may follow, each at most once and in this order. All that a head must have has been read by
// now, so a file that ends here has a head without image data.
bool ReadOptionalPart(HeadReader& reader, IocaHeader& header) {
    auto code = reader.Byte();
    for (const uint8_t optional : {kIdeSize, kLutId}) {
        if (code != optional) continue;
        if (!SkipParameter(reader)) return false;
        code = reader.Byte();
    }
    if (reader.IsBroken()) return false;
    if (code != kImageData[0]) return true;
    if (!ReadCode(reader, kImageData[1]) || !ReadNumber(reader, header.DataLength)) return false;
    header.DataOffset = static_cast<uint32_t>(reader.Position() - kChunkHeadBytes);
    return true;
}

}  // namespace

std::array<uint8_t, kIocaHeadBytes> IocaHeadOf(const IocaHeader& header) {
    constexpr uint8_t kImageObject = 0xFF, kPixelsPerTenInches = 0, kMmr = 1, kInlineCoding = 1;
    return {kBeginSegment,
            0,
            kBeginImageContent,
            1,
            kImageObject,
            kImageSize,
            kSizeBytes,
            kPixelsPerTenInches,
            HighByte(header.XResolution),
            LowByte(header.XResolution),
            HighByte(header.YResolution),
            LowByte(header.YResolution),
            HighByte(header.Width),
            LowByte(header.Width),
            HighByte(header.Height),
            LowByte(header.Height),
            kImageEncoding,
            2,
            kMmr,
            kInlineCoding,
            kIdeSize,
            1,
            1,
            kLutId,
            1,
            0};
}

bool ReadIocaHead(HeadReader& reader, IocaHeader& header) {
    return FindSegment(reader) && ReadName(reader, header) &&
           ReadFirstByte(reader, kBeginImageContent, header.ImageContentId) &&
           ReadSize(reader, header) &&
           ReadFirstByte(reader, kImageEncoding, header.CompressionId) &&
           ReadOptionalPart(reader, header);
}

}  // namespace vellim
