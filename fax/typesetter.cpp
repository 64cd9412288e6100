#include "fax/typesetter.h"

#include <algorithm>
#include <limits>

#include "vellim/text.h"

namespace vellim {
namespace {

constexpr uint8_t kTab = 9;
constexpr uint8_t kCarriageReturn = 13;
constexpr uint8_t kFirstLetter = 32;
constexpr uint8_t kLastLetter = 126;

uint32_t LetterHeight(DeviceContextHandle context) {
    SIZE size{};
    if (GetTextExtentPointA(context, "M", 1, &size) == 0) return 0;
    return static_cast<uint32_t>(std::max(size.cy, 0));
}

}  // namespace

Typesetter::Typesetter(DeviceContextHandle context, const PageGeometry& page)
    : context_(context),
      page_(page),
      lineStep_(uint64_t{LetterHeight(context)} + page.lineSpacing),
      line_(context),
      x_(page.left),
      y_(page.top) {}

void Typesetter::Set(uint8_t byte, TextReader& text) {
    hasTail_ = false;
    if (byte == kTab) {
        Tab();
    } else if (byte == kCarriageReturn) {
        text.Next();
        DrawLine();
        StartLine();
        line_.Clear();
    } else if (byte >= kFirstLetter && byte <= kLastLetter) {
        line_.Append(byte);
    }
    if (line_.Width() + x_ >= page_.rightLimit) WrapLine();
}

void Typesetter::TurnPage() {
    x_ = page_.left;
    y_ = page_.top;
    tabs_ = 0;
    if (!hasTail_) line_.Clear();
}

void Typesetter::Draw(const std::string& text) const {
    constexpr uint64_t farthest = std::numeric_limits<int32_t>::max();
    if (text.empty() || x_ > farthest || y_ > farthest) return;
    const auto count = static_cast<int32_t>(std::min<uint64_t>(text.size(), farthest));
    TextOutA(context_, static_cast<int32_t>(x_), static_cast<int32_t>(y_), text.data(), count);
}

// The pen never goes back. Behind the last stop it stays where the text before the tab ends.
void Typesetter::Tab() {
    DrawLine();
    x_ += line_.Width();
    if (tabs_ < page_.tabStops.size())
        x_ = std::max(x_, uint64_t{page_.left} + page_.tabStops[tabs_++]);
    line_.Clear();
}

void Typesetter::StartLine() {
    y_ += lineStep_;
    x_ = page_.left;
    tabs_ = 0;
}

void Typesetter::WrapLine() {
    Draw(line_.TakeHead());
    StartLine();
    hasTail_ = true;
}

}  // namespace vellim
