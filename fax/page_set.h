// The pages of a run: the one being drawn, and those that the caller has.
#pragma once

#include <cstdint>
#include <span>

#include "fax/page_geometry.h"
#include "platform/graphics/graphics_guards.h"
#include "vellim/fax.h"

namespace vellim {

// Where finished pages go.
struct PageOrder {
    FaxPageKind kind;
    std::span<uint32_t> pages;
    uint32_t xResolution;
    uint32_t yResolution;
};

// A bitmap of one bit a pixel, all zero, which is black; 0 for one that can't be had, and for one
// above the library's size limits.
BitmapHandle CreateFaxBitmap(uint32_t width, uint32_t height);

// A DIB of the bitmap's depth, whose table begins with white and black, or 0.
DibHandle FaxBitmapToDIB(BitmapHandle bitmap, uint32_t xResolution, uint32_t yResolution);

class PageSet {
  public:
    // `form` is the bitmap to draw the first page on, and stays the caller's; 0 for a blank page.
    PageSet(DeviceContextHandle context, const PageGeometry& size, const PageOrder& order,
            BitmapHandle form);
    ~PageSet();
    PageSet(const PageSet&) = delete;
    PageSet& operator=(const PageSet&) = delete;

    // False where there is no page to draw on.
    explicit operator bool() const { return isReady_; }

    // Stores the page. It is done with unless TurnPage comes next.
    void Deliver();

    // Goes on from a stored page to a blank one.
    FaxPageResult TurnPage();

    [[nodiscard]] uint32_t Delivered() const { return delivered_; }

  private:
    bool StartNewBitmap();
    [[nodiscard]] bool Clear() const;

    DeviceContextHandle context_;
    PageGeometry size_;
    PageOrder order_;
    OwnedObject white_;
    BitmapHandle current_ = 0;
    BitmapHandle own_ = 0;       // the same, while it is this run's to delete
    GraphicsHandle before_ = 0;  // what was selected before the pages
    uint32_t delivered_ = 0;
    bool isReady_ = false;
};

}  // namespace vellim
