// The display's settings: one record for the process.
#include "platform/graphics/display.h"

#include <atomic>
#include <mutex>

namespace vellim {
namespace {

constexpr DisplaySettings kDefaultDisplay = {96, 96, 24};
constexpr int32_t kMostDotsPerInch = 65535;  // what half a DPI value holds

constinit std::mutex displayMutex;
constinit DisplaySettings display = kDefaultDisplay;
constinit std::atomic<uint32_t> version = 0;

bool MakesSense(const DisplaySettings& settings) {
    const auto isResolution = [](int32_t dots) { return dots > 0 && dots <= kMostDotsPerInch; };
    const int32_t depth = settings.BitsPerPixel;
    return isResolution(settings.DotsPerInchX) && isResolution(settings.DotsPerInchY) &&
           (depth == 1 || depth == 8 || depth == 24);
}

}  // namespace

DisplaySettings CurrentDisplay() {
    const std::scoped_lock lock(displayMutex);
    return display;
}

uint32_t DisplayVersion() {
    return version.load(std::memory_order_acquire);
}

void NoteDisplayChange() {
    version.fetch_add(1, std::memory_order_release);
}

}  // namespace vellim

int32_t SetDisplay(const DisplaySettings* settings) {
    const DisplaySettings wanted = settings != nullptr ? *settings : vellim::kDefaultDisplay;
    if (!vellim::MakesSense(wanted)) return 0;
    const std::scoped_lock lock(vellim::displayMutex);
    vellim::display = wanted;
    vellim::NoteDisplayChange();
    return 1;
}
