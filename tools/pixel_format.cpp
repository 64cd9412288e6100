// Pixels of 1, 4 and 8 bits are looked up by their value; a table holds what each value becomes.
#include "pixel_format.h"

#include <algorithm>
#include <array>

namespace vellim::tool {
namespace {

constexpr uint8_t kHalfWhite = 128;

struct Shade {
    uint8_t red, green, blue, grey;
};

struct PixelConverter {
    uint32_t width = 0;
    PixelType from, to;
    std::array<Shade, 256> shades{};  // by pixel value, for up to 8 bits
    std::vector<uint8_t> row;
    LineSink next;
};

uint32_t PixelAt(const uint8_t* row, uint32_t x, uint32_t bits) {
    const uint32_t perByte = 8 / bits;
    const uint32_t shift = 8 - bits - x % perByte * bits;
    return static_cast<uint32_t>(row[x / perByte]) >> shift & ((1U << bits) - 1);
}

Shade ShadeAt(const PixelConverter& c, const uint8_t* row, uint32_t x) {
    if (c.from.colour != Colour::Rgb) return c.shades[PixelAt(row, x, c.from.bits)];
    const uint8_t* pixel = row + size_t{x} * 3;
    return {pixel[0], pixel[1], pixel[2], Luma(pixel[0], pixel[1], pixel[2])};
}

void ToRgb(PixelConverter& c, const uint8_t* row) {
    for (uint32_t x = 0; x < c.width; ++x) {
        const Shade shade = ShadeAt(c, row, x);
        uint8_t* pixel = c.row.data() + size_t{x} * 3;
        pixel[0] = shade.red;
        pixel[1] = shade.green;
        pixel[2] = shade.blue;
    }
}

void ToGrey(PixelConverter& c, const uint8_t* row) {
    for (uint32_t x = 0; x < c.width; ++x)
        c.row[x] = ShadeAt(c, row, x).grey;
}

void ToBilevel(PixelConverter& c, const uint8_t* row) {
    std::fill(c.row.begin(), c.row.end(), uint8_t{0});
    for (uint32_t x = 0; x < c.width; ++x) {
        const bool white = ShadeAt(c, row, x).grey >= kHalfWhite;
        if (white) c.row[x / 8] = static_cast<uint8_t>(c.row[x / 8] | 0x80U >> x % 8);
    }
}

bool ConvertLine(PixelConverter& c, const uint8_t* row) {
    if (c.to == kRgb) {
        ToRgb(c, row);
    } else if (c.to == kGrey8) {
        ToGrey(c, row);
    } else {
        ToBilevel(c, row);
    }
    return c.next.Put(c.row.data());
}

bool FinishLines(PixelConverter& c) {
    return c.next.Finish();
}

std::array<Shade, 256> ShadesOf(const Picture& picture) {
    std::array<Shade, 256> shades{};
    if (picture.type.colour == Colour::Rgb) return shades;
    const uint32_t highest = (1U << picture.type.bits) - 1;
    for (uint32_t value = 0; value <= highest; ++value) {
        if (picture.type.colour == Colour::Palette) {
            const RGBQUAD& q = picture.palette[value];
            shades[value] = {q.rgbRed, q.rgbGreen, q.rgbBlue,
                             Luma(q.rgbRed, q.rgbGreen, q.rgbBlue)};
        } else {
            const auto grey = static_cast<uint8_t>(value * 255 / highest);
            shades[value] = {grey, grey, grey, grey};
        }
    }
    return shades;
}

}  // namespace

LineSink ConvertPixels(const Picture& picture, PixelType to, LineSink next) {
    if (picture.type == to) return next;
    auto c = std::make_unique<PixelConverter>();
    c->width = picture.width;
    c->from = picture.type;
    c->to = to;
    c->shades = ShadesOf(picture);
    c->row.resize(RowBytes(picture.width, to));
    c->next = std::move(next);
    return MakeSink<ConvertLine, FinishLines>(std::move(c));
}

void NormaliseLine(uint8_t* line, uint32_t width, PixelType type, bool invert) {
    const size_t bytes = RowBytes(width, type);
    if (bytes == 0) return;
    if (invert) {
        std::transform(line, line + bytes, line,
                       [](uint8_t byte) { return static_cast<uint8_t>(~byte); });
    }
    const auto unused = static_cast<uint32_t>(bytes * 8 - uint64_t{width} * type.bits);
    line[bytes - 1] = static_cast<uint8_t>(line[bytes - 1] & 0xFFU << unused);
}

std::vector<uint8_t> WhiteLine(const Picture& picture) {
    uint32_t white = 0xFF;
    if (picture.type.colour == Colour::Palette) {
        const auto distance = [](const RGBQUAD& q) {
            const int r = 255 - q.rgbRed;
            const int g = 255 - q.rgbGreen;
            const int b = 255 - q.rgbBlue;
            return r * r + g * g + b * b;
        };
        const auto nearest = std::min_element(
            picture.palette.begin(), picture.palette.end(),
            [&](const RGBQUAD& a, const RGBQUAD& b) { return distance(a) < distance(b); });
        const auto index = static_cast<uint32_t>(nearest - picture.palette.begin());
        // The index in every pixel of a byte: 1 bit times 255, 4 bits times 17.
        white = index * 255 / ((1U << picture.type.bits) - 1);
    }
    std::vector<uint8_t> line(RowBytes(picture), static_cast<uint8_t>(white));
    NormaliseLine(line.data(), picture.width, picture.type, false);
    return line;
}

}  // namespace vellim::tool
