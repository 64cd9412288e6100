// Windows bitmaps: file header, BITMAPINFOHEADER, colour table, rows padded to 4 bytes.
//
// Rows are stored from the bottom up, as every reader knows them, while lines come from the top
// down. On a file, blocks of rows are turned round in memory and written to their place from the
// end backwards. A pipe has no place to go back to: there the height is negative, which means rows
// from the top down.
#include <algorithm>
#include <cstring>

#include "output_formats.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kFileHeaderBytes = 14;
constexpr uint32_t kInfoHeaderBytes = sizeof(BITMAPINFOHEADER);
constexpr size_t kBlockBytes = 256UL << 10U;

struct BmpWriter {
    OutputFile* output = nullptr;
    PixelType type;
    size_t rowBytes = 0;   // as they come
    size_t stride = 0;     // as they are stored
    uint64_t rowsEnd = 0;  // offset behind the rows that are still to be stored, bottom up
    size_t blockRows = 1;
    size_t held = 0;             // rows in the block, the last that came first
    std::vector<uint8_t> block;  // filled from its end
};

// Fields are stored low byte first.
void Append(std::string& bytes, uint32_t number, unsigned width) {
    for (unsigned i = 0; i < width; ++i)
        bytes += static_cast<char>(number >> 8 * i & 0xFFU);
}

void AppendColourTable(std::string& bytes, const Picture& picture) {
    if (picture.type.colour == Colour::Rgb) return;
    const uint32_t highest = (1U << picture.type.bits) - 1;
    for (uint32_t value = 0; value <= highest; ++value) {
        const auto grey = static_cast<uint8_t>(value * 255 / highest);
        const RGBQUAD quad = picture.type.colour == Colour::Palette ? picture.palette[value]
                                                                    : RGBQUAD{grey, grey, grey, 0};
        Append(bytes, quad.rgbBlue, 1);
        Append(bytes, quad.rgbGreen, 1);
        Append(bytes, quad.rgbRed, 1);
        Append(bytes, 0, 1);
    }
}

std::string Headers(const Picture& picture, uint32_t imageBytes, bool bottomUp) {
    const uint32_t colours = picture.type.colour == Colour::Rgb ? 0 : 1U << picture.type.bits;
    const uint32_t rows = kFileHeaderBytes + kInfoHeaderBytes + colours * 4;
    const bool absolute = picture.absoluteResolution;
    std::string bytes = "BM";
    Append(bytes, rows + imageBytes, 4);
    Append(bytes, 0, 4);
    Append(bytes, rows, 4);
    Append(bytes, kInfoHeaderBytes, 4);
    Append(bytes, picture.width, 4);
    Append(bytes, bottomUp ? picture.height : 0U - picture.height, 4);
    Append(bytes, 1, 2);
    Append(bytes, picture.type.bits, 2);
    Append(bytes, 0, 4);
    Append(bytes, imageBytes, 4);
    Append(bytes, absolute ? picture.pelsPerMetreX : 0, 4);
    Append(bytes, absolute ? picture.pelsPerMetreY : 0, 4);
    Append(bytes, colours, 4);
    Append(bytes, colours, 4);
    AppendColourTable(bytes, picture);
    return bytes;
}

// Copies a row to its stored form, in which RGB stands as blue, green, red.
void StoreRow(const BmpWriter& w, const uint8_t* row, uint8_t* stored) {
    std::memcpy(stored, row, w.rowBytes);
    if (w.type.colour != Colour::Rgb) return;
    for (size_t i = 0; i + 2 < w.rowBytes; i += 3)
        std::swap(stored[i], stored[i + 2]);
}

bool WriteBlock(BmpWriter& w) {
    const size_t bytes = w.held * w.stride;
    w.held = 0;
    w.rowsEnd -= bytes;
    return WriteAt(*w.output, w.rowsEnd, w.block.data() + w.block.size() - bytes, bytes);
}

bool WriteBottomUp(BmpWriter& w, const uint8_t* row) {
    ++w.held;
    StoreRow(w, row, w.block.data() + w.block.size() - w.held * w.stride);
    return w.held < w.blockRows || WriteBlock(w);
}

bool WriteTopDown(BmpWriter& w, const uint8_t* row) {
    StoreRow(w, row, w.block.data());
    return Write(*w.output, w.block.data(), w.stride);
}

bool FinishBottomUp(BmpWriter& w) {
    return WriteBlock(w);
}

bool FinishTopDown(BmpWriter& /*w*/) {
    return true;
}

}  // namespace

std::optional<LineSink> BeginBmp(const Picture& picture, const WriteOptions& /*options*/,
                                 OutputFile& output) {
    auto w = std::make_unique<BmpWriter>();
    w->output = &output;
    w->type = picture.type;
    w->rowBytes = RowBytes(picture);
    w->stride = (w->rowBytes + 3) / 4 * 4;
    const uint64_t imageBytes = uint64_t{w->stride} * picture.height;
    constexpr uint64_t kHeadroom = 4096;  // more than all headers
    if (imageBytes > UINT32_MAX - kHeadroom) {
        output.failure = "the picture is too large for a BMP file, which ends at 4 GB";
        return {};
    }
    const bool bottomUp = output.seekable;
    const std::string headers = Headers(picture, static_cast<uint32_t>(imageBytes), bottomUp);
    if (bottomUp) w->blockRows = std::max<size_t>(1, kBlockBytes / w->stride);
    w->block.resize(w->blockRows * w->stride);
    w->rowsEnd = headers.size() + imageBytes;
    if (!bottomUp) {
        if (!Write(output, headers)) return {};
        return MakeSink<WriteTopDown, FinishTopDown>(std::move(w));
    }
    if (!WriteAt(output, 0, headers.data(), headers.size())) return {};
    return MakeSink<WriteBottomUp, FinishBottomUp>(std::move(w));
}

}  // namespace vellim::tool
