// Memory for pixels.
#include "platform/graphics/surface.h"

#include <limits>
#include <new>

#include "platform/memory/large_memory.h"

namespace vellim {
namespace {

constexpr uint64_t kMostBytes = std::numeric_limits<int32_t>::max();

bool IsServed(uint32_t bits) {
    return bits == 1 || bits == 4 || bits == 8 || bits == 24;
}

}  // namespace

std::shared_ptr<Surface> MakeSurface(int32_t width, int32_t height, uint32_t bits) {
    if (width < 1 || height < 1 || !IsServed(bits)) return nullptr;
    const uint64_t stride = (static_cast<uint64_t>(width) * bits + 15) / 16 * 2;
    const uint64_t bytes = stride * static_cast<uint64_t>(height);
    if (bytes > kMostBytes) return nullptr;
    std::unique_ptr<uint8_t, Surface::FreePixels> pixels(
        AllocateZeroed(static_cast<size_t>(bytes)));
    if (pixels == nullptr) return nullptr;
    try {
        auto surface = std::make_shared<Surface>();
        surface->width = width;
        surface->height = height;
        surface->bits = bits;
        surface->stride = static_cast<uint32_t>(stride);
        surface->pixels = std::move(pixels);
        return surface;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

}  // namespace vellim
