// `vellim pages`: images taken out of files, put together, reordered and split, with their data as
// it is stored.
#include <algorithm>
#include <deque>
#include <filesystem>
#include <set>

#include "commands.h"
#include "document.h"
#include "losses.h"
#include "messages.h"
#include "output_formats.h"
#include "page_copy.h"
#include "page_list.h"
#include "page_source.h"
#include "page_transfer.h"
#include "split_names.h"
#include "tiff_output.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

// A file each: more are hardly meant, and would fill a folder.
constexpr size_t kMostFiles = 100000;
// Beside the inputs, which stay open: the outputs, the library's streams, the standard streams.
constexpr size_t kSpareFiles = 32;

using Ranges = std::vector<PageRange>;

struct Job {
    std::vector<Ranges> lists;       // one for all inputs, or one for each
    std::deque<Document> documents;  // which stay in place
    std::deque<TransferredPages> transferred;
    std::vector<Page> pages;
    Outcome outcome = Outcome::Well;  // of what was transferred
    bool outOfReach = false;          // images that were asked for can't be reached
};

Outcome Misused(const std::string& text) {
    Say("", kWholeFile, text);
    return Outcome::Usage;
}

std::string InWords(size_t pages) {
    return std::to_string(pages) + (pages == 1 ? " page" : " pages");
}

// Whether `ranges` ask for all that there is from some page on.
bool IsOpenEnded(const Ranges& ranges) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [](const PageRange& range) { return range.last == UINT32_MAX; });
}

// The pages that `ranges` name in a file of `count` pages, counted from 1. None, and told, if there
// is no such page, or if they would make the job larger than `most`.
std::vector<uint32_t> ChoosePages(const std::string& name, uint32_t count, const Ranges& ranges,
                                  size_t most, const Job& job) {
    uint32_t missing = 0;
    auto pages = PagesAsWritten(ranges, count, most, missing);
    if (count == 0 || missing != 0) {
        Say(name, kWholeFile,
            count == 0 ? "there are no images in it"
                       : "there is no page " + std::to_string(missing) + ": the last one is page " +
                             std::to_string(count));
        return {};
    }
    if (job.pages.size() + pages.size() <= most) return pages;
    Say("", kWholeFile,
        "these are more than " + InWords(most) +
            (most == TIFF_MAX_IMAGES ? ", and a file holds no more" : ""));
    return {};
}

void TellOutOfReach(const std::string& name, const std::string& outOfReach, Job& job) {
    if (outOfReach.empty()) return;
    Say(name, kWholeFile, outOfReach);
    job.outOfReach = true;
}

// Adds pages of a TIFF file, whose data is copied as it is stored. False, and told, if they can't
// be had.
bool AddImages(Document document, const Ranges& ranges, uint32_t firstNumber, size_t most,
               Job& job) {
    const auto count = static_cast<uint32_t>(document.imageCount);
    const auto pages = ChoosePages(document.name, count, ranges, most, job);
    if (pages.empty()) return false;
    const Document& kept = job.documents.emplace_back(std::move(document));
    for (const uint32_t page : pages)
        job.pages.push_back({&kept, static_cast<int32_t>(page) - 1, firstNumber + page - 1, {}});
    if (IsOpenEnded(ranges)) TellOutOfReach(kept.name, ImagesOutOfReach(kept), job);
    return true;
}

// Adds pages of a file of another kind, which are coded anew. False, and told, if they can't be
// had.
bool AddTransferred(const PageSource& source, const Ranges& ranges, uint32_t firstNumber,
                    size_t most, Job& job) {
    const auto pages = ChoosePages(source.name, source.pageCount, ranges,
                                   std::min(most, size_t{TIFF_MAX_IMAGES}), job);
    if (pages.empty()) return false;
    auto transferred = TransferPages(source, pages);
    if (!transferred) return false;
    job.outcome = Worse(job.outcome, transferred->outcome);
    if (!source.beside.kinds.empty()) {
        Say(source.name, kWholeFile, BesideInWords(source) + "; that isn't copied");
    }
    if (IsOpenEnded(ranges)) TellOutOfReach(source.name, OutOfReach(source), job);
    const Document& kept = job.transferred.emplace_back(std::move(*transferred)).document;
    for (size_t i = 0; i < pages.size(); ++i)
        job.pages.push_back({&kept, static_cast<int32_t>(i), firstNumber + pages[i] - 1, {}});
    return true;
}

// The library copies from files alone, by their names where they have any.
std::optional<Document> OpenForCopy(PageSource source, std::string& why) {
    auto document = IsPlace(source.name) ? std::move(source.tiff) : OpenDocument(source.name, why);
    if (!document || !document->block) return document;
    why = "its pages can't be copied without /proc";
    return {};
}

