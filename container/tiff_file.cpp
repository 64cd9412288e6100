// The file handle: a control block that remembers where a file and its images are. No stream stays
// open between calls.

#include "container/tiff_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "container/chain_walk.h"
#include "container/failure.h"
#include "container/streams.h"

namespace vellim {
namespace {

constexpr uint32_t kHeaderLinkOffset = 4;  // where a new file's first directory is hooked to
constexpr uint32_t kOpenStyleAppend = OF_READWRITE | OF_SHARE_DENY_READ;
constexpr uint32_t kOpenStyleCreate = kOpenStyleAppend | OF_CREATE;
constexpr int32_t kNoMemorySize = -1;

bool ReadsExisting(int32_t mode) {
    return mode == T_READ || mode == T_APPEND;
}

uint32_t DiskOpenStyle(int32_t mode) {
    if (mode == T_READ) return OF_READ;
    return mode == T_APPEND ? kOpenStyleAppend : kOpenStyleCreate;
}

// A file that can't be opened for another reason than that it isn't there must not be taken for
// one that is to be made: making it would cut it to nothing.
bool IsMissing(const char* path) {
    OFSTRUCT told = {};
    const StreamHandle probe = OpenFile(path, &told, OF_READ);
    if (probe == -1) return told.nErrCode == ENOENT;
    mClose(probe);
    return false;
}

// A control block without images, for a file that is still to be read or written.
OwnedBlock NewTiffFile(GlobalHandle memoryBlock, int32_t memorySize, uint32_t openStyle) {
    OwnedBlock block(GlobalAlloc(GHND, sizeof(TiffFile)));
    const TiffFileAccess file(block.Get());
    if (!file) return Fail(TIFF_NO_MEMORY, OwnedBlock());
    file->OpenStyle = openStyle;
    file->TailLinkOffset = kHeaderLinkOffset;
    file->MemoryBlock = memoryBlock;
    file->MemorySize = memorySize;
    file->ByteOrder = TIFF_LITTLE_ENDIAN;
    return block;
}

// `stream`, unless another file has taken the path since; then -1.
StreamHandle TheSameFile(const TiffFile& file, StreamHandle stream) {
    if (stream == -1 || !file.Identity.IsKnown() || IdentityOf(stream) == file.Identity)
        return stream;
    mClose(stream);
    return -1;
}

bool StorePath(TiffFile& file, const char* path) {
    const size_t length = strnlen(path, TIFF_PATH_BYTES);
    if (length == TIFF_PATH_BYTES) return Fail(TIFF_PATH_TOO_LONG, false);
    std::memcpy(file.PathName, path, length + 1);
    file.Identity = {};
    return true;
}

TiffFileHandle FinishOpen(OwnedBlock block, int32_t mode) {
    if (ReadsExisting(mode) && !ReadTiffHeader(*TiffFileAccess(block.Get()))) return 0;
    return block.Release();
}

}  // namespace

StreamHandle OpenForReading(const TiffFile& file) {
    return file.IsMemory() ? mOpen(file.MemoryBlock, file.MemorySize)
                           : TheSameFile(file, OpenFile(file.PathName, nullptr, OF_READ));
}

StreamHandle OpenForWriting(TiffFile& file) {
    if (file.IsMemory()) return mOpen(file.MemoryBlock, file.MemorySize);
    constexpr uint32_t share = OF_SHARE_DENY_READ;
    const bool creates = (file.OpenStyle & OF_CREATE) != 0;
    const uint32_t style = file.OpenStyle | share | (file.MustBeNew && creates ? kMustBeNew : 0);
    const StreamHandle stream = OpenFile(file.PathName, nullptr, style);
    if (!creates || stream == -1) return TheSameFile(file, stream);
    file.MustBeNew = false;
    file.Identity = IdentityOf(stream);
    return stream;
}

}  // namespace vellim

using namespace vellim;

