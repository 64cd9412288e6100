// The library copies an image with all its tags. Where some have to go, the page takes a detour
// through a file of its own, in which they are deleted: a deletion writes a whole file anew, and
// the destination may be large.
#include "page_copy.h"

#include <filesystem>

#include "losses.h"
#include "messages.h"
#include "passing_file.h"
#include "vellim/edit.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

bool FailWith(std::string& why) {
    why = FailureInWords(TiffError());
    return false;
}

bool CopyToScratch(const Page& page, const std::string& path) {
    const OwnedTiff scratch(OpenTiffFile(path.c_str(), T_CREAT));
    return scratch && CopyTiffImage(page.document->File(), page.image, scratch.Get()) != 0;
}

bool CopyByDetour(const Page& page, TiffFileHandle destination, std::string& why) {
    PassingFile scratch;
    if (!CreateScratchFile(scratch, why)) return false;
    const std::string& path = scratch.temporary;
    if (!CopyToScratch(page, path)) return FailWith(why);
    for (const uint32_t tag : page.lostTags) {
        if (DeleteTiffTagOfImage(path.c_str(), 0, tag) != 0) continue;
        FailWith(why);
        std::error_code error;  // the unfinished file, as the library names it, if there is one
        std::filesystem::remove(std::filesystem::path(path).replace_extension("~~~"), error);
        return false;
    }
    const OwnedTiff stripped(OpenTiffFile(path.c_str(), T_READ));
    if (!stripped || CopyTiffImage(stripped.Get(), 0, destination) == 0) return FailWith(why);
    return true;
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

bool CopyPage(const Page& page, TiffFileHandle destination, std::string& why) {
    if (!page.lostTags.empty()) return CopyByDetour(page, destination, why);
    if (CopyTiffImage(page.document->File(), page.image, destination) == 0) return FailWith(why);
    return true;
}

}  // namespace vellim::tool
