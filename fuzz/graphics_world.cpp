#include "fuzz/graphics_world.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "fuzz/checks.h"

namespace vellim::fuzz {
namespace {

using Limits = std::numeric_limits<int32_t>;

constexpr int32_t kMostSide = 2000;
constexpr int64_t kMostSurfaceBytes = Limits::max();

void MakeOdd(World& world, BITMAPINFOHEADER& header) {
    switch (world.Byte() % 6) {
        case 0:
            header.biSize = world.Long();
            break;
        case 1:
            header.biPlanes = static_cast<uint16_t>(world.Word());
            break;
        case 2:
            header.biBitCount = static_cast<uint16_t>(world.Word());
            break;
        case 3:
            header.biCompression = world.Long();
            break;
        default:
            header.biClrUsed = world.Long();
    }
}

bool IsSound(const BITMAPINFOHEADER& header, uint32_t use) {
    const uint32_t bits = header.biBitCount;
    return header.biSize == sizeof header && header.biPlanes == 1 && header.biCompression == 0 &&
           header.biWidth > 0 && header.biHeight > 0 && use <= DIB_PAL_COLORS &&
           (bits == 1 || bits == 4 || bits == 8 || bits == kTrueColorBits);
}

}  // namespace

// Windows that are gone still have their contexts, so these go first.
World::~World() {
    for (const uint32_t context : contexts) {
        DeleteDC(context);
        ReleaseDC(0, context);
        for (const uint32_t window : windows)
            ReleaseDC(window, context);
    }
    CloseClipboard();
    Require(OpenClipboard(0) == 1 && EmptyClipboard() == 1 && CloseClipboard() == 1,
            "the clipboard can be had");
    for (const uint32_t window : windows)
        DestroyWindow(window);
    for (const uint32_t object : objects)
        DeleteObject(object);
    SetDisplay(nullptr);
    SetDisplayPalette(nullptr);
}

int32_t World::Place() {
    constexpr std::array<int32_t, 8> far = {
        Limits::min(), Limits::min() + 1, Limits::max(), Limits::max() - 1,
        -0x40000000,   0x40000000,        -0x10000,      0x10000};
    const uint8_t choice = Byte();
    if (choice < 0xC0) return static_cast<int8_t>(Byte());
    if (choice < 0xE0) return static_cast<int16_t>(Word());
    return choice < 0xF0 ? far[choice % far.size()] : static_cast<int32_t>(Long());
}

uint32_t World::PickHandle(const std::vector<uint32_t>& made) {
    const uint8_t choice = Byte();
    if (choice < 0xE0 && !made.empty()) return made[choice % made.size()];
    if (choice < 0xE8) return 0;
    if (choice >= 0xF8) return Long();
    const std::array<const std::vector<uint32_t>*, 3> all = {&contexts, &objects, &windows};
    const std::vector<uint32_t>& other = *all[choice % all.size()];
    return other.empty() ? 0 : other.back();
}

uint32_t World::Pick(Kind kind) {
    constexpr std::array<uint32_t, 8> operations = {SRCCOPY,   NOTSRCCOPY, SRCPAINT,  SRCAND,
                                                    SRCINVERT, PATCOPY,    BLACKNESS, WHITENESS};
    switch (kind) {
        case Kind::Context:
            return PickHandle(contexts);
        case Kind::Object:
            return PickHandle(objects);
        case Kind::Window:
            return PickHandle(windows);
        case Kind::Place:
            return static_cast<uint32_t>(Place());
        case Kind::Small:
            return Byte() % 8U;
        case Kind::Operation:
            return Seldom() ? Long() : operations[Byte() % operations.size()];
        case Kind::Any:
            break;
    }
    return Long();
}

Bytes World::Noise(size_t count) {
    Bytes bytes(count);
    uint32_t state = Byte();
    for (uint8_t& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<uint8_t>(state >> 24U);
    }
    return bytes;
}

bool IsServed(const Size& size, uint32_t bits) {
    return size.width > 0 && size.height > 0 && size.Stride(bits, 16) <= kMostSurfaceBytes &&
           size.Bytes(bits, 16) <= kMostSurfaceBytes;
}

int32_t PickSide(World& world) {
    const int32_t place = world.Place();
    return place > 0 || place < -0x8000 || world.Seldom() ? place : -place;
}

Size PickSize(World& world, uint32_t bits) {
    Size size = {PickSide(world), PickSide(world)};
    if (!IsServed(size, std::max(bits, 1U))) return size;
    if (bits == 0) bits = kTrueColorBits;
    size.width = 1 + size.width % kMostSide;
    const int64_t rows = std::min<int64_t>(kMostSide, kMostBytes / size.Stride(bits, 16));
    size.height = 1 + static_cast<int32_t>(size.height % rows);
    return size;
}

uint32_t PickDepth(World& world) {
    constexpr std::array<uint32_t, 4> depths = {1, 4, 8, kTrueColorBits};
    return depths[world.Byte() % depths.size()];
}

RECT PickRect(World& world) {
    return {world.Place(), world.Place(), world.Place(), world.Place()};
}

uint32_t PickUse(World& world) {
    return world.Seldom() ? world.Long() : world.Byte() % 2U;
}

Dib MakeHeader(World& world, uint32_t use) {
    Dib dib;
    dib.header.biSize = sizeof dib.header;
    dib.header.biPlanes = 1;
    dib.header.biBitCount = static_cast<uint16_t>(PickDepth(world));
    dib.header.biWidth = PickSide(world);
    dib.header.biHeight = PickSide(world);
    if (dib.header.biWidth > kMostSide) dib.header.biWidth %= kMostSide;
    dib.header.biClrUsed = world.Seldom() ? world.Byte() : 0;
    if (world.Seldom()) MakeOdd(world, dib.header);
    dib.isSound = IsSound(dib.header, use);
    size_t colors = 0;
    if (dib.isSound && dib.header.biBitCount != kTrueColorBits) {
        const uint32_t all = 1U << dib.header.biBitCount;
        colors = dib.header.biClrUsed == 0 ? all : std::min(dib.header.biClrUsed, all);
    }
    dib.info = world.Noise(sizeof dib.header + colors * (use == DIB_PAL_COLORS ? 2 : 4));
    std::memcpy(dib.info.data(), &dib.header, sizeof dib.header);
    return dib;
}

void AddRows(World& world, Dib& dib, int64_t rows) {
    dib.bits = world.Noise(dib.isSound ? static_cast<size_t>(dib.Stride() * rows) : 1);
    if (dib.bits.empty()) dib.bits.reserve(1);
}

Band PickBand(World& world, const Dib& dib) {
    const auto start = static_cast<uint32_t>(world.Place());
    auto lines = static_cast<uint32_t>(world.Place());
    if (!dib.isSound) return {start, lines, 0};
    lines = std::min(lines, static_cast<uint32_t>(kMostBytes / dib.Stride()));
    return {start, lines, std::clamp<int64_t>(int64_t{dib.header.biHeight} - start, 0, lines)};
}

}  // namespace vellim::fuzz
