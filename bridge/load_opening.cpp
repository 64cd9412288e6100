#include "bridge/load_opening.h"

#include "bridge/file_dialogs.h"
#include "vellim/tags.h"

namespace vellim {

bool IsReadyToLoad(const OpenTiff& file, int32_t image, int32_t showInfo) {
    if (!file || GetTiffImage(file.Get(), image) == 0) return false;
    return showInfo == 0 || ShowTiffInfo(file.Get(), image);
}

}  // namespace vellim
