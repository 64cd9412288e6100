// The display: one record for the process, and device contexts that stand for it.
//
// A context is a name without pixels: what it tells is what the display is at that moment.
#include <mutex>

#include "platform/handle_table.h"
#include "vellim/platform.h"

namespace vellim {
namespace {

struct DisplayContext {};

constinit HandleTable<DisplayContext, HandleKind::kDeviceContext> contexts;

constexpr DisplaySettings kDefaultDisplay = {96, 96, 24};
constexpr int32_t kMostDotsPerInch = 65535;  // what half a DPI value holds
constexpr WindowHandle kNoWindow = 0;

constinit std::mutex displayMutex;
constinit DisplaySettings display = kDefaultDisplay;

DisplaySettings CurrentDisplay() {
    const std::scoped_lock lock(displayMutex);
    return display;
}

bool MakesSense(const DisplaySettings& settings) {
    const auto isResolution = [](int32_t dots) { return dots > 0 && dots <= kMostDotsPerInch; };
    const int32_t depth = settings.BitsPerPixel;
    return isResolution(settings.DotsPerInchX) && isResolution(settings.DotsPerInchY) &&
           (depth == 1 || depth == 8 || depth == 24);
}

// Colours that a display of few colours always has: two, or the twenty that the system keeps of a
// palette's.
int32_t FixedColors(int32_t depth) {
    if (depth == 1) return 2;
    return depth == 8 ? 20 : 0;
}

}  // namespace
}  // namespace vellim

int32_t SetDisplay(const DisplaySettings* settings) {
    const DisplaySettings wanted = settings != nullptr ? *settings : vellim::kDefaultDisplay;
    if (!vellim::MakesSense(wanted)) return 0;
    const std::scoped_lock lock(vellim::displayMutex);
    vellim::display = wanted;
    return 1;
}

DeviceContextHandle GetDC(WindowHandle window) {
    if (window != vellim::kNoWindow) return 0;
    const DeviceContextHandle context = vellim::contexts.Reserve().handle;
    if (context != 0) vellim::contexts.Publish(context);
    return context;
}

int32_t ReleaseDC(WindowHandle window, DeviceContextHandle context) {
    if (window != vellim::kNoWindow || vellim::contexts.Find(context) == nullptr) return 0;
    if (!vellim::contexts.Withdraw(context)) return 0;
    vellim::contexts.Recycle(context);
    return 1;
}

int32_t GetDeviceCaps(DeviceContextHandle context, int32_t capability) {
    constexpr int32_t paletteDepth = 8;
    if (vellim::contexts.Find(context) == nullptr) return 0;
    const DisplaySettings now = vellim::CurrentDisplay();
    switch (capability) {
        case BITSPIXEL:
            return now.BitsPerPixel;
        case PLANES:
            return 1;
        case NUMCOLORS:
            return vellim::FixedColors(now.BitsPerPixel);
        case LOGPIXELSX:
            return now.DotsPerInchX;
        case LOGPIXELSY:
            return now.DotsPerInchY;
        case SIZEPALETTE:
            return now.BitsPerPixel == paletteDepth ? 1 << paletteDepth : 0;
        default:
            return 0;
    }
}
