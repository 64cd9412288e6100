#include "bridge/damage_warning.h"

#include <array>

#include "bridge/message.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

bool EndedTooSoon(int32_t code) {
    return code == TIFF_UNEXPECTED_END || code == TIFF_EOFB_MISSING || code == TIFF_UNEXPECTED_EOFB;
}

}  // namespace

bool IsWorthKeeping(const char* caption) {
    const int32_t code = TiffError();
    if (!EndedTooSoon(code)) return false;
    std::array<char, TIFF_MESSAGE_BYTES> text{};
    ShowMessage(TiffErrorString(text.data(), code), caption, MB_TASKMODAL | MB_ICONEXCLAMATION);
    return true;
}

}  // namespace vellim
