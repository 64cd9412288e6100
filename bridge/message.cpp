#include "bridge/message.h"

#include "vellim/failures.h"

namespace vellim {

void ShowMessage(const char* text, const char* caption, uint32_t style) {
    const int32_t code = TiffError();
    MessageBoxA(0, text, caption, style);
    SetTiffError(code);
}

void ShowSaveFailed() {
    ShowMessage("Saving has failed.", "TIFF error");
}

}  // namespace vellim
