// The library lays the text over a white bitmap of the text's size, which then darkens the page:
// pixels without text stay what they were in pages of any depth, and memory grows with the text
// alone.
//
// The library makes letters as high as the vertical resolution tells, and as wide as the font has
// them. Where the two resolutions lie far apart, the text is drawn for the horizontal one and its
// rows are then drawn together, or out.
#include "stamp_text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

#include "font_context.h"
#include "messages.h"
#include "vellim/failures.h"
#include "vellim/fax.h"
#include "windows_1252.h"

namespace vellim::tool {
namespace {

constexpr uint8_t kWhite = 255;
constexpr uint8_t kHalf = 128;
constexpr int32_t kPointsPerInch = 72;
constexpr uint32_t kByteBits = 8;
constexpr uint64_t kMostPatchPixels = 1ULL << 28U;

struct Extent {
    uint64_t width = 0, height = 0;
};

std::vector<std::string_view> LinesOf(std::string_view text) {
    constexpr std::string_view kEnd = "\r\n";
    std::vector<std::string_view> lines;
    for (;;) {
        const size_t end = text.find(kEnd);
        lines.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return lines;
        text.remove_prefix(end + kEnd.size());
    }
}

// The text's extent for a resolution, without what letters lean over their own width. Empty where
// it can't be told.
Extent Measure(const StampText& text, uint32_t resolution) {
    LOGFONT font = {};
    font.lfHeight = -MulDiv(text.pointSize, static_cast<int32_t>(resolution), kPointsPerInch);
    text.font.copy(static_cast<char*>(font.lfFaceName), LF_FACESIZE - 1);
    const FontContext context(font);
    TEXTMETRIC metrics = {};
    Extent extent;
    if (!context || GetTextMetricsA(context.Get(), &metrics) == 0) return extent;
    for (const std::string_view line : LinesOf(text.bytes)) {
        SIZE size = {};
        GetTextExtentPointA(context.Get(), line.data(), static_cast<int32_t>(line.size()), &size);
        extent.width = std::max(extent.width, static_cast<uint64_t>(std::max(size.cx, 0)));
        extent.height +=
            static_cast<uint64_t>(std::max(metrics.tmHeight + metrics.tmExternalLeading, 0));
    }
    return extent;
}

struct DrawnText {
    BITMAP shape = {};
    std::vector<uint8_t> bits;  // none: it couldn't be drawn

