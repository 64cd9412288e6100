// The library writes the file anew, all images of it, and puts the new one in the old one's place.
// So what one edit could lose is to be looked for in every image.
#include "tag_edit.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "losses.h"
#include "messages.h"
#include "tag_names.h"
#include "vellim/edit.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

// Losses told one by one before the rest is counted.
constexpr size_t kToldLosses = 8;

struct LostTag {
    int32_t image = 0;
    uint32_t tag = 0;
    std::string words;
};

struct FileLosses {
    std::vector<LostTag> tags;
    std::string images;  // out of reach; empty: none
};

Outcome Refused(const Document& document, int32_t image, const std::string& why) {
    Say(document.name, image, why);
    Say(document.name, kWholeFile, "nothing was changed");
    return Outcome::Failed;
}

// Why no edit can change what `document` names; empty if one can.
std::string WhyNotEditable(const Document& document) {
    struct stat status = {};
    if (document.name == "-" || stat(document.name.c_str(), &status) != 0 ||
        !S_ISREG(status.st_mode)) {
        return "only a file can be edited";
    }
    // Whoever may write in its folder could replace it all the same, but didn't mean to.
    return access(document.name.c_str(), W_OK) == 0 ? std::string() : std::strerror(errno);
}

// A path that the library takes for the file.
std::string PathForLibrary(const Document& document) {
    TiffFileInfo info = {};
    GetTiffFileInfo(document.File(), &info);
    return info.PathName;
}

// Gathers what a rewriting would lose, but for what `edit` itself takes away. False, and told, if
// an image can't be carried over at all.
bool FindLosses(const Document& document, const TagEdit& edit, FileLosses& losses) {
    for (int32_t image = 0; image < document.imageCount; ++image) {
        const LoadedImage loaded(document.File(), image);
        const std::string obstacle = loaded
                                         ? CarryObstacle(document, image, TIFF_LITTLE_ENDIAN)
                                         : "its tags can't be read: " + FailureInWords(TiffError());
        if (!obstacle.empty()) {
            Refused(document, image, obstacle);
            return false;
        }
        for (const uint32_t tag : TagsLeftDangling(document.File(), image)) {
            if (image == edit.image && tag == edit.tag) continue;
            losses.tags.push_back({image, tag, DanglingInWords(document.File(), image, tag)});
        }
    }
    losses.images = ImagesOutOfReach(document);
    return true;
}

void TellLosses(const Document& document, const FileLosses& losses) {
    const size_t told = std::min(losses.tags.size(), kToldLosses);
    for (size_t i = 0; i < told; ++i)
        Say(document.name, losses.tags[i].image, losses.tags[i].words);
    if (told < losses.tags.size()) {
        Say(document.name, kWholeFile,
            "and " + std::to_string(losses.tags.size() - told) + " more of that kind");
    }
    if (!losses.images.empty()) Say(document.name, kWholeFile, losses.images);
}

bool Failed(const Document& document, int32_t image) {
    Say(document.name, image, "it wasn't changed: " + FailureInWords(TiffError()));
    return false;
}

bool Delete(const Document& document, const std::string& path, int32_t image, uint32_t tag) {
    return DeleteTiffTagOfImage(path.c_str(), image, tag) != 0 || Failed(document, image);
}

bool Apply(const Document& document, const std::string& path, const TagEdit& edit) {
    if (!edit.value) return Delete(document, path, edit.image, edit.tag);
    const TagValue& value = *edit.value;
    return AddTiffTagToImage(path.c_str(), edit.image, edit.tag, value.type, value.bytes.data(),
                             value.count) != 0 ||
           Failed(document, edit.image);
}

}  // namespace

Outcome EditTag(const Document& document, const TagEdit& edit, bool acceptLoss) {
    const std::string obstacle = WhyNotEditable(document);
    if (!obstacle.empty()) return Refused(document, kWholeFile, obstacle);
    FileLosses losses;
    if (!FindLosses(document, edit, losses)) return Outcome::Failed;
    const bool loses = !losses.tags.empty() || !losses.images.empty();
    TellLosses(document, losses);
    if (loses && !acceptLoss) {
        return Refused(document, kWholeFile, "with --accept-loss it is changed all the same");
    }
    const bool wasBigEndian = ByteOrderOf(document.File()) == TIFF_BIG_ENDIAN;
    const std::string path = PathForLibrary(document);
    for (const LostTag& lost : losses.tags) {
        if (!Delete(document, path, lost.image, lost.tag)) return Outcome::Failed;
        Say(document.name, lost.image, TagInWords(lost.tag) + " deleted");
    }
    if (!Apply(document, path, edit)) return Outcome::Failed;
    Say(document.name, edit.image,
        TagInWords(edit.tag) + (edit.value ? " set" : " deleted") +
            (wasBigEndian ? "; the file's byte order is II now, it was MM" : ""));
    return losses.images.empty() ? Outcome::Well : Outcome::Damaged;
}

}  // namespace vellim::tool
