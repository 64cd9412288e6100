#include "support/painted_view.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>

#include "platform/graphics/surface.h"
#include "vellim/platform.h"
#include "vellim/tags.h"

namespace vellim::test {
namespace {

constexpr ColorRef kBackground = 0x00A04020;

int32_t Rounded(double value) {
    return static_cast<int32_t>(std::floor(value + 0.5));
}

size_t At(const DecodedImage& image, int32_t x, int32_t y) {
    return static_cast<size_t>(y) * static_cast<size_t>(image.width) + static_cast<size_t>(x);
}

// A quarter turn clockwise: the lowest row becomes the first column.
DecodedImage Turned(const DecodedImage& image) {
    DecodedImage turned = image;
    std::swap(turned.width, turned.height);
    for (int32_t y = 0; y < turned.height; y++)
        for (int32_t x = 0; x < turned.width; x++)
            turned.pixels[At(turned, x, y)] = image.pixels[At(image, y, image.height - 1 - x)];
    return turned;
}

// One axis of a view.
struct Axis {
    int32_t size, client;  // of the turned picture, and of the window
    int32_t zoomed;
    double zoom;
    int32_t position, range;
    bool isFit, isCals;
    bool isDrawnSingly;  // its pixels are, line by line, and not all at once
    int32_t more;        // lines that are drawn behind the last on show
};

// The picture's pixels that a pixel of the window is made of.
struct Span {
    int32_t first = 0, end = 0;
};

std::vector<Span> SourceOf(const Axis& axis) {
    std::vector<Span> spans(static_cast<size_t>(axis.client));
    if (axis.zoomed <= 0) return spans;
    const int32_t seen = std::min(axis.zoomed, axis.client);
    const int32_t from = Rounded(double(axis.zoomed - seen) * axis.position / axis.range);
    const int32_t first = axis.isFit ? 0 : Rounded(from / axis.zoom);
    const int32_t end = axis.isFit ? axis.size : Rounded((from + seen) / axis.zoom);
    const int32_t count = end - first;
    const auto edge = [&axis](int32_t unit) {
        return Rounded(double(unit) * axis.zoomed / axis.size);
    };
    const int32_t painted =
        axis.isCals ? seen : edge(Rounded(double(seen) * axis.size / axis.zoomed));
    for (int32_t at = 0; at < std::min(painted, axis.client); at++) {
        Span span;
        if (!axis.isDrawnSingly && at < edge(count)) {
            span.first = at * count / edge(count);
            span.end = std::max(span.first + 1, (at + 1) * count / edge(count));
        }
        for (int32_t unit = 0; axis.isDrawnSingly && unit < count + axis.more; unit++)
            if (edge(unit) <= at && at < edge(unit + 1)) span = {unit, unit + 1};
        spans[static_cast<size_t>(at)] = {first + span.first,
                                          std::min(first + span.end, axis.size)};
    }
    return spans;
}

// One pixel of the display for those of the picture that fall together: bits by OR, else the last.
uint32_t Joined(const DecodedImage& image, const Span& across, const Span& down) {
    uint32_t joined = 0;
    for (int32_t y = down.first; y < down.end; y++)
        for (int32_t x = across.first; x < across.end; x++)
            joined = image.pixels[At(image, x, y)] | (image.bits == 1 ? joined : 0);
    return image.bits == 24 ? joined : image.colors[joined];
}

uint32_t DisplayBits() {
    const DeviceContextHandle display = GetDC(0);
    const auto bits = static_cast<uint32_t>(GetDeviceCaps(display, BITSPIXEL));
    ReleaseDC(0, display);
    return bits;
}

void WritePicture(const std::string& path, const std::vector<uint32_t>& pixels, int32_t width) {
    std::ofstream file(path, std::ios::binary);
    file << "P6 " << width << ' ' << pixels.size() / static_cast<size_t>(width) << " 255\n";
    for (const uint32_t pixel : pixels) {
        const ColorRef color = ColorOfPixel(DisplayBits(), pixel);
        for (const uint32_t shift : {0U, 8U, 16U})
            file.put(static_cast<char>(color >> shift & 0xFF));
    }
}

std::string Pair(const std::array<int32_t, 2>& numbers) {
    return std::to_string(numbers[0]) + ", " + std::to_string(numbers[1]);
}

std::string Difference(const TestWindow& to, const ExpectedView& expected,
                       const std::string& folder) {
    const std::vector<uint32_t> painted = to.Pixels();
    const auto differs = std::ranges::mismatch(painted, expected.pixels);
    if (differs.in1 == painted.end()) return "";
    const auto at = static_cast<int32_t>(differs.in1 - painted.begin());
    const int32_t width = expected.client[0];
    WritePicture(folder + "/painted.ppm", painted, width);
    WritePicture(folder + "/expected.ppm", expected.pixels, width);
    return std::to_string(*differs.in1) + " for " + std::to_string(*differs.in2) + " at " +
           Pair({at % width, at / width}) + " of " + Pair(expected.client);
}

}  // namespace

DecodedImage RandomImage(uint16_t bits, uint16_t photometric) {
    DecodedImage image{37, 29, bits, photometric, {}, std::vector<uint32_t>(size_t{37} * 29)};
    std::mt19937 engine(bits + 100U * photometric);
    const auto random = [&engine] { return static_cast<uint32_t>(engine()); };
    const uint32_t most = (1U << bits) - 1;
    for (uint32_t& pixel : image.pixels)
        pixel = bits == 1 ? random() % 3 / 2 : random() & most;
    for (uint32_t i = 0; i <= most && bits < 24; i++) {
        const uint32_t step = bits == 1 ? 255 : 256 / (most + 1);
        const uint32_t grey = photometric == 1 ? i * step : std::min(256 - i * step, 255U);
        image.colors.push_back(photometric == 3 ? random() & 0xFFFFFF : grey * 0x010101);
    }
    if (bits == 1) image.colors = {0, 0xFFFFFF};  // of device bitmaps, whatever the file means
    return image;
}

Bytes PackedRows(const DecodedImage& image) {
    const size_t rowBits = static_cast<size_t>(image.width) * image.bits;
    const size_t rowBytes = (rowBits + 7) / 8;
    Bytes rows(rowBytes * static_cast<size_t>(image.height));
    for (int32_t y = 0; y < image.height; y++) {
        for (size_t bit = 0; bit < rowBits; bit++) {
            const auto x = static_cast<int32_t>(bit / image.bits);
            const uint32_t pixel = image.pixels[At(image, x, y)];
            const size_t inPixel = bit % image.bits;  // red comes first, and is a colour's low byte
            const size_t shift =
                image.bits == 24 ? inPixel / 8 * 8 + 7 - inPixel % 8 : image.bits - 1 - inPixel;
            rows[static_cast<size_t>(y) * rowBytes + bit / 8] |=
                static_cast<uint8_t>((pixel >> shift & 1) << (7 - bit % 8));
        }
    }
    return rows;
}

ImageSpec TiffImageOf(const DecodedImage& image, const std::vector<TagSpec>& more) {
    const bool isRgb = image.bits == 24;
    ImageSpec tiff =
        SimpleImage(static_cast<uint32_t>(image.width), static_cast<uint32_t>(image.height),
                    isRgb ? 8 : image.bits, isRgb ? 3 : 1, 1, image.photometric, 7, {});
    const Bytes rows = PackedRows(image);
    const size_t strip = rows.size() / static_cast<size_t>(image.height) * 7;
    for (size_t at = 0; at < rows.size(); at += strip)
        tiff.strips.emplace_back(&rows[at], rows.data() + std::min(at + strip, rows.size()));
    std::vector<uint16_t> map;
    for (const uint32_t shift : {0U, 8U, 16U})
        for (const ColorRef color : image.colors)
            map.push_back(static_cast<uint16_t>((color >> shift & 0xFF) * 257));
    if (image.photometric == 3) tiff.tags.push_back(ShortTag(TIFF_TAG_COLOR_MAP, map));
    tiff.tags.insert(tiff.tags.end(), more.begin(), more.end());
    return tiff;
}

void SetScreen(int32_t bits) {
    const DisplaySettings display = {kScreenDpiX, kScreenDpiY, bits};
    SetDisplay(&display);
}

TestWindow::TestWindow(int32_t w, int32_t h, int32_t bars)
    : window(CreateMemoryWindow(w, h, bars)),
      width(w),
      height(h),
      barSize(bars),
      brush(CreateSolidBrush(kBackground)) {
    SetClassLongA(window, GCL_HBRBACKGROUND, brush);
    ResizeWindow(window, w, h);  // fills it
    SetScrollRange(window, SB_VERT, 20, 70, 0);
}

TestWindow::~TestWindow() {
    DestroyWindow(window);
    DeleteObject(brush);
}

std::vector<uint32_t> TestWindow::Pixels() const {
    WindowPixels area{};
    GetWindowPixels(window, &area);
    std::vector<uint32_t> pixels;
    for (int32_t i = 0; i < area.Width * area.Height; i++) {
        const size_t bit = static_cast<size_t>(i % area.Width) * area.BitsPerPixel;
        const uint8_t* at =
            area.Bits + static_cast<size_t>(i / area.Width) * area.RowBytes + bit / 8;
        if (area.BitsPerPixel == 24)
            pixels.push_back(at[0] | uint32_t{at[1]} << 8U | uint32_t{at[2]} << 16U);
        else
            pixels.push_back(area.BitsPerPixel == 8 ? *at : uint32_t{*at} >> (7 - bit % 8) & 1);
    }
    return pixels;
}

ExpectedView Expect(const DecodedImage& image, const ViewCase& view, const TestWindow& to) {
    const uint32_t turns = view.flags & VIEW_TURN_MASK, bits = DisplayBits();
    const bool isFit = (view.flags & VIEW_FIT) != 0, isZoom = (view.flags & VIEW_ZOOM) != 0;
    DecodedImage turned = image;
    for (uint32_t turn = 0; turn < turns; turn++)
        turned = Turned(turned);
    std::array<double, 2> zoom = {1, 1};
    const ZoomRatios ratios = view.ratios != nullptr ? *view.ratios : ZoomRatios{1, 1, 1, 1};
    if (isZoom && view.dpiX != 0) zoom = {kScreenDpiX / view.dpiX, kScreenDpiY / view.dpiY};
    if (isZoom && ratios.XNumerator != 0 && ratios.XDenominator != 0)
        zoom[0] *= double(ratios.XNumerator) / ratios.XDenominator;
    if (isZoom && ratios.YNumerator != 0 && ratios.YDenominator != 0)
        zoom[1] *= double(ratios.YNumerator) / ratios.YDenominator;

    // A bar takes room from the other axis.
    ExpectedView expected;
    expected.size = {Rounded(turned.width * zoom[0]), Rounded(turned.height * zoom[1])};
    const std::array<int32_t, 2> whole = {to.width, to.height};
    for (const int32_t bar : {SB_HORZ, SB_VERT})
        expected.bars.at(static_cast<size_t>(bar)) =
            !isFit && IsScrollBarShown(to.window, bar) != 0;
    for (const size_t axis : {0U, 1U})
        if (!isFit)
            expected.bars.at(axis) = expected.size.at(axis) >
                                     whole.at(axis) - (expected.bars.at(1 - axis) ? to.barSize : 0);
    for (const size_t axis : {0U, 1U})
        expected.client.at(axis) = whole.at(axis) - (expected.bars.at(1 - axis) ? to.barSize : 0);
    if (isFit) expected.size = expected.client;

    const auto spans = [&](size_t axis, int32_t size, int32_t position, int32_t range) {
        return SourceOf({size, expected.client.at(axis), expected.size.at(axis), zoom.at(axis),
                         position, range, isFit, view.isCals, turns % 2 != axis,
                         turns % 3 == 0 ? 1 : 0});
    };
    const auto across = spans(0, turned.width, GetScrollPos(to.window, SB_HORZ), 100);
    const auto down = spans(1, turned.height, GetScrollPos(to.window, SB_VERT) - 20, 50);
    const bool isNegative =
        (image.bits == 1 && image.photometric == 0) != ((view.flags & VIEW_INVERTED) != 0);
    for (const Span& y : down) {
        for (const Span& x : across) {
            const bool isSeen = x.first < x.end && y.first < y.end;
            const uint32_t pixel = NearestPixel(bits, isSeen ? Joined(turned, x, y) : kBackground);
            expected.pixels.push_back(isSeen && isNegative ? ~pixel & ((1U << bits) - 1) : pixel);
        }
    }
    return expected;
}

std::string FaultOfPaint(const DecodedImage& image, const ViewCase& view, const TestWindow& to,
                         std::array<int32_t, 2> positions, const Paint& paint,
                         const std::string& folder) {
    SetScrollPos(to.window, SB_HORZ, positions[0], 0);
    SetScrollPos(to.window, SB_VERT, positions[1], 0);
    const ExpectedView expected = Expect(image, view, to);
    const DeviceContextHandle context = GetDC(to.window);
    const int32_t result = paint(context);
    const int32_t mode = SetMapMode(context, MM_TEXT);
    ReleaseDC(to.window, context);
    if (result != 1) return "the paint failed";
    if (mode != (view.isCals ? MM_TEXT : MM_ANISOTROPIC)) return "context left in another mode";
    const std::array<int32_t, 2> least = {0, 20};
    for (const int32_t bar : {SB_HORZ, SB_VERT}) {
        const auto i = static_cast<size_t>(bar);
        if ((IsScrollBarShown(to.window, bar) != 0) != expected.bars.at(i)) return "bars";
        if (GetScrollPos(to.window, bar) != (expected.bars.at(i) ? positions : least).at(i))
            return "position of a bar";
    }
    if (GetUpdateRect(to.window, nullptr, 0) != 0) return "something is left to be painted";
    return Difference(to, expected, folder);
}

}  // namespace vellim::test
