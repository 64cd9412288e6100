// The one record through which the library reaches a person. Headless until a host installs one.
#include "platform/windows/desktop.h"

#include <mutex>

namespace vellim {
namespace {

constexpr DesktopDriver kHeadless{};

constinit std::mutex desktopMutex;
constinit DesktopDriver desktop = kHeadless;

}  // namespace

DesktopDriver CurrentDesktop() {
    const std::scoped_lock lock(desktopMutex);
    return desktop;
}

}  // namespace vellim

void SetDesktopDriver(const DesktopDriver* driver) {
    const std::scoped_lock lock(vellim::desktopMutex);
    vellim::desktop = driver != nullptr ? *driver : vellim::kHeadless;
}
