// The library burns into a DIB of the box alone, in colours of 24 bits whatever the picture has, so
// that no pixel outside the box can change and a page of any size takes the memory of its note.
#include "note_pixels.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <utility>

#include "handles.h"
#include "pixel_format.h"
#include "vellim/graphics.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kRowUnit = 4;  // rows of a DIB begin at multiples of it
constexpr uint32_t kPixelBytes = 3;
constexpr uint32_t kBitsOfAByte = 8;

uint32_t WidthOf(const RECT& box) {
    return static_cast<uint32_t>(box.right - box.left);
}

uint32_t DibRowBytes(uint32_t width) {
    return (width * kPixelBytes + kRowUnit - 1) / kRowUnit * kRowUnit;
}

// ---- Single pixels of a line. ----

// Where a pixel of up to 8 bits is.
struct Spot {
    size_t byte;
    uint32_t shift;
    uint32_t mask;  // before the shift
};

Spot SpotOf(const Picture& picture, uint32_t x) {
    const uint32_t bits = picture.type.bits;
    const uint64_t position = uint64_t{x} * bits;
    const auto within = static_cast<uint32_t>(position % kBitsOfAByte);
    return {static_cast<size_t>(position / kBitsOfAByte), kBitsOfAByte - bits - within,
            (1U << bits) - 1};
}

uint32_t ValueAt(const Picture& picture, const std::vector<uint8_t>& line, uint32_t x) {
    const Spot spot = SpotOf(picture, x);
    return uint32_t{line[spot.byte]} >> spot.shift & spot.mask;
}

void SetValue(const Picture& picture, std::vector<uint8_t>& line, uint32_t x, uint32_t value) {
    const Spot spot = SpotOf(picture, x);
    uint8_t& byte = line[spot.byte];
    byte = static_cast<uint8_t>((byte & ~(spot.mask << spot.shift)) | value << spot.shift);
}

RGBQUAD ColourOf(const Picture& picture, uint32_t value) {
    if (picture.type.colour == Colour::Palette) return picture.palette[value];
    const auto grey = static_cast<uint8_t>(value * UINT8_MAX / ((1U << picture.type.bits) - 1));
    return {grey, grey, grey, 0};
}

RGBQUAD ColourAt(const Picture& picture, const std::vector<uint8_t>& line, uint32_t x) {
    if (picture.type != kRgb) return ColourOf(picture, ValueAt(picture, line, x));
    const uint8_t* pixel = line.data() + size_t{x} * kPixelBytes;
    return {pixel[2], pixel[1], pixel[0], 0};
}

bool IsSame(const RGBQUAD& a, const RGBQUAD& b) {
    return a.rgbRed == b.rgbRed && a.rgbGreen == b.rgbGreen && a.rgbBlue == b.rgbBlue;
}

int Distance(const RGBQUAD& a, const RGBQUAD& b) {
    return std::abs(a.rgbRed - b.rgbRed) + std::abs(a.rgbGreen - b.rgbGreen) +
           std::abs(a.rgbBlue - b.rgbBlue);
}

uint32_t NearestValue(const Picture& picture, const RGBQUAD& colour) {
    uint32_t nearest = 0;
    int least = std::numeric_limits<int>::max();
    for (uint32_t value = 0; value < 1U << picture.type.bits; ++value) {
        const int distance = Distance(ColourOf(picture, value), colour);
        if (distance >= least) continue;
        least = distance;
        nearest = value;
    }
    return nearest;
}

void SetColour(const Picture& picture, std::vector<uint8_t>& line, uint32_t x,
               const RGBQUAD& colour) {
    if (picture.type != kRgb) {
        SetValue(picture, line, x, NearestValue(picture, colour));
        return;
    }
    uint8_t* pixel = line.data() + size_t{x} * kPixelBytes;
    pixel[0] = colour.rgbRed;
    pixel[1] = colour.rgbGreen;
    pixel[2] = colour.rgbBlue;
}

