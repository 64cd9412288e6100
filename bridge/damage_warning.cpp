#include "bridge/damage_warning.h"

#include <array>

#include "vellim/failures.h"
#include "vellim/platform.h"

namespace vellim {
namespace {

bool EndedTooSoon(int32_t code) {
    return code == TIFF_UNEXPECTED_END || code == TIFF_EOFB_MISSING || code == TIFF_UNEXPECTED_EOFB;
}

// The code is what the caller reads next, whatever the desktop's own calls did meanwhile.
void WarnOf(int32_t code, const char* caption) {
    std::array<char, TIFF_MESSAGE_BYTES> message{};
    MessageBoxA(0, TiffErrorString(message.data(), code), caption,
                MB_TASKMODAL | MB_ICONEXCLAMATION);
    SetTiffError(code);
}

}  // namespace

bool IsWorthKeeping(const char* caption) {
    const int32_t code = TiffError();
    if (!EndedTooSoon(code)) return false;
    WarnOf(code, caption);
    return true;
}

}  // namespace vellim
