#include "note_copy.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <vector>

#include "losses.h"
#include "messages.h"
#include "note_page.h"
#include "page_copy.h"
#include "tag_names.h"
#include "tiff_output.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

struct Job {
    const PageSource& source;
    const NoteChange& change;
    const NoteTarget& target;
    std::vector<Page> pages;
    std::string outOfReach;
    BurnedPage burned;
};

bool Fail(const std::string& name, int32_t image, const std::string& why) {
    Say(name == "-" ? "standard output" : name, image, why);
    return false;
}

bool IsBurned(const Job& job, const Page& page) {
    return job.change.burned && page.image == job.change.image;
}

// A tag of an edit is stored by the library, which makes the file little-endian.
uint16_t OrderOf(const Job& job) {
    return job.change.edit ? uint16_t{TIFF_LITTLE_ENDIAN} : ByteOrderOf(job.source.tiff->File());
}

// Finds what each page would lose. False, and told, if one can't be carried over at all.
bool GatherPages(Job& job) {
    const Document& document = *job.source.tiff;
    for (int32_t image = 0; image < document.imageCount; ++image) {
        Page page{&document, image, static_cast<uint32_t>(image) + 1, {}};
        std::string why;
        if (!ExaminePage(page, OrderOf(job), why)) return Fail(document.name, image, why);
        if (IsBurned(job, page)) {
            const LoadedImage loaded(document.File(), image);
            page.lostTags = TagsLostByBurning(document.File(), image);
        }
        job.pages.push_back(std::move(page));
    }
    job.outOfReach = ImagesOutOfReach(document);
    return true;
}

// What becomes of a tag, or became of it.
std::string LostInWords(TiffFileHandle file, int32_t image, uint32_t tag, bool done) {
    const auto dangling = TagsLeftDangling(file, image);
    if (std::find(dangling.begin(), dangling.end(), tag) != dangling.end()) {
        return done ? LeftOutInWords(file, image, tag) : DanglingInWords(file, image, tag);
    }
    return TagInWords(tag) +
           (done ? " was left out" : " would be lost, since the page is coded anew");
}

void TellLost(const Job& job, bool done) {
    const Document& document = *job.source.tiff;
    for (const Page& page : job.pages) {
        if (page.lostTags.empty()) continue;
        const LoadedImage loaded(document.File(), page.image);
        for (const uint32_t tag : page.lostTags)
            Say(document.name, page.image, LostInWords(document.File(), page.image, tag, done));
    }
    if (!job.outOfReach.empty()) Say(document.name, kWholeFile, job.outOfReach);
}

// False, and told, if something would be lost and that wasn't agreed to.
bool MayLose(const Job& job) {
    const bool loses = !job.outOfReach.empty() ||
                       std::any_of(job.pages.begin(), job.pages.end(),
                                   [](const Page& page) { return !page.lostTags.empty(); });
    if (!loses || job.target.acceptLoss) return true;
    TellLost(job, false);
    return Fail("", kWholeFile,
                "nothing was written; --accept-loss goes on without what would be lost");
}

bool Burn(Job& job, TiffOutput& output) {
    const NoteChange& change = job.change;
    std::string why;
    if (AddBurnedPage(job.source, change.image, *change.burned, job.target.acceptLoss, output,
                      job.burned, why)) {
        return true;
    }
    return Fail(job.source.name, change.image, "its note can't be burned in: " + why);
}

bool CopyPages(Job& job, TiffOutput& output) {
    Progress progress(output.target, kWholeFile, static_cast<uint32_t>(job.pages.size()));
    uint32_t done = 0;
    for (const Page& page : job.pages) {
        if (IsBurned(job, page)) {
            if (!Burn(job, output)) return false;
            continue;
        }
        std::string why;
        const PageCopied copied = CopyPage(page, output, why);
        if (copied == PageCopied::NotRead) {
            return Fail(job.source.name, page.image, "it couldn't be copied: " + why);
        }
        if (copied == PageCopied::NotWritten) return Fail(output.target, kWholeFile, why);
        progress.Step(++done);
    }
    return true;
}

bool EditCopy(const Job& job, TiffOutput& output) {
    if (!job.change.edit) return true;
    output.tiff.Reset();
    const int32_t code = ChangeTag(output.passing, *job.change.edit);
    if (code == TIFF_SUCCESS) return true;
    const std::string writing = FailureInWriting(code, errno, 0);
    return Fail(output.target, kWholeFile, writing.empty() ? FailureInWords(code) : writing);
}

bool Commit(const Job& job, TiffOutput& output) {
    std::string why;
    output.tiff.Reset();
    const NoteTarget& target = job.target;
    const bool committed = target.claim != nullptr
                               ? CommitEdit(target.path, *target.claim, output.passing, why)
                               : CommitTiffOutput(output, why);
    return committed || Fail(target.path, kWholeFile, "it can't be written: " + why);
}

}  // namespace

Outcome WriteChanged(const PageSource& source, const NoteChange& change, const NoteTarget& target) {
    Job job{source, change, target, {}, {}, {}};
    std::string why;
    if (!MayWrite(target.path, target.mode, why)) {
        Fail(target.path, kWholeFile, why);
        return Outcome::Failed;
    }
    if (!GatherPages(job) || !MayLose(job)) return Outcome::Failed;
    const auto output = CreateTiffOutput(target.path, OrderOf(job), target.mode, why);
    if (!output) {
        Fail(target.path, kWholeFile, why);
        return Outcome::Failed;
    }
    if (!CopyPages(job, *output) || !EditCopy(job, *output) || !Commit(job, *output)) {
        return Outcome::Failed;
    }
    TellLost(job, true);
    const bool damaged = job.burned.came < job.burned.due;
    if (damaged) {
        Say(source.name, change.image,
            job.burned.reason + " (" + LinesOf(job.burned.came, job.burned.due) + " came)");
    }
    Say(source.name, change.image, change.words);
    return damaged || !job.outOfReach.empty() ? Outcome::Damaged : Outcome::Well;
}

}  // namespace vellim::tool
