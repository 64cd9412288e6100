// Sizes and places within a DIB.
#include "bridge/dib.h"

#include <cstddef>
#include <cstring>

#include "container/sizes.h"

namespace vellim {
namespace {

constexpr uint32_t kCoreHeaderBytes = 12;
constexpr size_t kCoreBitCountOffset = 10;
constexpr uint32_t kCoreEntryBytes = 3;

// Blocks that an application made need not be aligned for the record.
template <typename T>
T ReadAt(const void* header, size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const uint8_t*>(header) + offset, sizeof value);
    return value;
}

uint32_t HeaderBytes(const void* header) {
    return ReadAt<uint32_t>(header, offsetof(BITMAPINFOHEADER, biSize));
}

bool IsCore(const void* header) {
    return HeaderBytes(header) == kCoreHeaderBytes;
}

uint32_t ColorsOfDepth(uint16_t bits) {
    return bits == 1 || bits == 4 || bits == 8 ? 1U << bits : 0;
}

uint16_t ImageDepth(int32_t depth) {
    if (depth <= 1) return 1;
    if (depth <= 4) return 4;
    return depth <= 8 ? 8 : 24;
}

}  // namespace

uint32_t DibColorCount(const void* header) {
    if (IsCore(header)) return ColorsOfDepth(ReadAt<uint16_t>(header, kCoreBitCountOffset));
    const auto used = ReadAt<uint32_t>(header, offsetof(BITMAPINFOHEADER, biClrUsed));
    if (used != 0) return used;
    return ColorsOfDepth(ReadAt<uint16_t>(header, offsetof(BITMAPINFOHEADER, biBitCount)));
}

uint64_t DibPaletteSize(const void* header) {
    const uint64_t entryBytes = IsCore(header) ? kCoreEntryBytes : sizeof(RGBQUAD);
    return DibColorCount(header) * entryBytes;
}

uint64_t DibBitsOffset(const void* header) {
    return HeaderBytes(header) + DibPaletteSize(header);
}

uint8_t* DibBitsPointer(void* header, uint32_t blockBytes) {
    const uint64_t offset = DibBitsOffset(header);
    return offset > blockBytes ? nullptr : static_cast<uint8_t*>(header) + offset;
}

void InitDibHeader(BITMAPINFOHEADER* header, int32_t width, int32_t height, int32_t depth) {
    *header = {};
    header->biSize = sizeof *header;
    header->biWidth = width;
    header->biHeight = height;
    header->biPlanes = 1;
    header->biBitCount = ImageDepth(depth);
    if (const auto rowBytes = StoredRowBytes(width, header->biBitCount))
        header->biSizeImage = CheckedSize(*rowBytes, height).value_or(0);
    header->biClrUsed = ColorsOfDepth(header->biBitCount);
    header->biClrImportant = header->biClrUsed;
}

}  // namespace vellim
