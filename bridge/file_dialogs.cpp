#include "bridge/file_dialogs.h"

#include "container/failure.h"

namespace vellim {
namespace {

bool NoDialog() {
    return Fail(TIFF_NO_MEMORY, false);
}

}  // namespace

bool ShowTiffInfo(TiffFileHandle /*file*/, int32_t /*image*/) {
    return NoDialog();
}

bool AskHowToSave(const char* /*fileName*/, const BITMAP& /*picture*/) {
    return NoDialog();
}

}  // namespace vellim
