// A line of text that isn't drawn yet, and its width.
#pragma once

#include <cstdint>
#include <string>

#include "platform/graphics/text_widths.h"
#include "vellim/graphics.h"

namespace vellim {

// Cuts `line` before its last break character (space ! , - . : ; ?), which is lost, and gives what
// stood behind it. A break character at the head of the line doesn't count; without another one
// `line` stays whole and the tail is empty.
std::string SplitFaxLine(std::string& line);

// The width grows with each byte: the line is never measured anew.
class FaxLine {
  public:
    explicit FaxLine(DeviceContextHandle context) : widths_(context) {}

    // False where there is no memory to measure with.
    explicit operator bool() const { return static_cast<bool>(widths_); }

    void Append(uint8_t byte);
    void Clear();

    // Gives the line up to its last break, and goes on as the tail.
    [[nodiscard]] std::string TakeHead();

    [[nodiscard]] const std::string& Text() const { return text_; }
    [[nodiscard]] uint64_t Width() const { return width_; }

  private:
    [[nodiscard]] uint64_t WidthOf(uint8_t byte) const;

    TextWidths widths_;
    std::string text_;
    uint64_t width_ = 0;
};

}  // namespace vellim
