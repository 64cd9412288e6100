// A stored image on the clipboard.
#include "bridge/load_opening.h"
#include "bridge/opened_clipboard.h"
#include "platform/graphics/graphics_guards.h"
#include "vellim/load.h"

namespace vellim {
namespace {

bool LoadIntoClipboard(const char* fileName, int32_t image, int32_t showInfo) {
    const OpenTiff file(fileName, T_READ);
    if (!IsReadyToLoad(file, image, showInfo)) return false;
    // What the clipboard holds is given up for a bitmap alone.
    OwnedObject bitmap(LoadTiffChainIntoBitmap(file.Get(), image));
    if (!bitmap) return false;
    const OpenedClipboard clipboard;
    if (!clipboard) return false;
    EmptyClipboard();
    if (SetClipboardData(CF_BITMAP, bitmap.Get()) == 0) return false;
    bitmap.Release();
    return true;
}

}  // namespace
}  // namespace vellim

int32_t LoadTiffFileIntoClipboard(const char* fileName, int32_t imageIndex, int32_t showInfo) {
    return vellim::LoadIntoClipboard(fileName, imageIndex, showInfo) ? 1 : 0;
}
