// The library writes a file anew, all images of it, for every tag that changes. So what one edit
// could lose is to be looked for in every image, and where many tags have to go, the time grows
// with their number times the file.
#include "tag_edit.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "losses.h"
#include "messages.h"
#include "tag_names.h"
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

void TellDeleted(const Document& document, const FileLosses& losses) {
    const size_t told = std::min(losses.tags.size(), kToldLosses);
    for (size_t i = 0; i < told; ++i)
        Say(document.name, losses.tags[i].image, TagInWords(losses.tags[i].tag) + " deleted");
    if (told < losses.tags.size()) {
        Say(document.name, kWholeFile,
            std::to_string(losses.tags.size() - told) + " more of that kind deleted");
    }
}

// Why changing the copy failed; `error` is what the system said.
std::string FailureOfChange(const EditClaim& claim, const TagEdit& edit, int32_t code, int error) {
    const uint64_t added = edit.value ? edit.value->bytes.size() : 0;
    const auto size = static_cast<uint64_t>(claim.status.st_size);
    const std::string writing = FailureInWriting(code, error, size + added);
    return writing.empty() ? FailureInWords(code) : writing;
}

// Makes all changes in a copy and puts it in the file's place. False, and told, if one fails.
bool Rewrite(const Document& document, const EditClaim& claim, const FileLosses& losses,
             const TagEdit& edit) {
    std::vector<TagEdit> edits;
    for (const LostTag& lost : losses.tags)
        edits.push_back({lost.image, lost.tag, {}});
    edits.push_back(edit);

    PassingFile copy;
    std::string why;
    if (!CopyForEdit(document.name, claim, copy, why)) {
        Refused(document, kWholeFile, "it can't be written: " + why);
        return false;
    }
    Progress progress(document.name, kWholeFile, static_cast<uint32_t>(edits.size()));
    uint32_t done = 0;
    for (const TagEdit& change : edits) {
        const int32_t code = ChangeTag(copy, change);
        if (code != TIFF_SUCCESS) {
            Refused(document, change.image, FailureOfChange(claim, change, code, errno));
            return false;
        }
        progress.Step(++done);
    }
    if (CommitEdit(document.name, claim, copy, why)) return true;
    Refused(document, kWholeFile, "it can't be written: " + why);
    return false;
}

}  // namespace

Outcome EditTag(const Document& document, const EditClaim& claim, const TagEdit& edit,
                bool acceptLoss) {
    const std::string obstacle = WhyNotEditable(document);
    if (!obstacle.empty()) return Refused(document, kWholeFile, obstacle);
    FileLosses losses;
    if (!FindLosses(document, edit, losses)) return Outcome::Failed;
    const bool loses = !losses.tags.empty() || !losses.images.empty();
    if (loses && !acceptLoss) {
        TellLosses(document, losses);
        return Refused(document, kWholeFile, "with --accept-loss it is changed all the same");
    }
    const bool wasBigEndian = ByteOrderOf(document.File()) == TIFF_BIG_ENDIAN;
    if (!Rewrite(document, claim, losses, edit)) return Outcome::Failed;
    TellDeleted(document, losses);
    if (!losses.images.empty()) Say(document.name, kWholeFile, losses.images);
    Say(document.name, edit.image,
        TagInWords(edit.tag) + (edit.value ? " set" : " deleted") +
            (wasBigEndian ? "; the file's byte order is II now, it was MM" : ""));
    return losses.images.empty() ? Outcome::Well : Outcome::Damaged;
}

}  // namespace vellim::tool
