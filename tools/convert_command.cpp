// `vellim convert`: which pages go to which files, in which format.
#include <algorithm>

#include "commands.h"
#include "convert_page.h"
#include "document.h"
#include "messages.h"
#include "page_list.h"

namespace vellim::tool {
namespace {

constexpr const char* kDefaultFormat = "png";

Outcome Misused(const std::string& text) {
    Say("", kWholeFile, text);
    return Outcome::Usage;
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

// The pages to convert, counted from 1; none, with the reason in `why`.
std::vector<uint32_t> ChoosePages(const Document& document, const std::vector<PageRange>& ranges,
                                  std::string& why) {
    uint32_t missing = 0;
    const auto count = static_cast<uint32_t>(document.imageCount);
    auto pages = PagesOf(ranges, count, missing);
    if (count == 0) {
        why = "there are no images in it";
    } else if (missing != 0) {
        why = "there is no page " + std::to_string(missing) + ": the last one is page " +
              std::to_string(count);
        pages.clear();
    }
    return pages;
}

Outcome ConvertPages(const ConvertOptions& options, const Document& document,
                     const OutputFormat& format, const std::vector<uint32_t>& pages) {
    Outcome outcome = Outcome::Well;
    const bool numbered = pages.size() > 1 && options.output != "-";
    for (const uint32_t page : pages) {
        PageRequest request;
        request.image = static_cast<int32_t>(page) - 1;
        request.format = &format;
        request.square = options.square;
        request.path = numbered ? NumberedPath(options.output, page,
                                               static_cast<uint32_t>(document.imageCount))
                                : options.output;
        outcome = Worse(outcome, ConvertPage(document, request));
    }
    return outcome;
}

}  // namespace

Outcome RunConvert(const ConvertOptions& options) {
    const bool toStandardOutput = options.output == "-";
    const OutputFormat* format = !options.format.empty() ? FindFormat(options.format)
                                 : toStandardOutput      ? FindFormat(kDefaultFormat)
                                                         : FormatOfPath(options.output);
    if (format == nullptr) {
        return Misused("the format can't be told from \"" +
                       Place(options.format.empty() ? options.output : options.format, kWholeFile) +
                       "\"; served are " + FormatNames());
    }
    const auto ranges = ParsePageList(options.pages.empty() ? "1-" : options.pages);
    if (!ranges) return Misused("--pages takes a list such as 1-3,7 or 5-");

    std::string why;
    const auto document = OpenDocument(options.input, why);
    if (!document) {
        Say(options.input, kWholeFile, why);
        return Outcome::Failed;
    }
    const auto pages = ChoosePages(*document, *ranges, why);
    if (pages.empty()) {
        Say(options.input, kWholeFile, why);
        return Outcome::Failed;
    }
    if (toStandardOutput && pages.size() > 1 && !format->chains) {
        return Misused("only one page can go to standard output as " + std::string(format->name) +
                       "; choose it with --pages");
    }
    Outcome outcome = ConvertPages(options, *document, *format, pages);
    if (document->chainBroken) {
        Say(options.input, kWholeFile, BrokenChainMessage(*document));
        outcome = Worse(outcome, Outcome::Damaged);
    }
    return outcome;
}

}  // namespace vellim::tool
