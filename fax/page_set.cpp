#include "fax/page_set.h"

#include <algorithm>
#include <limits>

#include "bridge/dib_bitmaps.h"
#include "bridge/dib_palettes.h"
#include "container/sizes.h"
#include "platform/guards.h"

namespace vellim {
namespace {

constexpr uint32_t kFarthest = std::numeric_limits<int32_t>::max();
constexpr ColorRef kWhite = 0x00FFFFFF;

}  // namespace

BitmapHandle CreateFaxBitmap(uint32_t width, uint32_t height) {
    if (width > kFarthest || height > kFarthest) return 0;
    const auto pixels = static_cast<int32_t>(width), lines = static_cast<int32_t>(height);
    if (!WithinSizeLimits(pixels, lines)) return 0;
    return CreateBitmap(pixels, lines, 1, 1, nullptr);
}

DibHandle FaxBitmapToDIB(BitmapHandle bitmap, uint32_t xResolution, uint32_t yResolution) {
    const OwnedObject palette(CreateMonoPalette());
    OwnedBlock dib(BitmapToDib(bitmap, palette.Get()));
    {
        const LockedBlock block(dib.Get());
        if (!block) return 0;
        auto* header = block.As<BITMAPINFOHEADER>();
        header->biXPelsPerMeter = DotsPerMeter(xResolution);
        header->biYPelsPerMeter = DotsPerMeter(yResolution);
    }
    return dib.Release();
}

PageSet::PageSet(DeviceContextHandle context, const PageGeometry& size, const PageOrder& order,
                 BitmapHandle form)
    : context_(context), size_(size), order_(order), white_(CreateSolidBrush(kWhite)) {
    if (!white_) return;
    if (form == 0) {
        isReady_ = StartNewBitmap();
        return;
    }
    current_ = form;
    before_ = SelectObject(context_, form);
    isReady_ = before_ != 0;
}

PageSet::~PageSet() {
    if (before_ != 0) SelectObject(context_, before_);
    if (own_ != 0) DeleteObject(own_);
}

void PageSet::Deliver() {
    const bool isBitmap = order_.kind == FAX_PAGE_BITMAP;
    order_.pages[delivered_++] =
        isBitmap ? current_ : FaxBitmapToDIB(current_, order_.xResolution, order_.yResolution);
    if (isBitmap) own_ = 0;
}

FaxPageResult PageSet::TurnPage() {
    if (delivered_ == order_.pages.size()) return FAX_TOO_MANY_PAGES;
    const bool isBlank = order_.kind == FAX_PAGE_BITMAP ? StartNewBitmap() : Clear();
    return isBlank ? FAX_DONE : FAX_NO_MEMORY;
}

// The page before is selected out by this.
bool PageSet::StartNewBitmap() {
    own_ = current_ = CreateFaxBitmap(size_.width, size_.height);
    const GraphicsHandle before = own_ != 0 ? SelectObject(context_, own_) : 0;
    if (before == 0) return false;
    if (before_ == 0) before_ = before;
    return Clear();
}

bool PageSet::Clear() const {
    const RECT page = {0, 0, static_cast<int32_t>(std::min(size_.width, kFarthest)),
                       static_cast<int32_t>(std::min(size_.height, kFarthest))};
    return FillRect(context_, &page, white_.Get()) != 0;
}

}  // namespace vellim
