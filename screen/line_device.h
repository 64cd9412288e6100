// What every line of a paint passes through on its way to the screen.
#pragma once

#include <optional>

#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"

namespace vellim {

// A bitmap of one line, a row or a column, in a context of memory, and a work block of zeros for
// turned lines. Converts to false where one of them can't be had.
class LineDevice {
  public:
    // `scratchBytes` 0: no work block is wanted; nothing: there can't be one.
    LineDevice(int32_t pixels, bool isRow, uint32_t bits, std::optional<uint32_t> scratchBytes)
        : wantsScratch_(scratchBytes != 0U),
          block_(wantsScratch_ && scratchBytes ? GlobalAlloc(GHND, *scratchBytes) : 0),
          scratch_(block_.Get()),
          bitmap_(CreateBitmap(isRow ? pixels : 1, isRow ? 1 : pixels, 1, bits, nullptr)),
          context_(ScopedContext::Kind::Memory) {
        SelectObject(context_.Get(), bitmap_.Get());
    }

    explicit operator bool() const { return bitmap_ && context_ && (!wantsScratch_ || scratch_); }
    [[nodiscard]] BitmapHandle Bitmap() const { return bitmap_.Get(); }
    [[nodiscard]] DeviceContextHandle Context() const { return context_.Get(); }
    [[nodiscard]] uint8_t* Scratch() const { return scratch_.As<uint8_t>(); }

  private:
    bool wantsScratch_;
    OwnedBlock block_;
    LockedBlock scratch_;
    OwnedObject bitmap_;
    ScopedContext context_;
};

}  // namespace vellim