uint32_t Fail(const std::string& path, const std::string& why) {
    Say(path, kWholeFile, why);
    return 0;
}

// Adds the pages that `ranges` name of a file, and gives the number that it has: 0 if that failed,
// which is told.
uint32_t AddPages(const std::string& path, const SourceHints& hints, const Ranges& ranges,
                  uint32_t firstNumber, size_t most, Job& job) {
    std::string why;
    auto source = OpenPageSource(path, hints, why);
    if (!source) return Fail(path, why);
    const uint32_t count = source->pageCount;
    if (source->tiff) {
        auto document = OpenForCopy(std::move(*source), why);
        if (!document) return Fail(path, why);
        return AddImages(std::move(*document), ranges, firstNumber, most, job) ? count : 0;
    }
    if (count == 0) return Fail(path, NoImagesInWords(*source));
    if (source->IsDocument()) {
        return AddTransferred(*source, ranges, firstNumber, most, job) ? count : 0;
    }
    return Fail(path, "it is a " + std::string(source->Kind()) +
                          " file; vellim convert makes a TIFF file of it");
}

// Opens the inputs and gathers their pages. False, and told, if something is missing.
bool GatherPages(const PagesOptions& options, size_t most, Job& job) {
    SetHandleCount(static_cast<int32_t>(options.inputs.size() + kSpareFiles));
    uint32_t number = 1;
    for (size_t i = 0; i < options.inputs.size(); ++i) {
        const Ranges& ranges = job.lists[job.lists.size() == 1 ? 0 : i];
        const uint32_t count =
            AddPages(options.inputs[i], options.hints, ranges, number, most, job);
        if (count == 0) return false;
        number += count;
    }
    return true;
}

// Looks at all pages before any is copied. False, and told, if one can't be, or would lose
// something and that wasn't agreed to. `order` is that of the new file, 0: each page's own.
bool ExaminePages(Job& job, uint16_t order, bool acceptLoss) {
    bool loses = job.outOfReach;
    for (Page& page : job.pages) {
        const TiffFileHandle file = page.document->File();
        std::string why;
        if (!ExaminePage(page, order != 0 ? order : ByteOrderOf(file), why)) {
            Say(page.document->name, page.image, why);
            return false;
        }
        const LoadedImage loaded(file, page.image);
        for (const uint32_t tag : page.lostTags) {
            if (acceptLoss) continue;  // that it was lost is told when it is
            Say(page.document->name, page.image, DanglingInWords(file, page.image, tag));
        }
        loses = loses || !page.lostTags.empty();
    }
    if (!loses || acceptLoss) return true;
    Say("", kWholeFile, "nothing was written; --accept-loss goes on without what would be lost");
    return false;
}

std::string NameOf(const TiffOutput& output) {
    return output.target == "-" ? "standard output" : output.target;
}

void TellLeftOut(const std::vector<Page>& pages) {
    for (const Page& page : pages) {
        if (page.lostTags.empty()) continue;
        const TiffFileHandle file = page.document->File();
        const LoadedImage loaded(file, page.image);
        for (const uint32_t tag : page.lostTags)
            Say(page.document->name, page.image, LeftOutInWords(file, page.image, tag));
    }
}

bool CopyPages(const std::vector<Page>& pages, TiffOutput& output) {
    Progress progress(output.target, kWholeFile, static_cast<uint32_t>(pages.size()));
    uint32_t done = 0;
    for (const Page& page : pages) {
        std::string why;
        const PageCopied copied = CopyPage(page, output, why);
        if (copied == PageCopied::NotRead) {
            Say(page.document->name, page.image, "it couldn't be copied: " + why);
        } else if (copied == PageCopied::NotWritten) {
            Say(NameOf(output), kWholeFile, why);
        }
        if (copied != PageCopied::Whole) return false;
        progress.Step(++done);
    }
    return true;
}

bool Commit(const std::vector<Page>& pages, TiffOutput& output, const std::string& what) {
    std::string why;
    const bool committed = CommitTiffOutput(output, why);
    if (committed) TellLeftOut(pages);
    Say(NameOf(output), kWholeFile, committed ? what : "it can't be written: " + why);
    return committed;
}

