// The text of a file laid over a stored form.
#include "container/open_tiff.h"
#include "platform/graphics/graphics_guards.h"
#include "platform/guards.h"
#include "vellim/fax.h"
#include "vellim/load.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

// The first image of the file, and no other.
BitmapHandle LoadForm(const char* path) {
    constexpr int32_t image = 0;
    const OpenTiff file(path, T_READ);
    if (!file || GetTiffImage(file.Get(), image) == 0) return 0;
    return LoadTiffChainIntoBitmap(file.Get(), image);
}

// Draws one page of text on the form and gives the page, or 0 where nothing was drawn.
uint32_t DrawOnForm(BitmapHandle form, FaxPageRequest* request, FaxPageKind kind) {
    uint32_t page = 0;
    CreateFaxPageFromASCII(request, 1, &page, kind, form, nullptr);
    return page;
}

}  // namespace
}  // namespace vellim

BitmapHandle BitmapFormOverlay(const char* formPath, FaxPageRequest* request) {
    using namespace vellim;
    const WaitCursor wait;
    const BitmapHandle form = LoadForm(formPath);
    if (form != 0) DrawOnForm(form, request, FAX_PAGE_BITMAP);
    return form;
}

DibHandle DIBFormOverlay(const char* formPath, FaxPageRequest* request) {
    using namespace vellim;
    const WaitCursor wait;
    const OwnedObject form(LoadForm(formPath));
    return form ? DrawOnForm(form.Get(), request, FAX_PAGE_DIB) : 0;
}
