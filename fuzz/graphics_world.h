// What the calls of graphics and windows are driven with: the objects that a run has made, and
// arguments picked by the input. Every buffer is just as large as the call has a right to.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

#include "fuzz/input.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {

using Bytes = std::vector<uint8_t>;

inline constexpr uint32_t kTrueColorBits = 24;
inline constexpr int64_t kMostBytes = int64_t{1} << 19;  // of what one call draws or reads

// What an argument is. All of these are 32 bits wide.
enum class Kind : uint8_t { Context, Object, Window, Place, Small, Operation, Any };

// All is given back at the end.
class World {
  public:
    World(const uint8_t* data, size_t size) : input_(data, size), left_(size) {}
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    [[nodiscard]] bool IsAtEnd() const { return left_ == 0; }
    uint8_t Byte() {
        left_ -= left_ == 0 ? 0 : 1;
        return input_.Byte();
    }
    uint32_t Word() {
        const uint32_t low = Byte();
        return low | uint32_t{Byte()} << 8U;
    }
    uint32_t Long() {
        const uint32_t low = Word();
        return low | Word() << 16U;
    }
    bool Seldom() { return Byte() >= 0xF0; }
    int32_t Place();
    uint32_t Pick(Kind kind);
    Bytes Noise(size_t count);

    std::vector<uint32_t> contexts, objects, windows;  // also those given back
    void Keep(std::vector<uint32_t>& made, uint32_t handle) {
        if (handle != 0) made.push_back(handle);
    }

  private:
    uint32_t PickHandle(const std::vector<uint32_t>& made);

    Input input_;
    size_t left_;
};

struct Size {
    int32_t width, height;

    [[nodiscard]] int64_t Stride(uint32_t bits, int64_t unit) const {
        return (int64_t{width} * bits + unit - 1) / unit * (unit / 8);
    }
    [[nodiscard]] int64_t Bytes(uint32_t bits, int64_t unit) const {
        return Stride(bits, unit) * height;
    }
};

// Whether a bitmap can have this size.
bool IsServed(const Size& size, uint32_t bits);

// Mostly above 0.
int32_t PickSide(World& world);

// Small ones, or such as must be refused; those between would cost time and memory alone. Without
// `bits` the depth isn't known.
Size PickSize(World& world, uint32_t bits = 0);

uint32_t PickDepth(World& world);
RECT PickRect(World& world);

struct Dib {
    Bytes info, bits;
    BITMAPINFOHEADER header{};
    bool isSound = false;

    [[nodiscard]] BITMAPINFO* Info() { return reinterpret_cast<BITMAPINFO*>(info.data()); }
    [[nodiscard]] int64_t Stride() const {
        return Size{header.biWidth, header.biHeight}.Stride(header.biBitCount, 32);
    }
};

// A DibColorUse, or now and then none.
uint32_t PickUse(World& world);

// A header with its colour table, and no rows yet. Rows are short; there may be any number.
Dib MakeHeader(World& world, uint32_t use);

// The rows that a call may read or write, in a buffer of their size.
void AddRows(World& world, Dib& dib, int64_t rows);

struct Band {
    uint32_t start, lines;
    int64_t rows;  // of the DIB
};

// Those of the DIB's rows that a call is to move.
Band PickBand(World& world, const Dib& dib);

}  // namespace vellim::fuzz
