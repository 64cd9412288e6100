// Text set on a page: the pen, the line that it hasn't drawn yet, tabs and word wrap.
#pragma once

#include <cstdint>
#include <string>

#include "fax/fax_line.h"
#include "fax/page_geometry.h"
#include "fax/text_reader.h"

namespace vellim {

class Typesetter {
  public:
    // With the context's font and colours, which stay as they are from here on.
    Typesetter(DeviceContextHandle context, const PageGeometry& page);

    // False where there is no memory for the font.
    explicit operator bool() const { return static_cast<bool>(line_); }

    // Sets one byte; a carriage return takes the one behind it off the text too.
    void Set(uint8_t byte, TextReader& text);

    [[nodiscard]] bool IsPageFull() const { return y_ >= page_.bottomLimit; }

    // Puts the pen on a new page. What a wrap has just moved to the next line goes there too; any
    // other text that wasn't drawn is dropped.
    void TurnPage();

    void DrawLine() const { Draw(line_.Text()); }

  private:
    void Draw(const std::string& text) const;
    void Tab();
    void StartLine();
    void WrapLine();

    DeviceContextHandle context_;
    PageGeometry page_;
    uint64_t lineStep_;
    FaxLine line_;
    uint64_t x_, y_;
    uint32_t tabs_ = 0;     // on this line
    bool hasTail_ = false;  // `line_` is what the wrap after the last byte has left
};

}  // namespace vellim
