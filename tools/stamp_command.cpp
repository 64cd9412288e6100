// `vellim stamp`: text laid over pages of a TIFF file. Stamped pages come into being in files of
// their own; those and all other pages are then copied into the new file as they are stored.
#include <algorithm>
#include <vector>

#include "commands.h"
#include "losses.h"
#include "messages.h"
#include "output_formats.h"
#include "page_copy.h"
#include "page_list.h"
#include "page_source.h"
#include "stamp_page.h"
#include "stamp_text.h"
#include "tiff_output.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

Outcome Fail(const std::string& name, const std::string& why) {
    Say(name == "-" ? "standard output" : name, kWholeFile, why);
    return Outcome::Failed;
}

Outcome Misused(const std::string& text) {
    Say("", kWholeFile, text);
    return Outcome::Usage;
}

std::string Count(size_t pages) {
    return std::to_string(pages) + (pages == 1 ? " page" : " pages");
}

// The source, a TIFF file whose pages can be copied. Nothing, with the reason in `why`.
std::optional<PageSource> OpenSource(const std::string& path, std::string& why) {
    auto source = OpenPageSource(path, {}, why);
    if (!source) return source;
    if (!source->tiff) {
        why = "it is no TIFF file; vellim convert makes one of it";
    } else if (source->tiff->block) {
        why = "its pages can't be copied without /proc";
    } else if (source->pageCount == 0) {
        why = NoImagesInWords(*source);
    } else {
        return source;
    }
    return {};
}

// All pages of the source. Empty, with the reason told, if something would be lost that may not be.
std::vector<Page> ExamineAll(const PageSource& source, bool acceptLoss) {
    std::vector<Page> pages;
    const Document& document = *source.tiff;
    std::string why = ImagesOutOfReach(document);
    bool loses = !why.empty();
    if (loses) Say(source.name, kWholeFile, why);
    for (uint32_t i = 0; i < source.pageCount; ++i) {
        Page page{&document, static_cast<int32_t>(i), i + 1, {}};
        if (!ExaminePage(page, ByteOrderOf(document.File()), why)) {
            Say(source.name, page.image, why);
            return {};
        }
        const LoadedImage loaded(document.File(), page.image);
        for (const uint32_t tag : page.lostTags) {
            Say(source.name, page.image,
                acceptLoss ? LeftOutInWords(document.File(), page.image, tag)
                           : DanglingInWords(document.File(), page.image, tag));
        }
        loses = loses || !page.lostTags.empty();
        pages.push_back(std::move(page));
    }
    if (!loses || acceptLoss) return pages;
    Say("", kWholeFile, "nothing was written; --accept-loss goes on without what would be lost");
    return {};
}

struct StampJob {
    const StampOptions& options;
    const PageSource& source;
    StampText text;
    std::vector<uint32_t> stamped;  // pages counted from 1, ascending
    TiffOutput& output;
};

// Adds the page, stamped where it is to be. Failures are told.
Outcome AddPage(const StampJob& job, const Page& page) {
    std::string why;
    const bool stamps = std::binary_search(job.stamped.begin(), job.stamped.end(), page.number);
    Page copied = page;
    Outcome outcome = Outcome::Well;
    StampedPage stamped;
    std::optional<Document> document;
    if (stamps) {
        stamped = StampPage(job.source, page.number - 1, job.text, job.options.x, job.options.y,
                            job.options.acceptLoss);
        if (!stamped.file) return Outcome::Failed;
        outcome = stamped.outcome;
        document = OpenDocument(stamped.file->passing.temporary, why);
        if (!document) return Fail(job.options.output, why);
        copied = {&*document, 0, page.number, {}};
    }
    if (CopyPage(copied, job.output, why) == PageCopied::Whole) return outcome;
    Say(job.source.name, page.image, "it couldn't be copied: " + why);
    return Outcome::Failed;
}

Outcome WriteAll(const StampJob& job, const std::vector<Page>& pages) {
    Progress progress(job.options.output, kWholeFile, static_cast<uint32_t>(pages.size()));
    Outcome outcome = Outcome::Well;
    for (const Page& page : pages) {
        outcome = Worse(outcome, AddPage(job, page));
        if (outcome == Outcome::Failed) return outcome;
        progress.Step(page.number);
    }
    std::string why;
    if (!CommitTiffOutput(job.output, why)) return Fail(job.options.output, why);
    if (!job.output.copied) {
        Say(job.options.output, kWholeFile,
            Count(pages.size()) + ", " + std::to_string(job.stamped.size()) + " stamped");
    }
    return outcome;
}

// What is wrong with the options; empty if nothing is.
std::string Check(const StampOptions& options) {
    const OutputFormat* format = FormatOfPath(options.output);
    if (format != nullptr && !IsTiff(*format)) {
        return "stamp writes TIFF files alone, which don't end in ." + std::string(format->name) +
               "; vellim convert makes others of them";
    }
    if (!options.pages.empty() && !ParsePageList(options.pages)) {
        return "--page takes a list such as 1-3,7 or 5-";
    }
    return {};
}

}  // namespace

Outcome RunStamp(const StampOptions& options) {
    std::string why = Check(options);
    if (!why.empty()) return Misused(why);
    size_t lost = 0;
    const StampText text{ReadStampText(options.text, lost), options.font, options.pointSize};
    if (lost > 0) {
        Say("", kWholeFile,
            std::to_string(lost) + (lost == 1 ? " character" : " characters") +
                " of the text became \"?\"");
    }
    const auto source = OpenSource(options.input, why);
    if (!source) return Fail(options.input, why);
    uint32_t missing = 0;
    auto stamped = PagesOf(*ParsePageList(options.pages.empty() ? "1-" : options.pages),
                           source->pageCount, missing);
    if (missing != 0) {
        return Fail(options.input, "there is no page " + std::to_string(missing) +
                                       ": the last one is page " +
                                       std::to_string(source->pageCount));
    }
    const auto output = CreateTiffOutput(options.output, ByteOrderOf(source->tiff->File()),
                                         options.force ? Overwrite::Allow : Overwrite::Refuse, why);
    if (!output) return Fail(options.output, why);
    const auto pages = ExamineAll(*source, options.acceptLoss);
    if (pages.empty()) return Outcome::Failed;
    const Outcome outcome = WriteAll({options, *source, text, std::move(stamped), *output}, pages);
    const bool outOfReach = !ImagesOutOfReach(*source->tiff).empty();
    return outOfReach ? Worse(outcome, Outcome::Damaged) : outcome;
}

}  // namespace vellim::tool
