#include "page_transfer.h"

#include "convert_page.h"
#include "messages.h"

namespace vellim::tool {
namespace {

std::optional<TransferredPages> Fail(const PageSource& source, const std::string& why) {
    Say(source.name, kWholeFile, why);
    return {};
}

}  // namespace

std::optional<TransferredPages> TransferPages(const PageSource& source,
                                              const std::vector<uint32_t>& pages) {
    std::string why;
    TransferredPages transferred;
    transferred.scratch = CreateTiffOutput("-", 0, Overwrite::Refuse, why);
    if (!transferred.scratch) return Fail(source, why);
    transferred.scratch->target = "the temporary file";  // as messages name it
    std::set<std::string> notes;
    PageRequest request;
    request.tiff = transferred.scratch.get();
    request.notes = &notes;
    for (const uint32_t page : pages) {
        request.page = page - 1;
        const PageResult result = ConvertPage(source, request);
        if (!result.written) return {};
        transferred.outcome = Worse(transferred.outcome, result.outcome);
    }
    transferred.scratch->tiff.Reset();
    auto document = OpenDocument(transferred.scratch->Path(), why);
    if (!document) return Fail(source, why);
    transferred.document = std::move(*document);
    transferred.document.name = source.name;
    return transferred;
}

}  // namespace vellim::tool