    [[nodiscard]] uint8_t LightAt(uint32_t x, uint32_t y) const {
        const uint8_t* row = bits.data() + y * static_cast<size_t>(shape.bmWidthBytes);
        if (shape.bmBitsPixel > 1) return row[size_t{x} * 3];  // grey: all three are the same
        return (row[x / kByteBits] & 0x80U >> x % kByteBits) != 0 ? kWhite : 0;
    }
};

DrawnText Draw(const StampText& text, Extent extent, bool shades, uint32_t resolution) {
    constexpr uint32_t kShadeBits = 24;
    const uint32_t depth = shades ? kShadeBits : 1;
    const uint64_t stride = (extent.width * depth + 15) / 16 * 2;
    const std::vector<uint8_t> white(static_cast<size_t>(stride * extent.height), kWhite);
    const OwnedObject paper(CreateBitmap(static_cast<int32_t>(extent.width),
                                         static_cast<int32_t>(extent.height), 1, depth,
                                         white.data()));
    // At the corner, with no horizontal resolution, nothing is scaled from the screen's pixels.
    const OwnedObject drawn(BitmapTextOverlay(paper.Get(), 0, 0, text.bytes.c_str(),
                                              text.font.c_str(), text.pointSize, 0, resolution));
    DrawnText result;
    if (!drawn) return result;
    GetObjectA(drawn.Get(), sizeof result.shape, &result.shape);
    result.bits.resize(white.size());
    const auto bytes = static_cast<int32_t>(white.size());
    if (GetBitmapBits(drawn.Get(), bytes, result.bits.data()) != bytes) result.bits.clear();
    return result;
}

// The row of the drawn text that a row of the patch begins with.
uint32_t RowFor(uint64_t row, uint64_t drawnHeight, uint64_t height) {
    return static_cast<uint32_t>(row * drawnHeight / height);
}

// Of rows that fall together the darkest counts, so that no stroke is lost.
void FillPatch(const DrawnText& drawn, uint64_t height, StampPatch& patch) {
    const auto drawnHeight = static_cast<uint64_t>(drawn.shape.bmHeight);
    patch.light.assign(size_t{patch.width} * patch.height, kWhite);
    for (uint32_t row = 0; row < patch.height; ++row) {
        const uint32_t first = RowFor(row, drawnHeight, height);
        const uint32_t last = std::max(RowFor(row + 1ULL, drawnHeight, height), first + 1);
        for (uint32_t from = first; from < last; ++from) {
            uint8_t* light = patch.light.data() + size_t{row} * patch.width;
            for (uint32_t x = 0; x < patch.width; ++x)
                light[x] = std::min(light[x], drawn.LightAt(x, from));
        }
    }
}

bool IsFarFromSquare(StampDots dots) {
    return dots.x > dots.y + dots.y / 4 || dots.y > dots.x + dots.x / 4;
}

// The value of ink in a page of 8 bits a pixel or fewer.
uint8_t InkOf(const Picture& picture) {
    const auto sum = [](const RGBQUAD& q) { return q.rgbRed + q.rgbGreen + q.rgbBlue; };
    const auto darkest =
        std::min_element(picture.palette.begin(), picture.palette.end(),
                         [&](const RGBQUAD& a, const RGBQUAD& b) { return sum(a) < sum(b); });
    const bool coloured = picture.type.colour == Colour::Palette;
    return coloured ? static_cast<uint8_t>(darkest - picture.palette.begin()) : 0;
}

bool HasShades(PixelType type) {
    return type == kGrey8 || type == kRgb;
}

void SetPixel(uint8_t* line, uint32_t x, uint32_t bits, uint8_t value) {
    const uint32_t perByte = kByteBits / bits;
    const uint32_t shift = (perByte - 1 - x % perByte) * bits;
    const uint32_t mask = ((1U << bits) - 1) << shift;
    const size_t at = x / perByte;
    line[at] = static_cast<uint8_t>((line[at] & ~mask) | (uint32_t{value} << shift & mask));
}

}  // namespace

std::string ReadStampText(std::string_view typed, size_t& lost) {
    std::string text;
    while (!typed.empty()) {
        const bool escaped = typed.starts_with("\\n") || typed.starts_with("\\\\");
        const bool end = typed.starts_with("\\n") || typed.front() == '\n';
        text += end ? '\n' : typed.front();
        typed.remove_prefix(escaped ? 2 : 1);
    }
    // What isn't UTF-8 is taken for what the library wants.
    const std::string bytes = ToWindows1252(text, lost).value_or(text);
    text.clear();
    for (const char byte : bytes) {
        if (byte == '\n') text += '\r';
        text += byte;
    }
    return text;
}

std::optional<StampPatch> DrawStamp(const StampText& text, uint32_t x, uint32_t y,
                                    const Picture& picture, StampDots dots, std::string& why) {
    const uint32_t resolution = IsFarFromSquare(dots) ? dots.x : dots.y;
    Extent extent = Measure(text, resolution);
    if (x >= picture.width || y >= picture.height || extent.width == 0 || extent.height == 0) {
        why = extent.width == 0 || extent.height == 0
                  ? "there is nothing to be seen of that text"
                  : "the page has only " + std::to_string(picture.width) + " x " +
                        std::to_string(picture.height) + " pixels";
        return {};
    }
    const uint64_t height = resolution == dots.y
                                ? extent.height
                                : std::max<uint64_t>(extent.height * dots.y / dots.x, 1);
    StampPatch patch{x, y, 0, 0, {}, false};
    patch.cut = extent.width > picture.width - x || height > picture.height - y;
    extent.width += extent.height;  // letters may lean over their width
    extent.width = std::min<uint64_t>(extent.width, picture.width - x);
    patch.width = static_cast<uint32_t>(extent.width);
    patch.height = static_cast<uint32_t>(std::min<uint64_t>(height, picture.height - y));
    DrawnText drawn;
    if (extent.width * extent.height <= kMostPatchPixels) {
        drawn = Draw(text, extent, HasShades(picture.type), resolution);
    }
    if (drawn.bits.empty()) {
        why = FailureMessage(TIFF_NO_MEMORY);
        return {};
    }
    FillPatch(drawn, height, patch);
    return patch;
}

void StampLine(const StampPatch& patch, const Picture& picture, uint32_t y, uint8_t* line) {
    if (y < patch.y || y - patch.y >= patch.height) return;
    const uint8_t* light = patch.light.data() + size_t{y - patch.y} * patch.width;
    const uint8_t ink = InkOf(picture);
    if (!HasShades(picture.type)) {
        for (uint32_t x = 0; x < patch.width; ++x) {
            if (light[x] < kHalf) SetPixel(line, patch.x + x, picture.type.bits, ink);
        }
        return;
    }
    const size_t samples = picture.type.bits / kByteBits;
    uint8_t* sample = line + patch.x * samples;
    for (size_t i = 0; i < patch.width * samples; ++i)
        sample[i] = static_cast<uint8_t>(sample[i] * light[i / samples] / kWhite);
}

}  // namespace vellim::tool