// An empty path would make a memory TIFF without memory, so it is refused in every mode.
TiffFileHandle OpenTiffFile(const char* path, int32_t mode) {
    SetTiffError(TIFF_SUCCESS);
    if (path == nullptr || path[0] == '\0') return Fail(TIFF_IO_ERROR, TiffFileHandle{0});
    const bool appendsToNone = mode == T_APPEND && IsMissing(path);
    if (appendsToNone) mode = T_CREAT;
    OwnedBlock block = NewTiffFile(0, kNoMemorySize, DiskOpenStyle(mode));
    if (!block || !ModiTiffFileInfo(block.Get(), path, TIFF_LITTLE_ENDIAN)) return 0;
    TiffFileAccess(block.Get())->MustBeNew = appendsToNone;
    return FinishOpen(std::move(block), mode);
}

// Opened for creation, a block that holds nothing yet gets its header with the first image. One
// that holds something is taken to begin with a header, and is written behind its end.
TiffFileHandle OpenTiffInMemory(GlobalHandle block, int32_t size, int32_t mode) {
    SetTiffError(TIFF_SUCCESS);
    if (size < 0) return Fail(TIFF_IO_ERROR, TiffFileHandle{0});
    const bool empty = block == 0 || size == 0;
    const uint32_t createStyle = empty ? kOpenStyleCreate : uint32_t{OF_READ};
    OwnedBlock file = NewTiffFile(block, block == 0 ? 0 : size,
                                  ReadsExisting(mode) ? kOpenStyleAppend : createStyle);
    if (!file) return 0;
    return FinishOpen(std::move(file), mode);
}

GlobalHandle GetMemoryTiffHandle(TiffFileHandle file) {
    const TiffFileAccess access(file);
    return access ? access->MemoryBlock : 0;
}

int32_t CloseTiffFile(TiffFileHandle file) {
    {
        const TiffFileAccess access(file);
        if (!access) return 0;
        for (const TiffImageSlot& slot : access->Images)
            if ((slot.Flags & TIFF_IMAGE_IN_MEMORY) != 0) GlobalFree(slot.TagBufferHandle);
    }
    GlobalFree(file);
    return 1;
}

int32_t GetTiffFileInfo(TiffFileHandle file, TiffFileInfo* info) {
    const TiffFileAccess access(file);
    if (!access || info == nullptr) return 0;
    *info = {};
    std::memcpy(info->PathName, access->PathName, TIFF_PATH_BYTES);
    info->ByteOrder = access->ByteOrder;
    info->ImageCount = static_cast<uint32_t>(access->ImageCount);
    info->FirstDirectoryOffset = access->Images[0].DirectoryOffset;
    return 1;
}

int32_t ModiTiffFileInfo(TiffFileHandle file, const char* path, int32_t byteOrder) {
    const TiffFileAccess access(file);
    if (!access) return 0;
    const bool stored = path == nullptr || StorePath(*access, path);
    if (byteOrder == 0) return stored ? 1 : 0;
    if (byteOrder != TIFF_LITTLE_ENDIAN && byteOrder != TIFF_BIG_ENDIAN)
        return Fail(TIFF_BAD_BYTE_ORDER, 0);
    access->ByteOrder = static_cast<uint16_t>(byteOrder);
    return stored ? 1 : 0;
}

int32_t IsTiffImageRegistered(TiffFileHandle file, int32_t image) {
    if (image < 0 || image >= TIFF_MAX_IMAGES) return Fail(TIFF_BAD_INDEX, 0);
    const TiffFileAccess access(file);
    return access && (access->Images[image].Flags & TIFF_IMAGE_IN_MEMORY) != 0 ? 1 : 0;
}

// Handing out a stored image's place to a new one can raise the count beyond the table.
int32_t NumberOfTiffImages(TiffFileHandle file, uint32_t selector) {
    const TiffFileAccess access(file);
    if (!access) return 0;
    if ((selector & TIFF_ALL_IMAGES) != 0) return access->ImageCount;
    const TiffImageSlot* images = access->Images;
    return static_cast<int32_t>(
        std::count_if(images, images + std::clamp(access->ImageCount, 0, TIFF_MAX_IMAGES),
                      [&](const TiffImageSlot& slot) { return slot.Flags == selector; }));
}

int32_t GetNumberOfImagesInTiffFile(const char* path) {
    const TiffFileHandle file = OpenTiffFile(path, T_READ);
    if (file == 0) return -1;
    const int32_t images = NumberOfTiffImages(file, TIFF_ALL_IMAGES);
    CloseTiffFile(file);
    return images;
}

int32_t SetTiffDllFileHandle(int32_t count) {
    return SetHandleCount(count);
}
