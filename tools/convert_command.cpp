// `vellim convert`: which pages go to which files, in which format.
#include <sys/stat.h>

#include <algorithm>
#include <cctype>

#include "commands.h"
#include "convert_page.h"
#include "losses.h"
#include "messages.h"
#include "output_choice.h"
#include "page_list.h"
#include "vellim/encode.h"

namespace vellim::tool {
namespace {

Outcome Misused(const std::string& text) {
    Say("", kWholeFile, text);
    return Outcome::Usage;
}

Outcome Fail(const std::string& name, const std::string& why) {
    Say(name, kWholeFile, why);
    return Outcome::Failed;
}

// "scan.png" becomes "scan-07.png": as many digits as the document's last page has, so that the
// names sort, and the page's own number, so that they mean the same in every run.
std::string NumberedPath(const std::string& path, uint32_t page, uint32_t pages) {
    std::string number = std::to_string(page);
    const size_t digits = std::to_string(pages).size();
    number.insert(0, digits - std::min(digits, number.size()), '0');
    const size_t slash = path.rfind('/');
    const size_t name = slash == std::string::npos ? 0 : slash + 1;
    const size_t dot = path.rfind('.');
    const bool ending = dot != std::string::npos && dot > name;
    std::string numbered = path;
    numbered.insert(ending ? dot : path.size(), "-" + number);
    return numbered;
}

// The pages to convert, counted from 1; none, with the reason in `why`. A file of pages has them in
// the order in which they are asked for, each as often; files of a page each have the page's
// number.
std::vector<uint32_t> ChoosePages(const PageSource& source, const std::vector<PageRange>& ranges,
                                  bool asWritten, std::string& why) {
    uint32_t missing = 0;
    auto pages = asWritten ? PagesAsWritten(ranges, source.pageCount, TIFF_MAX_IMAGES, missing)
                           : PagesOf(ranges, source.pageCount, missing);
    if (source.pageCount == 0) {
        why = NoImagesInWords(source);
    } else if (missing != 0) {
        why = "there is no page " + std::to_string(missing) + ": the last one is page " +
              std::to_string(source.pageCount);
        pages.clear();
    }
    return pages;
}

// What all pages have in common.
PageRequest RequestOf(const ConvertOptions& options) {
    PageRequest request;
    request.square = options.square;
    request.dpi = options.dpi;
    if (options.dither == "threshold") request.halftone = Halftone::Threshold;
    request.overwrite = options.force ? Overwrite::Allow : Overwrite::Refuse;
    request.sparesInput = options.force && !options.acceptLoss;
    return request;
}

// Each page to a file of its own. No file is begun if one of them is in the way.
Outcome ConvertToFiles(const ConvertOptions& options, const PageSource& source,
                       const OutputFormat& format, const WriteOptions& writing,
                       const std::vector<uint32_t>& pages) {
    PageRequest request = RequestOf(options);
    request.writeOptions = writing;
    std::set<std::string> notes;
    request.notes = &notes;
    request.format = &format;
    const bool numbered = pages.size() > 1 && options.output != "-";
    const auto path = [&](uint32_t page) {
        return numbered ? NumberedPath(options.output, page, source.pageCount) : options.output;
    };
    std::string why;
    for (const uint32_t page : pages) {
        if (!MayWrite(path(page), request.overwrite, why)) return Fail(path(page), why);
    }
    Outcome outcome = Outcome::Well;
    for (const uint32_t page : pages) {
        request.page = page - 1;
        request.path = path(page);
        outcome = Worse(outcome, ConvertPage(source, request).outcome);
    }
    return outcome;
}

std::string Count(size_t pages) {
    return std::to_string(pages) + (pages == 1 ? " page" : " pages");
}

// Whether the file takes so many pages more.
bool HasRoom(const TiffOutput& output, size_t pages, std::string& why) {
    const auto there = static_cast<size_t>(output.imageCount);
    if (there + pages <= TIFF_MAX_IMAGES) return true;
    why = "a TIFF file holds " + Count(TIFF_MAX_IMAGES) + " at most, and this would be one of " +
          std::to_string(there + pages) + (pages > TIFF_MAX_IMAGES ? " or more" : "");
    return false;
}

// What was written of the pages `asked` for, as far as it is a file or some are missing.
void Tell(const TiffOutput& output, size_t pages, size_t asked) {
    if (output.copied && pages == asked) return;
    std::string text =
        pages == asked ? Count(pages) : std::to_string(pages) + " of " + Count(asked);
    if (output.imageCount > 0) {
        text +=
            " added, " + std::to_string(static_cast<size_t>(output.imageCount) + pages) + " in all";
    }
    Say(output.target == "-" ? "standard output" : output.target, kWholeFile, text);
}

// Whether all pages go in their order to a file that is theirs alone.
bool IsWholeDocument(const ConvertOptions& options, const PageSource& source,
                     const std::vector<uint32_t>& pages) {
    if (options.append || pages.size() != source.pageCount) return false;
    for (size_t i = 0; i < pages.size(); ++i) {
        if (pages[i] != i + 1) return false;
    }
    return true;
}

std::unique_ptr<TiffOutput> BeginTiffFile(const ConvertOptions& options, size_t pages,
                                          std::string& why) {
    const uint16_t byteOrder = options.byteOrder.empty()                   ? 0
                               : std::tolower(options.byteOrder[0]) == 'm' ? TIFF_BIG_ENDIAN
                                                                           : TIFF_LITTLE_ENDIAN;
    const Overwrite mode = options.append  ? Overwrite::Append
                           : options.force ? Overwrite::Allow
                                           : Overwrite::Refuse;
    auto output = CreateTiffOutput(options.output, byteOrder, mode, why);
    if (output && !HasRoom(*output, pages, why)) output.reset();
    return output;
}

// All pages to one file. A page of which nothing comes is left out; a file that can't be written,
// or a source that ends in its midst, leaves nothing. What a document can't give whole isn't
// replaced by what came of it, unless that was agreed to.
Outcome ConvertToTiff(const ConvertOptions& options, const PageSource& source,
                      const WriteOptions& writing, const std::vector<uint32_t>& pages) {
    std::string why;
    const std::string name = options.output == "-" ? "standard output" : options.output;
    const auto output = BeginTiffFile(options, pages.size(), why);
    if (!output) return Fail(name, why);
    PageRequest request = RequestOf(options);
    std::set<std::string> notes;
    request.tiff = output.get();
    request.notes = &notes;
    request.keepsPageNumbers = IsWholeDocument(options, source, pages);
    request.tiffOptions.compression = FindTiffCompression(options.compression);
    request.tiffOptions.fillOrder = writing.fillOrder;

    Outcome outcome = Outcome::Well;
    size_t written = 0;
    for (const uint32_t page : pages) {
        request.page = page - 1;
        const PageResult result = ConvertPage(source, request);
        outcome = Worse(outcome, result.outcome);
        if (result.spoilt) return outcome;
        written += result.written ? 1 : 0;
    }
    const bool loses = outcome != Outcome::Well || HoldsMore(source);
    if (loses && request.sparesInput && IsInput(source, output->passing)) {
        return Fail(name, kInputStays);
    }
    if (written == 0) return outcome;
    if (!CommitTiffOutput(*output, why)) return Fail(name, why);
    Tell(*output, written, pages.size());
    return outcome == Outcome::Well ? outcome : Outcome::Damaged;
}

}  // namespace

Outcome RunConvert(const ConvertOptions& options) {
    const OutputFormat* format = ChooseFormat(options);
    if (format == nullptr) {
        return Misused("the format can't be told from \"" +
                       Place(options.format.empty() ? options.output : options.format, kWholeFile) +
                       "\"; served are " + FormatNames());
    }
    std::string why;
    auto writing = ChooseWriting(options, *format, why);
    if (!writing) return Misused(why);
    const bool toTiff = IsTiff(*format);
    const auto ranges = ParsePageList(options.pages.empty() ? "1-" : options.pages,
                                      toTiff ? Direction::Both : Direction::Forwards);
    if (!ranges) return Misused("--pages takes a list such as 1-3,7 or 5-");
    if (options.kFactor != 0) SetKfactor(options.kFactor);

    const auto source = OpenPageSource(options.input, options.hints, why);
    if (!source) return Fail(options.input, why);
    if (!ChooseCoding(options, *format, *source, *writing, why)) return Misused(why);
    const auto pages = ChoosePages(*source, *ranges, toTiff, why);
    if (pages.empty()) return Fail(options.input, why);
    if (options.output == "-" && pages.size() > 1 && !format->chains) {
        return Misused("only one page can go to standard output as " + std::string(format->name) +
                       "; choose it with --pages");
    }
    Outcome outcome = toTiff ? ConvertToTiff(options, *source, *writing, pages)
                             : ConvertToFiles(options, *source, *format, *writing, pages);
    if (!source->beside.kinds.empty()) {
        Say(options.input, kWholeFile, BesideInWords(*source) + "; that isn't converted");
    }
    const std::string outOfReach = OutOfReach(*source);
    if (!outOfReach.empty()) {
        Say(options.input, kWholeFile, outOfReach);
        outcome = Worse(outcome, Outcome::Damaged);
    }
    return outcome;
}

}  // namespace vellim::tool
