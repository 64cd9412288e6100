// Changing a tag of a stored image, and adding a copy of a stored image to another file.
//
// A copy goes behind all that the destination holds: a directory, its values, the image's data.
// The link that leads to it is written last of all, so that what fails or is killed before leaves
// the chain that there was.

#include <utility>

#include "container/directory_writer.h"
#include "container/failure.h"
#include "container/file_rewrite.h"
#include "container/image_copy.h"
#include "container/open_tiff.h"
#include "container/streams.h"
#include "container/tag_buffer.h"
#include "container/tiff_file.h"
#include "platform/files/file_replacement.h"
#include "vellim/edit.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr int32_t kFromEnd = 2;

// A place for an image in a file's table, given back at the end of the scope unless it is kept.
class NewPlace {
  public:
    explicit NewPlace(TiffFileHandle file) : file_(file), image_(DefineTiffImage(file)) {}
    ~NewPlace() {
        const TiffFileAccess access(file_);
        if (!*this || !access) return;
        TiffImageSlot& slot = access->Images[image_];
        GlobalFree(std::exchange(slot.TagBufferHandle, 0));
        slot.Flags = static_cast<uint16_t>(slot.Flags & ~TIFF_IMAGE_IN_MEMORY);
        access->ImageCount--;
    }
    NewPlace(const NewPlace&) = delete;
    NewPlace& operator=(const NewPlace&) = delete;

    explicit operator bool() const { return image_ >= 0; }
    int32_t Keep() { return std::exchange(image_, -1); }

  private:
    TiffFileHandle file_;
    int32_t image_;
};

struct AppendedImage {
    uint32_t DirectoryOffset;
    CopiedImage Copy;
};

// A new file is made only if that doesn't wipe out what is to be copied.
bool MayWrite(const TiffFile& destination, const TiffFile& source) {
    if (destination.IsMemory() || destination.Stream != 0) return false;
    const bool creates = (destination.OpenStyle & kCreateBit) != 0;
    return !creates || !SameFile(source.PathName, destination.PathName);
}

// What can't be copied at all is found before a file is made or emptied for it.
//
// A failure leaves the destination's record as it was, but for OpenStyle: once the file has its
// header it isn't to be made again, whatever comes after.
std::optional<AppendedImage> AppendCopy(TiffFile& source, TiffFileHandle sourceHandle,
                                        int32_t index, TiffFile& destination) {
    source.OpenStyle = OF_READ;
    const OpenStream from(source.IsMemory() ? -1 : OpenForReading(source));
    if (!from) return Fail(TIFF_IO_ERROR, std::nullopt);
    const uint64_t sourceBytes = SourceBytes(from.Get());
    const ImageSource image{.File = sourceHandle,
                            .Image = index,
                            .Stream = from.Get(),
                            .StreamBytes = sourceBytes,
                            .Added = nullptr};
    const bool creates = (destination.OpenStyle & kCreateBit) != 0;
    if (creates && !CanBeCopied(image)) return std::nullopt;
    if (!MayWrite(destination, source)) return Fail(TIFF_IO_ERROR, std::nullopt);
    if (!creates) destination.OpenStyle = kWrittenStyle;
    const OpenStream to(OpenForWriting(destination));
    if (!to || !WriteTiffHeader(destination, to.Get(), 0)) return Fail(TIFF_IO_ERROR, std::nullopt);
    destination.OpenStyle = kWrittenStyle;
    const int32_t at = mSeek(to.Get(), 0, kFromEnd);
    if (at < 0) return Fail(TIFF_IO_ERROR, std::nullopt);

    uint64_t allowance = CopyAllowance(sourceBytes);
    const auto copied = WriteImageCopy(image,
                                       {.Stream = to.Get(),
                                        .At = static_cast<uint32_t>(at),
                                        .ByteOrder = destination.ByteOrder,
                                        .Followed = false},
                                       allowance);
    const auto directoryOffset = static_cast<uint32_t>(at);
    if (!copied ||
        !WriteLink(to.Get(), destination.TailLinkOffset, directoryOffset, destination.ByteOrder))
        return std::nullopt;
    return AppendedImage{.DirectoryOffset = directoryOffset, .Copy = *copied};
}

bool CopyLoadedImage(TiffFileHandle source, int32_t image, TiffFileHandle destination) {
    const TiffFileAccess from(source), to(destination);
    if (!to) return Fail(TIFF_IO_ERROR, false);
    NewPlace place(destination);
    if (!place) return false;
    const auto appended = AppendCopy(*from, source, image, *to);
    if (!appended) return false;
    const int32_t added = place.Keep();
    TiffImageSlot& slot = to->Images[added];
    slot.DirectoryOffset = appended->DirectoryOffset;
    slot.TagBytes = appended->Copy.TagBytes;
    to->TailLinkOffset = appended->Copy.LinkOffset;
    DropTiffImage(destination, added);
    return true;
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t AddTiffTagToImage(const char* path, int32_t image, uint32_t tag, uint32_t type,
                          const void* value, uint32_t count) {
    const NewValue added{.Type = type, .Value = value, .Count = count};
    return RewriteTiffFile(path, image, {.Tag = tag, .New = added}) ? 1 : 0;
}

int32_t DeleteTiffTagOfImage(const char* path, int32_t image, uint32_t tag) {
    return RewriteTiffFile(path, image, {.Tag = tag, .New = std::nullopt}) ? 1 : 0;
}

int32_t CopyTiffImage(TiffFileHandle source, int32_t image, TiffFileHandle destination) {
    if (!TiffFileAccess(source)) return Fail(TIFF_IO_ERROR, 0);
    if (GetTiffImage(source, image) == 0) return 0;
    const bool copied = CopyLoadedImage(source, image, destination);
    DropTiffImage(source, image);
    return copied ? 1 : 0;
}

int32_t CopyTiffImageInFile(const char* sourcePath, int32_t image, const char* destinationPath,
                            int32_t mode) {
    const OpenTiff destination(destinationPath, mode);
    if (!destination) return 0;
    const OpenTiff source(sourcePath, T_READ);
    return source ? CopyTiffImage(source.Get(), image, destination.Get()) : 0;
}
