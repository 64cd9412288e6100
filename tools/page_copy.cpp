// The library copies an image with all its tags. Where some have to go, the page takes a detour
// through a file of its own, in which they are deleted: a deletion writes a whole file anew, and
// the destination may be large.
#include "page_copy.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "losses.h"
#include "messages.h"
#include "passing_file.h"
#include "tag_rewrite.h"
#include "vellim/edit.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

bool FailWith(std::string& why) {
    why = FailureInWords(TiffError());
    return false;
}

uint64_t SizeOf(int descriptor) {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

uint64_t SizeOf(TiffFileHandle file) {
    TiffFileInfo info = {};
    std::error_code error;
    GetTiffFileInfo(file, &info);
    const uint64_t size = std::filesystem::file_size(info.PathName, error);
    return error ? 0 : size;
}

// Tells which of the two is to blame. `error` is what the system said, `bytes` the most that the
// copy would have made of the file.
PageCopied Blame(int32_t code, int error, uint64_t bytes, std::string& why) {
    why = FailureInWriting(code, error, bytes);
    if (!why.empty()) return PageCopied::NotWritten;
    why = FailureInWords(code);
    return PageCopied::NotRead;
}

PageCopied Copy(TiffFileHandle source, int32_t image, TiffFileHandle destination, uint64_t size,
                std::string& why) {
    errno = 0;
    if (CopyTiffImage(source, image, destination) != 0) return PageCopied::Whole;
    return Blame(TiffError(), errno, size + SizeOf(source), why);
}

// Puts the page, without `lostTags`, into a file of its own.
PageCopied CopyToScratch(const Page& page, PassingFile& scratch, std::string& why) {
    if (!CreateScratchFile(scratch, why)) return PageCopied::NotWritten;
    {
        const OwnedTiff whole(OpenTiffFile(scratch.temporary.c_str(), T_CREAT));
        const auto copied = Copy(page.document->File(), page.image, whole.Get(), 0, why);
        if (copied != PageCopied::Whole) return copied;
    }
    for (const uint32_t tag : page.lostTags) {
        const int32_t code = ChangeTag(scratch, {0, tag, {}});
        if (code != TIFF_SUCCESS) return Blame(code, errno, 0, why);
    }
    return PageCopied::Whole;
}

PageCopied CopyByDetour(const Page& page, const TiffOutput& destination, uint64_t size,
                        std::string& why) {
    PassingFile scratch;
    const auto copied = CopyToScratch(page, scratch, why);
    if (copied == PageCopied::NotWritten) why = "on its way through a temporary file: " + why;
    if (copied != PageCopied::Whole) return copied;
    const OwnedTiff stripped(OpenTiffFile(scratch.temporary.c_str(), T_READ));
    return Copy(stripped.Get(), 0, destination.File(), size, why);
}

}  // namespace

bool ExaminePage(Page& page, uint16_t order, std::string& why) {
    const TiffFileHandle file = page.document->File();
    const LoadedImage loaded(file, page.image);
    if (!loaded) return FailWith(why);
    page.lostTags = TagsLeftDangling(file, page.image);
    why = CarryObstacle(*page.document, page.image, order);
    // The detour's file is little-endian.
    if (why.empty() && !page.lostTags.empty()) {
        why = CarryObstacle(*page.document, page.image, TIFF_LITTLE_ENDIAN);
    }
    return why.empty();
}

PageCopied CopyPage(const Page& page, const TiffOutput& destination, std::string& why) {
    const uint64_t size = SizeOf(destination.passing.descriptor.Get());
    if (!page.lostTags.empty()) return CopyByDetour(page, destination, size, why);
    return Copy(page.document->File(), page.image, destination.File(), size, why);
}

}  // namespace vellim::tool
