// Windows bitmaps without compression: 1, 4, 8, 24 and 32 bits a pixel, from the bottom up or from
// the top down, with the headers of all versions and that of OS/2 1.x.
//
// Rows from the bottom up are read in blocks that go backwards through the file, so that no more
// than a block is held. Of 32 bits the fourth byte counts only where the header says that it is
// alpha; then the picture is laid over white paper.
#include <algorithm>
#include <array>
#include <cstring>

#include "byte_source.h"
#include "raster_formats.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kFileHeaderBytes = 14;
constexpr uint32_t kRowsAt = 10;           // in the file header
constexpr uint32_t kCoreHeaderBytes = 12;  // OS/2 1.x: 16-bit sides, colours of 3 bytes
constexpr uint32_t kInfoHeaderBytes = 40;
constexpr uint32_t kMasksEnd = kInfoHeaderBytes + 12;
constexpr uint32_t kAlphaMaskEnd = kMasksEnd + 4;
constexpr uint32_t kLongestHeader = 124;  // version 5
enum Compression : uint32_t { kPlain = 0, kBitFields = 3 };
constexpr uint32_t kWhite = 255;
constexpr size_t kBlockBytes = 256UL << 10U;

struct BmpHeader {
    uint32_t bytes = 0;
    int64_t width = 0, height = 0;  // a height below 0: from the top down
    uint32_t planes = 0, bits = 0, compression = kPlain;
    uint32_t pelsX = 0, pelsY = 0, colours = 0;
    std::array<uint32_t, 4> masks{0xFF0000, 0xFF00, 0xFF, 0};
    uint32_t rowsAt = 0;
};

struct BmpReader {
    ByteSource source;
    BmpHeader header;
    uint32_t width = 0, height = 0;
    size_t stride = 0;
    uint32_t line = 0;
    std::vector<uint8_t> block;  // rows of the file from `blockAt` on
    uint32_t blockAt = 0, blockRows = 0;
};

uint32_t Number(const uint8_t* bytes, unsigned width) {
    uint32_t number = 0;
    for (unsigned i = 0; i < width; ++i)
        number |= static_cast<uint32_t>(bytes[i]) << 8 * i;
    return number;
}

int64_t SignedNumber(const uint8_t* bytes) {
    return static_cast<int32_t>(Number(bytes, 4));
}

void ReadCoreFields(const uint8_t* fields, BmpHeader& header) {
    header.width = Number(fields + 4, 2);
    header.height = Number(fields + 6, 2);
    header.planes = Number(fields + 8, 2);
    header.bits = Number(fields + 10, 2);
}

void ReadInfoFields(const uint8_t* fields, BmpHeader& header) {
    header.width = SignedNumber(fields + 4);
    header.height = SignedNumber(fields + 8);
    header.planes = Number(fields + 12, 2);
    header.bits = Number(fields + 14, 2);
    header.compression = Number(fields + 16, 4);
    header.pelsX = Number(fields + 24, 4);
    header.pelsY = Number(fields + 28, 4);
    header.colours = Number(fields + 32, 4);
    if (header.compression != kBitFields) return;
    for (size_t i = 0; i < 3; ++i)
        header.masks[i] = Number(fields + kInfoHeaderBytes + 4 * i, 4);
    if (header.bytes >= kAlphaMaskEnd) header.masks[3] = Number(fields + kMasksEnd, 4);
}

bool ReadHeader(BmpReader& r, std::string& why) {
    std::array<uint8_t, kFileHeaderBytes> file{};
    std::array<uint8_t, kLongestHeader> fields{};
    BmpHeader& header = r.header;
    if (!ReadBytes(r.source, file.data(), file.size()) || !ReadBytes(r.source, fields.data(), 4)) {
        why = r.source.failure;
        return false;
    }
    header.rowsAt = Number(file.data() + kRowsAt, 4);
    header.bytes = Number(fields.data(), 4);
    const bool core = header.bytes == kCoreHeaderBytes;
    if (!core && (header.bytes < kInfoHeaderBytes || header.bytes > kLongestHeader)) {
        why = "its header is of an unknown kind";
        return false;
    }
    if (!ReadBytes(r.source, fields.data() + 4, header.bytes - 4)) {
        why = r.source.failure;
        return false;
    }
    // The masks of the plain header stand behind it.
    if (header.bytes == kInfoHeaderBytes && Number(fields.data() + 16, 4) == kBitFields &&
        !ReadBytes(r.source, fields.data() + kInfoHeaderBytes, kMasksEnd - kInfoHeaderBytes)) {
        why = r.source.failure;
        return false;
    }
    if (core) {
        ReadCoreFields(fields.data(), header);
    } else {
        ReadInfoFields(fields.data(), header);
    }
    return true;
}

bool IsByteMask(uint32_t mask) {
    return mask == 0xFF || mask == 0xFF00 || mask == 0xFF0000 || mask == 0xFF000000;
}

