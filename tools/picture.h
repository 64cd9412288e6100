// A picture as it goes from stage to stage: its description, and the stages it goes through.
//
// Lines are rows of packed pixels, the leftmost in the high bits, in RowBytes bytes. Grey: 0 is
// black, the highest value white. Palette: indices. Rgb: red, green, blue.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "vellim/base.h"

namespace vellim::tool {

enum class Colour { Grey, Palette, Rgb };

struct PixelType {
    Colour colour = Colour::Grey;
    uint32_t bits = 1;  // a pixel: 1, 4 or 8; 24 for Rgb

    bool operator==(const PixelType&) const = default;
};

constexpr PixelType kBilevel{Colour::Grey, 1};
constexpr PixelType kGrey8{Colour::Grey, 8};
constexpr PixelType kRgb{Colour::Rgb, 24};

struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    PixelType type;
    std::vector<RGBQUAD> palette;  // 2^bits entries for Colour::Palette
    uint32_t pelsPerMetreX = 0;    // 0: not known
    uint32_t pelsPerMetreY = 0;
    bool absoluteResolution = true;  // false: the two figures tell the pixels' shape alone
};

constexpr size_t RowBytes(uint32_t width, PixelType type) {
    return static_cast<size_t>((uint64_t{width} * type.bits + 7) / 8);
}

inline size_t RowBytes(const Picture& picture) {
    return RowBytes(picture.width, picture.type);
}

// A stage, or a writer at the end of all stages: takes a picture's lines, top line first. Both
// functions give false on a failure, of which the output knows the reason.
struct LineSink {
    std::unique_ptr<void, void (*)(void*)> state{nullptr, nullptr};
    bool (*line)(void* state, const uint8_t* row) = nullptr;
    bool (*finish)(void* state) = nullptr;  // after the last line

    [[nodiscard]] bool Put(const uint8_t* row) const { return line(state.get(), row); }
    [[nodiscard]] bool Finish() const { return finish(state.get()); }
};

// A sink of a state and of functions that take that state.
template <auto line, auto finish, typename State>
LineSink MakeSink(std::unique_ptr<State> state) {
    LineSink sink;
    sink.state = {state.release(), [](void* p) { delete static_cast<State*>(p); }};
    sink.line = [](void* p, const uint8_t* row) { return line(*static_cast<State*>(p), row); };
    sink.finish = [](void* p) { return finish(*static_cast<State*>(p)); };
    return sink;
}

}  // namespace vellim::tool
