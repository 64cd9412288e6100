// Pages made from a text file.
#include <cstring>
#include <new>
#include <span>
#include <string>

#include "bridge/dib_palettes.h"
#include "fax/fax_font.h"
#include "fax/page_set.h"
#include "fax/typesetter.h"
#include "platform/graphics/graphics_guards.h"
#include "vellim/fax.h"

namespace vellim {
namespace {

constexpr ColorRef kBlack = 0;

std::string PathOf(const FaxPageRequest& request) {
    return {request.TextFile, strnlen(request.TextFile, sizeof request.TextFile)};
}

FaxPageResult SetText(TextReader& text, Typesetter& setter, PageSet& pages) {
    while (const auto byte = text.Next()) {
        setter.Set(*byte, text);
        if (!setter.IsPageFull()) continue;
        pages.Deliver();
        const FaxPageResult result = pages.TurnPage();
        if (result != FAX_DONE) return result;
        setter.TurnPage();
    }
    setter.DrawLine();
    pages.Deliver();
    return FAX_DONE;
}

// Counts the pages in `delivered` on every way out, that of an exception among them.
class DeliveredCount {
  public:
    DeliveredCount(const PageSet& pages, uint32_t& delivered)
        : pages_(pages), delivered_(delivered) {}
    ~DeliveredCount() { delivered_ = pages_.Delivered(); }
    DeliveredCount(const DeliveredCount&) = delete;
    DeliveredCount& operator=(const DeliveredCount&) = delete;

  private:
    const PageSet& pages_;
    uint32_t& delivered_;
};

FaxPageResult MakePages(const FaxPageRequest& request, const PageOrder& order, BitmapHandle form,
                        uint32_t& delivered) {
    const PageGeometry geometry = GeometryOf(request);
    const ScopedContext context(ScopedContext::Kind::Memory);
    if (!context) return FAX_NO_MEMORY;
    const OwnedObject palette(CreateMonoPalette());
    const SelectedPalette selectedPalette(context.Get(), palette.Get());
    PageSet pages(context.Get(), geometry, order, form);
    if (!pages) return FAX_NO_MEMORY;
    const OwnedObject font(CreateFaxFont(request));
    const SelectedObject selectedFont(context.Get(), font.Get());
    SetTextColor(context.Get(), kBlack);
    if (form != 0) SetBkMode(context.Get(), TRANSPARENT);

    const DeliveredCount count(pages, delivered);
    Typesetter setter(context.Get(), geometry);
    if (!setter) return FAX_NO_MEMORY;
    TextReader text(PathOf(request).c_str());
    if (!text) return FAX_NO_TEXT_FILE;
    return SetText(text, setter, pages);
}

bool IsKind(uint32_t kind) {
    return kind == FAX_PAGE_BITMAP || kind == FAX_PAGE_DIB;
}

}  // namespace
}  // namespace vellim

uint32_t CreateFaxPageFromASCII(FaxPageRequest* request, uint32_t maxPages, uint32_t* pages,
                                uint32_t kind, BitmapHandle bitmap, uint32_t* code) {
    using namespace vellim;
    uint32_t delivered = 0;
    FaxPageResult result = FAX_BAD_ARGUMENT;
    if (request != nullptr && pages != nullptr && maxPages != 0 && IsKind(kind)) {
        const PageOrder order = {static_cast<FaxPageKind>(kind), std::span(pages, maxPages),
                                 request->XResolution, request->YResolution};
        try {
            result = MakePages(*request, order, bitmap, delivered);
        } catch (const std::bad_alloc&) {
            result = FAX_NO_MEMORY;
        }
    }
    if (code != nullptr) *code = static_cast<uint32_t>(result);
    return delivered;
}

uint32_t CreateBMPFaxPageFromASCII(FaxPageRequest* request, uint32_t maxPages, BitmapHandle* pages,
                                   uint32_t* code) {
    return CreateFaxPageFromASCII(request, maxPages, pages, FAX_PAGE_BITMAP, 0, code);
}

uint32_t CreateDIBFaxPageFromASCII(FaxPageRequest* request, uint32_t maxPages, DibHandle* pages,
                                   uint32_t* code) {
    return CreateFaxPageFromASCII(request, maxPages, pages, FAX_PAGE_DIB, 0, code);
}
