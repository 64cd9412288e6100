// A device bitmap as bare CCITT code, without any container.

#include <algorithm>
#include <array>
#include <new>

#include "bridge/message.h"
#include "bridge/whole_file.h"
#include "container/failure.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "vellim/encode.h"
#include "vellim/save.h"

namespace vellim {
namespace {

struct ModeKey {
    uint32_t mode;
    CompressionKey key;
};
constexpr std::array<ModeKey, 5> kModes = {{{CCITT_FILE_GROUP3_1D, TIFF_KEY_GROUP3_1D},
                                            {CCITT_FILE_1D, TIFF_KEY_CCITT_1D_BARE},
                                            {CCITT_FILE_GROUP3_2D, TIFF_KEY_GROUP3_2D},
                                            {CCITT_FILE_GROUP4, TIFF_KEY_GROUP4},
                                            {CCITT_FILE_UNCOMPRESSED, TIFF_KEY_NONE}}};

bool EncodeBare(StreamHandle stream, BitmapHandle bitmap, CompressionKey key) {
    BITMAP record{};
    const ScopedContext display(ScopedContext::Kind::Display);
    if (!display || GetObjectA(bitmap, sizeof record, &record) != sizeof record)
        return Fail(TIFF_NO_MEMORY, false);
    SaveLineContext lines{};
    lines.DeviceContext = display.Get();
    lines.Bitmap = bitmap;
    return EncodeCcittImage(stream, record.bmWidth, record.bmHeight, key,
                            reinterpret_cast<uintptr_t>(&lines), DllFillCcittLine) != 0;
}

bool WriteFile(const char* fileName, BitmapHandle bitmap, CompressionKey key) try {
    const WaitCursor wait;
    WholeFile file(fileName);
    if (!file) return Fail(TIFF_IO_ERROR, false);
    if (!EncodeBare(file.Get(), bitmap, key)) return false;
    return file.Commit() || Fail(TIFF_IO_ERROR, false);
} catch (const std::bad_alloc&) {
    return Fail(TIFF_NO_MEMORY, false);
}

bool SaveBitmap(const char* fileName, BitmapHandle bitmap, uint32_t mode) {
    const auto* found = std::ranges::find(kModes, mode, &ModeKey::mode);
    if (found == kModes.end()) return Fail(TIFF_UNKNOWN_COMPRESSION, false);
    if (WriteFile(fileName, bitmap, found->key)) return true;
    ShowSaveFailed();
    return false;
}

}  // namespace
}  // namespace vellim

int32_t SaveBitmapInCcittFile(const char* fileName, BitmapHandle bitmap, uint32_t mode) {
    return vellim::SaveBitmap(fileName, bitmap, mode) ? 1 : 0;
}
