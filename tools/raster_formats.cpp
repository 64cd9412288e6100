// The table of raster formats, and what they have in common.
#include "raster_formats.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "vellim/files.h"

namespace vellim::tool {
namespace {

constexpr std::string_view kPngSignature = "\x89PNG\r\n\x1A\n";
constexpr std::string_view kBmpSignature = "BM";

bool IsPng(std::string_view head) {
    return head.substr(0, kPngSignature.size()) == kPngSignature;
}

bool IsBmp(std::string_view head) {
    return head.substr(0, kBmpSignature.size()) == kBmpSignature;
}

bool IsPnm(std::string_view head) {
    constexpr std::string_view kBehindMagic = " \t\n\v\f\r#";
    return head.size() > 2 && head[0] == 'P' && head[1] >= '1' && head[1] <= '6' &&
           kBehindMagic.find(head[2]) != std::string_view::npos;
}

constexpr std::array<RasterFormat, 6> kFormats = {{
    {"PNG", IsPng, false, nullptr, OpenPng},
    {"BMP", IsBmp, false, nullptr, OpenBmp},
    {"PNM", IsPnm, false, FindPnmPictures, OpenPnm},
    {"CALS", IsCals, true, nullptr, OpenCals},
    {"IOCA", IsIoca, true, FindIocaImages, OpenIoca},
    {"MO:DCA", IsModca, true, FindModcaImages, OpenModca},
}};

// Above this a resolution is none, and its fraction would leave 32 bits.
constexpr uint32_t kMostPelsPerMetre = 10000000;
constexpr double kMetresPerInch = 0.0254;

// Whole dots an inch wherever these pixels a metre come of them, so that 200 stays 200 and doesn't
// become 199.9996.
Rational DotsPerInchOf(uint32_t pelsPerMetre) {
    const auto dots = static_cast<uint32_t>(std::lround(pelsPerMetre * kMetresPerInch));
    if (std::lround(dots / kMetresPerInch) == long{pelsPerMetre}) return {dots, 1};
    return {pelsPerMetre * 127, 5000};
}

bool IsGrey(const RGBQUAD& quad, uint32_t value) {
    return quad.rgbRed == value && quad.rgbGreen == value && quad.rgbBlue == value;
}

}  // namespace

std::string ReadHead(int descriptor) {
    std::string head(kHeadBytes, '\0');
    const ssize_t got = pread(descriptor, head.data(), head.size(), 0);
    head.resize(static_cast<size_t>(std::max<ssize_t>(got, 0)));
    return head;
}

const RasterFormat* RecogniseFormat(std::string_view head) {
    const auto* const found =
        std::find_if(kFormats.begin(), kFormats.end(),
                     [head](const RasterFormat& format) { return format.recognises(head); });
    return found == kFormats.end() ? nullptr : found;
}

bool IsServedSize(uint64_t width, uint64_t height, std::string& why) {
    uint32_t linePixels = 0;
    uint32_t lines = 0;
    GetTiffSizeLimits(&linePixels, &lines);
    if (width == 0 || height == 0) {
        why = "the picture has no pixels";
    } else if (width > linePixels || height > lines) {
        why = "the picture of " + std::to_string(width) + " x " + std::to_string(height) +
              " pixels is above " + std::to_string(linePixels) + " x " + std::to_string(lines);
    } else {
        return true;
    }
    return false;
}

void SetPelsPerMetre(PageInfo& info, uint32_t x, uint32_t y, bool absolute) {
    if (x == 0 || y == 0 || x > kMostPelsPerMetre || y > kMostPelsPerMetre) return;
    info.picture.pelsPerMetreX = x;
    info.picture.pelsPerMetreY = y;
    info.picture.absoluteResolution = absolute;
    info.resolution = absolute ? Resolution{DotsPerInchOf(x), DotsPerInchOf(y), kInch}
                               : Resolution{{x, 1}, {y, 1}, kNoUnit};
}

void SimplifyPalette(PageInfo& info) {
    Picture& picture = info.picture;
    if (picture.type.colour != Colour::Palette) return;
    const auto highest = static_cast<uint32_t>(picture.palette.size() - 1);
    bool rising = true;
    bool falling = true;
    for (uint32_t i = 0; i <= highest; ++i) {
        rising = rising && IsGrey(picture.palette[i], i * 255 / highest);
        falling = falling && IsGrey(picture.palette[i], (highest - i) * 255 / highest);
    }
    if (!rising && !falling) return;
    picture.type.colour = Colour::Grey;
    picture.palette.clear();
    info.whiteIsZero = falling;
}

}  // namespace vellim::tool
