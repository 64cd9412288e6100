#include "platform/graphics/blit_colors.h"

#include <algorithm>
#include <cstring>

#include "platform/graphics/display.h"

namespace vellim {
namespace {

constexpr uint32_t kTrueColorBits = 24;
constexpr uint32_t kByteBits = 8;

PixelFormat TextAndBackground(const ColorChange::Terms& terms) {
    PixelFormat format;
    format.bits = 1;
    format.colorCount = 2;
    format.colors[0] = terms.text;
    format.colors[1] = terms.background;
    return format;
}

// Several indices may have the colour: a table that marks them all.
PixelConversion MarksOfBackground(uint32_t bits, ColorRef background) {
    PixelConversion conversion;
    conversion.way = PixelConversion::Way::Table;
    conversion.fromBits = bits;
    conversion.to.bits = 1;
    const PixelFormat format = SurfaceFormat(bits);
    std::transform(
        format.colors.begin(), format.colors.begin() + format.colorCount, conversion.pixels.begin(),
        [background](ColorRef color) { return static_cast<uint32_t>(color == background); });
    return conversion;
}

void MarkBackground(const uint8_t* from, uint8_t* to, uint32_t width, ColorRef background) {
    constexpr size_t pixelBytes = 3;
    std::fill_n(to, BytesOfPixels(1, width), uint8_t{0});
    for (uint32_t x = 0; x < width; x++, from += pixelBytes) {
        const ColorRef color = static_cast<ColorRef>(from[0]) << 2 * kByteBits |
                               static_cast<ColorRef>(from[1]) << kByteBits | from[2];
        const uint32_t bit = color == background ? 0x80U >> x % kByteBits : 0;
        to[x / kByteBits] = static_cast<uint8_t>(to[x / kByteBits] | bit);
    }
}

}  // namespace

ColorChange::Terms ColorChange::TermsOf(const DeviceContext& to, uint32_t fromBits,
                                        ColorRef sourceBackground, bool isInverted) {
    return {fromBits,
            to.surface->bits,
            ShownColor(to, to.textColor),
            ShownColor(to, to.backColor),
            sourceBackground,
            isInverted,
            DisplayVersion()};
}

ColorChange::ColorChange(const Terms& terms) : terms_(terms) {
    const auto& [fromBits, toBits, text, background, sourceBackground, isInverted, version] = terms;
    if (fromBits == toBits) return;
    if (toBits == 1 && fromBits == kTrueColorBits) {
        change_ = Change::TrueColorToBackground;
        return;
    }
    change_ = Change::ByFormat;
    if (toBits == 1) {
        const uint32_t pixel = NearestPixel(fromBits, sourceBackground);
        conversion_ = MarksOfBackground(fromBits, ColorOfPixel(fromBits, pixel));
        return;
    }
    if (fromBits == 1 && toBits >= kByteBits) {
        change_ = toBits == kByteBits ? Change::BitsToBytes : Change::BitsToTrueColor;
        const uint32_t inverted = isInverted ? (1U << toBits) - 1 : 0;
        bitPixels_ = {NearestPixel(toBits, text) ^ inverted,
                      NearestPixel(toBits, background) ^ inverted};
        MakeFours(toBits / kByteBits);
        return;
    }
    conversion_ = MakeConversion(fromBits == 1 ? TextAndBackground(terms) : SurfaceFormat(fromBits),
                                 SurfaceFormat(toBits));
}

void ColorChange::MakeFours(uint32_t pixelBytes) {
    for (uint32_t bits = 0; bits < fours_.size(); bits++) {
        uint8_t* at = fours_[bits].data();
        for (uint32_t mask = 1U << (kFourPixels - 1); mask != 0; mask >>= 1U) {
            const uint32_t pixel = bitPixels_[(bits & mask) != 0 ? 1 : 0];
            for (uint32_t i = 0; i < pixelBytes; i++)
                *at++ = static_cast<uint8_t>(pixel >> i * kByteBits);
        }
    }
}

std::optional<uint32_t> ColorChange::NewPixel(uint32_t pixel) const {
    if (!IsNeeded()) return pixel;
    if (ReadsBits()) return bitPixels_[pixel];
    const bool isTable =
        change_ == Change::ByFormat && conversion_.way == PixelConversion::Way::Table;
    return isTable ? std::optional(conversion_.pixels[pixel]) : std::nullopt;
}

// A table of half bytes is small enough to be made anew for a copy of a single line.
template <size_t kPixelBytes>
void ColorChange::SpreadBits(const uint8_t* from, uint8_t* to, uint32_t width) const {
    constexpr uint32_t lowHalf = 0xF;
    constexpr size_t bytes = kFourPixels * kPixelBytes;
    for (; width >= kByteBits; width -= kByteBits) {
        std::memcpy(to, fours_[uint32_t{*from} >> kFourPixels].data(), bytes);
        std::memcpy(to + bytes, fours_[*from++ & lowHalf].data(), bytes);
        to += 2 * bytes;
    }
    for (uint32_t shift = kFourPixels; width != 0; shift = 0) {
        const uint32_t few = std::min(width, kFourPixels);
        std::memcpy(to, fours_[uint32_t{*from} >> shift & lowHalf].data(), few * kPixelBytes);
        to += bytes;
        width -= few;
    }
}

void ColorChange::Apply(const uint8_t* from, uint8_t* to, uint32_t width) const {
    switch (change_) {
        case Change::None:
            break;
        case Change::ByFormat:
            return ConvertRow(conversion_, from, to, width);
        case Change::BitsToBytes:
            return SpreadBits<1>(from, to, width);
        case Change::BitsToTrueColor:
            return SpreadBits<kMostPixelBytes>(from, to, width);
        case Change::TrueColorToBackground:
            return MarkBackground(from, to, width, terms_.sourceBackground);
    }
}

}  // namespace vellim