bool IsServed(const BmpHeader& header, std::string& why) {
    const uint32_t bits = header.bits;
    const bool depth = bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32;
    const bool plain = header.compression == kPlain ||
                       (header.compression == kBitFields && bits == 32 &&
                        std::all_of(header.masks.begin(), header.masks.begin() + 3, IsByteMask) &&
                        (header.masks[3] == 0 || IsByteMask(header.masks[3])));
    if (depth && plain && header.planes == 1) return true;
    why = !plain ? "its compression or order of colours isn't served"
                 : "served are 1, 4, 8, 24 and 32 bits a pixel in one plane";
    return false;
}

bool ReadColours(BmpReader& r, Picture& picture, std::string& why) {
    const size_t most = size_t{1} << r.header.bits;
    const size_t given = r.header.colours == 0 ? most : std::min<size_t>(r.header.colours, most);
    const size_t width = r.header.bytes == kCoreHeaderBytes ? 3 : 4;
    picture.palette.resize(most);
    std::array<uint8_t, 4> colour{};
    for (size_t i = 0; i < given; ++i) {
        // A table may be cut short by the rows.
        if (r.source.position + width > r.header.rowsAt) return true;
        if (!ReadBytes(r.source, colour.data(), width)) {
            why = r.source.failure;
            return false;
        }
        picture.palette[i] = {colour[0], colour[1], colour[2], 0};
    }
    return true;
}

// Reads the block of rows that line `r.line` is in, as the file has it.
bool LoadBlock(BmpReader& r, uint32_t fileRow, std::string& why) {
    const auto most = static_cast<uint32_t>(std::max<size_t>(1, kBlockBytes / r.stride));
    const bool bottomUp = r.header.height > 0;
    r.blockAt = bottomUp ? fileRow - std::min(fileRow, most - 1) : fileRow;
    r.blockRows = bottomUp ? fileRow - r.blockAt + 1 : std::min(most, r.height - fileRow);
    r.block.resize(r.blockRows * r.stride);
    r.source.position = r.header.rowsAt + uint64_t{r.blockAt} * r.stride;
    if (ReadBytes(r.source, r.block.data(), r.block.size())) return true;
    why = r.source.failure;
    return false;
}

// Pixels of blue, green, red become red, green, blue.
void TurnColours(const BmpReader& r, const uint8_t* from, uint8_t* to) {
    if (r.header.bits == 24) {
        for (uint32_t x = 0; x < r.width; ++x, from += 3, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
        return;
    }
    const auto sample = [](uint32_t pixel, uint32_t mask) {
        return mask == 0 ? kWhite : (pixel & mask) / (mask & (0U - mask));
    };
    const auto& masks = r.header.masks;
    for (uint32_t x = 0; x < r.width; ++x, from += 4, to += 3) {
        const uint32_t pixel = Number(from, 4);
        const uint32_t alpha = sample(pixel, masks[3]);
        for (size_t i = 0; i < 3; ++i) {
            const uint32_t laid = sample(pixel, masks[i]) * alpha + kWhite * (kWhite - alpha);
            to[i] = static_cast<uint8_t>((laid + kWhite / 2) / kWhite);
        }
    }
}

bool NextBmpLine(BmpReader& r, uint8_t* line, std::string& why) {
    const uint32_t fileRow = r.header.height > 0 ? r.height - 1 - r.line : r.line;
    const bool held = fileRow >= r.blockAt && fileRow - r.blockAt < r.blockRows;
    if (!held && !LoadBlock(r, fileRow, why)) return false;
    ++r.line;
    const uint8_t* row = r.block.data() + (fileRow - r.blockAt) * r.stride;
    if (r.header.bits <= 8) {
        std::copy_n(row, RowBytes(r.width, {Colour::Grey, r.header.bits}), line);
    } else {
        TurnColours(r, row, line);
    }
    return true;
}

}  // namespace

std::optional<RasterPage> OpenBmp(int descriptor, uint64_t /*offset*/, std::string& why) {
    auto r = std::make_unique<BmpReader>();
    r->source = SourceOf(descriptor);
    const BmpHeader& header = r->header;
    if (!ReadHeader(*r, why) || !IsServed(header, why)) return {};
    const auto height = static_cast<uint64_t>(header.height < 0 ? -header.height : header.height);
    if (!IsServedSize(static_cast<uint64_t>(std::max<int64_t>(header.width, 0)), height, why)) {
        return {};
    }
    r->width = static_cast<uint32_t>(header.width);
    r->height = static_cast<uint32_t>(height);
    r->stride = (size_t{r->width} * header.bits + 31) / 32 * 4;
    if (header.rowsAt + uint64_t{r->stride} * r->height > r->source.size) {
        why = kEndsTooSoon;
        return {};
    }
    PageInfo info;
    info.picture.width = r->width;
    info.picture.height = r->height;
    info.picture.type = header.bits > 8 ? kRgb : PixelType{Colour::Palette, header.bits};
    if (header.bits <= 8 && !ReadColours(*r, info.picture, why)) return {};
    SimplifyPalette(info);
    if (header.bits == 32 && header.masks[3] != 0) info.givenUp.emplace_back(kTransparency);
    SetPelsPerMetre(info, header.pelsX, header.pelsY, true);
    return MakeRasterPage<NextBmpLine>(std::move(info), std::move(r));
}

}  // namespace vellim::tool
