// The walk reads directories alone, never a value that stands elsewhere, so that opening a long
// file touches little of it. A loop in the chain ends at TIFF_MAX_IMAGES.

#include "container/chain_walk.h"

#include <cstring>

#include "container/directory_reader.h"
#include "container/failure.h"
#include "container/streams.h"

namespace vellim {
namespace {

constexpr uint32_t kMarkBytes = 2;
constexpr uint32_t kVersionOffset = kMarkBytes;
constexpr uint16_t kTiffVersion = 42;
constexpr uint32_t kFirstLinkOffset = 4;

// A link that can't be read fails the walk even behind images: unlike a link that leads nowhere,
// it isn't one that a later directory could be hooked to.
bool WalkTiffChain(TiffFile& file, StreamWindow& window) {
    uint64_t linkOffset = kFirstLinkOffset;
    int32_t images = 0;
    while (images < TIFF_MAX_IMAGES) {
        file.TailLinkOffset = static_cast<uint32_t>(linkOffset);
        const std::optional<uint32_t> link = ReadLong(window, linkOffset, file.ByteOrder);
        if (!link) return Fail(TIFF_IO_ERROR, false);
        if (*link == 0) break;
        const std::optional<DirectorySummary> directory =
            ReadDirectorySummary(window, *link, file.ByteOrder);
        if (!directory) {
            SetTiffError(TIFF_IO_ERROR);
            if (images == 0) return false;
            break;
        }
        TiffImageSlot& slot = file.Images[images++];
        slot.DirectoryOffset = *link;
        slot.TagBytes = directory->TagBytes;
        slot.Flags = directory->SubfileType;
        linkOffset = directory->LinkOffset;
    }
    file.ImageCount = images;
    return true;
}

// The mark is taken as far as it is there: a file of one byte fails by what that byte is.
bool ReadByteOrder(TiffFile& file, StreamWindow& window) {
    const std::span<const uint8_t> mark = window.Peek(0, kMarkBytes);
    if (mark.empty()) return Fail(TIFF_IO_ERROR, false);
    std::memcpy(&file.ByteOrder, mark.data(), mark.size());
    if (file.ByteOrder != TIFF_LITTLE_ENDIAN && file.ByteOrder != TIFF_BIG_ENDIAN)
        return Fail(TIFF_BAD_BYTE_ORDER, false);
    return true;
}

}  // namespace

bool ReadTiffHeader(TiffFile& file) {
    const OpenStream stream(OpenForReading(file));
    if (!stream) return Fail(TIFF_IO_ERROR, false);
    file.Identity = IdentityOf(stream.Get());
    StreamWindow window(stream.Get());
    if (!ReadByteOrder(file, window)) return false;
    const std::optional<uint16_t> version = ReadShort(window, kVersionOffset, file.ByteOrder);
    if (!version) return Fail(TIFF_IO_ERROR, false);
    if (*version != kTiffVersion) return Fail(TIFF_NOT_TIFF, false);
    return WalkTiffChain(file, window);
}

}  // namespace vellim
