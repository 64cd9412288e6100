// What a window must show of a picture, worked out pixel by pixel from the decoded picture: turned,
// each axis stretched and cut for itself.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "support/tiff_builder.h"
#include "vellim/screen.h"
#include "vellim/windows.h"

namespace vellim::test {

// Pixels as a file stores them, top row first: colours of 24 bits, else numbers of `colors`.
struct DecodedImage {
    int32_t width = 0, height = 0;
    uint16_t bits = 0, photometric = 0;
    std::vector<ColorRef> colors;
    std::vector<uint32_t> pixels;
};

// Of 37 x 29 random pixels, and as a TIFF file: a random ColorMap at Photometric 3.
DecodedImage RandomImage(uint16_t bits, uint16_t photometric);
Bytes PackedRows(const DecodedImage& image);
ImageSpec TiffImageOf(const DecodedImage& image, const std::vector<TagSpec>& more = {});

// The display of the tests, whose resolutions differ, in bits a pixel.
inline constexpr int32_t kScreenDpiX = 96, kScreenDpiY = 120;
void SetScreen(int32_t bits);

// A view as it is asked for. The picture has no resolution where that is 0. TIFF pictures are cut
// where a pixel of theirs ends, CALS pictures where a pixel of the device does.
struct ViewCase {
    uint32_t flags = 0;
    const ZoomRatios* ratios = nullptr;
    double dpiX = 0, dpiY = 0;
    bool isCals = false;
};

// A window with a background of its own, on which pictures are painted one over the other. Its bars
// have ranges from 0 to 100 and from 20 to 70.
struct TestWindow {
    WindowHandle window;
    int32_t width, height, barSize;
    BrushHandle brush;

    TestWindow(int32_t w, int32_t h, int32_t bars);
    ~TestWindow();
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;

    [[nodiscard]] std::vector<uint32_t> Pixels() const;  // of the client area
};

// Everything that a paint of `image` is to leave: pixels of the display, and the whole's size.
struct ExpectedView {
    std::array<bool, 2> bars{};
    std::array<int32_t, 2> client{}, size{};
    std::vector<uint32_t> pixels;
};
ExpectedView Expect(const DecodedImage& image, const ViewCase& view, const TestWindow& to);

// Paints with the bars at `positions` and tells what differs from what is expected, or nothing;
// pictures that differ go to painted.ppm and expected.ppm in `folder`.
using Paint = std::function<int32_t(DeviceContextHandle context)>;
std::string FaultOfPaint(const DecodedImage& image, const ViewCase& view, const TestWindow& to,
                         std::array<int32_t, 2> positions, const Paint& paint,
                         const std::string& folder);

}  // namespace vellim::test