// All pages into one file.
Outcome WriteOne(const PagesOptions& options, Job& job) {
    const Overwrite mode = options.append  ? Overwrite::Append
                           : options.force ? Overwrite::Allow
                                           : Overwrite::Refuse;
    const uint16_t order =
        options.append ? uint16_t{0} : ByteOrderOf(job.pages.front().document->File());
    std::string why;
    const auto output = CreateTiffOutput(options.output, order, mode, why);
    if (!output) {
        Say(options.output, kWholeFile, why);
        return Outcome::Failed;
    }
    const auto before = static_cast<size_t>(output->imageCount);
    const size_t after = before + job.pages.size();
    if (after > TIFF_MAX_IMAGES) {
        Say(options.output, kWholeFile,
            "there are " + InWords(before) + " in it, and a file holds no more than " +
                std::to_string(TIFF_MAX_IMAGES));
        return Outcome::Failed;
    }
    const bool good =
        ExaminePages(job, output->byteOrder, options.acceptLoss) && CopyPages(job.pages, *output) &&
        Commit(job.pages, *output,
               before == 0 ? InWords(after)
                           : InWords(job.pages.size()) + " added, " + InWords(after) + " in all");
    return good ? Outcome::Well : Outcome::Failed;
}

// A file that later pages are still to be read from can't be replaced before.
bool IsInput(const Job& job, const std::string& name) {
    return std::any_of(job.pages.begin(), job.pages.end(), [&](const Page& page) {
        std::error_code error;
        return std::filesystem::equivalent(page.document->name, name, error);
    });
}

// The names that the pages get; none, and told, if they clash with one another or with files.
std::vector<std::string> ChooseNames(const Job& job, const NamePattern& pattern, Overwrite mode) {
    std::vector<std::string> names;
    std::set<std::string> taken;
    for (const Page& page : job.pages) {
        std::string name = NumberedName(pattern, page.number);
        std::string why;
        if (!taken.insert(name).second) {
            why = "the same page is asked for twice, and would be written there twice";
        } else if (std::filesystem::exists(name) && IsInput(job, name)) {
            why = "pages are read from it, so that it can't be replaced";
        }
        if (!why.empty() || !MayWrite(name, mode, why)) {
            Say(name, kWholeFile, why);
            return {};
        }
        names.push_back(std::move(name));
    }
    return names;
}

// Each page into a file of its own.
Outcome WriteEach(const PagesOptions& options, const NamePattern& pattern, Job& job) {
    const Overwrite mode = options.force ? Overwrite::Allow : Overwrite::Refuse;
    const auto names = ChooseNames(job, pattern, mode);
    if (names.empty() || !ExaminePages(job, 0, options.acceptLoss)) return Outcome::Failed;
    for (size_t i = 0; i < names.size(); ++i) {
        const Page& page = job.pages[i];
        std::string why;
        const auto output =
            CreateTiffOutput(names[i], ByteOrderOf(page.document->File()), mode, why);
        if (!output) {
            Say(names[i], kWholeFile, why);
            return Outcome::Failed;
        }
        const bool good = CopyPages({page}, *output) && Commit({page}, *output, InWords(1));
        if (!good) return Outcome::Failed;
    }
    return Outcome::Well;
}

// What is wrong with the options; empty if nothing is. Reads the lists into `job`.
std::string ReadOptions(const PagesOptions& options, Job& job) {
    if (options.output.empty() == options.split.empty()) {
        return "pages go to one file with --output or to a file each with --split";
    }
    const OutputFormat* format =
        FormatOfPath(options.split.empty() ? options.output : options.split);
    if (format != nullptr && !IsTiff(*format)) {
        return "pages writes TIFF files alone, which don't end in ." + std::string(format->name) +
               "; vellim convert writes others";
    }
    if (options.append && !options.split.empty()) return "--append goes with --output alone";
    if (options.append && options.force) {
        return "--append keeps what is there and --force replaces it; choose one";
    }
    if (options.pages.size() > 1 && options.pages.size() != options.inputs.size()) {
        return "--pages is given once for all inputs or once for each";
    }
    for (const std::string& text : options.pages) {
        auto ranges = ParsePageList(text, Direction::Both);
        if (!ranges) return "--pages takes a list such as 3,1-2,9-7 or 5-";
        job.lists.push_back(std::move(*ranges));
    }
    if (job.lists.empty()) job.lists.push_back({PageRange{}});
    return {};
}

}  // namespace

Outcome RunPages(const PagesOptions& options) {
    Job job;
    const std::string wrong = ReadOptions(options, job);
    if (!wrong.empty()) return Misused(wrong);
    const auto pattern = ParseNamePattern(options.split);
    const bool split = !options.split.empty();
    if (split && !pattern) {
        return Misused("--split takes a name with one %d or %03d in it, for the page's number");
    }
    if (!GatherPages(options, split ? kMostFiles : size_t{TIFF_MAX_IMAGES}, job)) {
        return Outcome::Failed;
    }
    const Outcome outcome = split ? WriteEach(options, *pattern, job) : WriteOne(options, job);
    return Worse(job.outcome, job.outOfReach ? Worse(outcome, Outcome::Damaged) : outcome);
}

}  // namespace vellim::tool