// ---- The band as a DIB, lowest row first. ----

OwnedBlock MakeDib(const Picture& picture, const NoteBand& band) {
    const uint32_t width = WidthOf(band.box), row = DibRowBytes(width);
    const uint64_t bytes = sizeof(BITMAPINFOHEADER) + uint64_t{row} * band.lines.size();
    if (bytes > INT32_MAX) return {};
    OwnedBlock dib(GlobalAlloc(GHND, static_cast<uint32_t>(bytes)));
    const LockedBlock block(dib.Get());
    if (block.Bytes() == nullptr) return {};
    auto& header = *reinterpret_cast<BITMAPINFOHEADER*>(block.Bytes());
    header.biSize = sizeof header;
    header.biWidth = static_cast<int32_t>(width);
    header.biHeight = static_cast<int32_t>(band.lines.size());
    header.biPlanes = 1;
    header.biBitCount = kRgb.bits;
    uint8_t* to = block.Bytes() + bytes;
    for (const std::vector<uint8_t>& line : band.lines) {
        to -= row;
        for (uint32_t x = 0; x < width; ++x) {
            const auto at = static_cast<uint32_t>(band.box.left) + x;
            const RGBQUAD colour = ColourAt(picture, line, at);
            const std::array<uint8_t, kPixelBytes> pixel = {colour.rgbBlue, colour.rgbGreen,
                                                            colour.rgbRed};
            std::copy(pixel.begin(), pixel.end(), to + size_t{x} * kPixelBytes);
        }
    }
    return dib;
}

// Takes what the note changed.
bool TakeFromDib(const Picture& picture, DibHandle dib, NoteBand& band) {
    const LockedBlock block(dib);
    if (block.Bytes() == nullptr) return false;
    const uint32_t width = WidthOf(band.box), row = DibRowBytes(width);
    const auto& header = *reinterpret_cast<const BITMAPINFOHEADER*>(block.Bytes());
    const uint64_t bytes = header.biSize + uint64_t{row} * band.lines.size();
    if (header.biBitCount != kRgb.bits || GlobalSize(dib) < bytes) return false;
    const uint8_t* from = block.Bytes() + bytes;
    for (std::vector<uint8_t>& line : band.lines) {
        from -= row;
        for (uint32_t x = 0; x < width; ++x) {
            const uint8_t* pixel = from + size_t{x} * kPixelBytes;
            const RGBQUAD burned = {pixel[0], pixel[1], pixel[2], 0};
            const auto at = static_cast<uint32_t>(band.box.left) + x;
            if (IsSame(burned, ColourAt(picture, line, at))) continue;
            SetColour(picture, line, at, burned);
        }
    }
    return true;
}

}  // namespace

bool FindNoteBand(const Picture& picture, NoteAnswer note, NoteBand& band, std::string& why) {
    OwnedNote measured;
    if (!WriteNote(note, measured)) {
        why = "not enough memory to measure the note";
        return false;
    }
    const NoteRecord& record = measured.record;
    const RECT whole = {0, 0, static_cast<int32_t>(picture.width),
                        static_cast<int32_t>(picture.height)};
    const RECT box = {record.Left, record.Top, record.Right, record.Bottom};
    if (IntersectRect(&band.box, &box, &whole) == 0) {
        why = "its note lies outside the picture";
        return false;
    }
    note.at = {record.Left - band.box.left, record.Top - band.box.top};
    band.note = std::move(note);
    return true;
}

bool BurnBand(const Picture& picture, NoteBand& band) {
    if (band.lines.empty()) return true;
    const OwnedBlock dib = MakeDib(picture, band);
    if (!dib) return false;
    const OwnedBlock burned(BurnNote(band.note, dib.Get()));
    return burned && TakeFromDib(picture, burned.Get(), band);
}

}  // namespace vellim::tool
