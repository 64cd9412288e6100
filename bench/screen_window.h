// A window in memory that pictures are painted into.
#pragma once

#include <cstdint>
#include <string>

#include "vellim/vellim.h"

namespace vellim::bench {

class ScreenWindow {
  public:
    static constexpr int32_t kScrollRange = 100;

    ScreenWindow(int32_t width, int32_t height) : window_(CreateMemoryWindow(width, height, 0)) {}
    ~ScreenWindow() { DestroyWindow(window_); }
    ScreenWindow(const ScreenWindow&) = delete;
    ScreenWindow& operator=(const ScreenWindow&) = delete;

    // Scrolls to so many hundredths of the picture that isn't seen.
    void ScrollTo(int32_t position) const {
        for (const int32_t bar : {SB_HORZ, SB_VERT}) {
            SetScrollRange(window_, bar, 0, kScrollRange, 0);
            SetScrollPos(window_, bar, position, 0);
        }
    }

    [[nodiscard]] bool Paint(const std::string& path, const ZoomRatios* zoom,
                             uint32_t flags) const {
        const DeviceContextHandle context = GetDC(window_);
        const int32_t painted =
            DecompressTiffToScreen(window_, context, path.c_str(), 0, zoom, flags);
        ReleaseDC(window_, context);
        return painted == 1;
    }

    [[nodiscard]] bool SizeOf(const std::string& path, const ZoomRatios* zoom, uint32_t flags,
                              RECT& size) const {
        const DeviceContextHandle context = GetDC(window_);
        const int32_t told = GetScreenViewSize(SCREEN_FORMAT_TIFF, window_, context, path.c_str(),
                                               0, zoom, flags, &size);
        ReleaseDC(window_, context);
        return told == 1;
    }

    // Whether something is to be seen: not all pixels are alike.
    [[nodiscard]] bool HasTwoColors() const {
        WindowPixels pixels{};
        if (GetWindowPixels(window_, &pixels) == 0) return false;
        for (int32_t y = 0; y < pixels.Height; ++y) {
            const uint8_t* row = pixels.Bits + static_cast<size_t>(y) * pixels.RowBytes;
            const size_t bytes = static_cast<size_t>(pixels.Width) * pixels.BitsPerPixel / 8;
            for (size_t i = 0; i < bytes; ++i)
                if (row[i] != *pixels.Bits) return true;
        }
        return false;
    }

  private:
    WindowHandle window_;
};

}  // namespace vellim::bench
