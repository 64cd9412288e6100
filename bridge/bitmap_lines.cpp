// Lines taken out of a device bitmap. A run's line 0 is the top one, a DIB's row 0 the lowest.
//
// GetDIBits writes the packed bytes of a row's pixels and nothing behind them, so that a row can go
// straight into a run's line. What is done to the row afterwards stays within whole 16-bit words.
#include <cstddef>

#include "bridge/red_and_blue.h"
#include "vellim/save.h"

namespace vellim {
namespace {

constexpr uint16_t kTrueColorBits = 24;
constexpr uint64_t kPixelBytes = 3;

// Whether the line now holds its row; it is as it was if there is none.
bool TakeRow(DeviceContextHandle context, BitmapHandle bitmap, uint32_t lineNumber, uint8_t* line,
             BITMAPINFO* info, uint32_t use) {
    const int64_t row = int64_t{info->bmiHeader.biHeight} - 1 - lineNumber;
    return row >= 0 &&
           GetDIBits(context, bitmap, static_cast<uint32_t>(row), 1, line, info, use) != 0;
}

// The record behind the callback's value, or null when the line has no row.
const SaveLineContext* TakeLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const auto* context = reinterpret_cast<const SaveLineContext*>(callbackData);
    if (line == nullptr || context == nullptr || context->Header == nullptr) return nullptr;
    auto* info = reinterpret_cast<BITMAPINFO*>(context->Header);
    const bool isTaken = TakeRow(context->DeviceContext, context->Bitmap, lineNumber, line, info,
                                 context->StrideOrUsage);
    return isTaken ? context : nullptr;
}

// A set bit is black: what the coders and decoders of bare data go by.
struct OneBitInfo {
    BITMAPINFOHEADER header;
    RGBQUAD colors[2];
};

OneBitInfo DescribeBareLines(const BITMAP& bitmap) {
    OneBitInfo info{};
    info.header.biSize = sizeof info.header;
    info.header.biWidth = bitmap.bmWidth;
    info.header.biHeight = bitmap.bmHeight;
    info.header.biPlanes = 1;
    info.header.biBitCount = 1;
    info.header.biClrUsed = 2;
    info.header.biClrImportant = 2;
    info.colors[0] = {255, 255, 255, 0};
    return info;
}

// What a record begins with that DllFillCcittLine reads.
struct BareLineContext {
    DeviceContextHandle deviceContext;
    BitmapHandle bitmap;
};

}  // namespace
}  // namespace vellim

uint32_t DllFillTiffLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    using namespace vellim;
    const SaveLineContext* context = TakeLine(line, lineNumber, callbackData);
    if (context == nullptr || context->Header->biBitCount != kTrueColorBits) return 0;
    const uint64_t bytes = kPixelBytes * static_cast<uint32_t>(context->Header->biWidth);
    ExchangeRedAndBlue(line, static_cast<uint32_t>(bytes));
    return 0;
}

uint32_t DllFillMonoTiffLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const SaveLineContext* context = vellim::TakeLine(line, lineNumber, callbackData);
    if (context == nullptr) return 0;
    constexpr size_t wordBits = 16;
    const auto width = static_cast<size_t>(context->Header->biWidth);
    const size_t bytes = (width + wordBits - 1) / wordBits * 2;
    for (size_t i = 0; i < bytes; i++)
        line[i] = static_cast<uint8_t>(~uint32_t{line[i]});
    return 0;
}

// The picture's size is asked for each time, so that the line function serves any run.
uint32_t DllFillCcittLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    using namespace vellim;
    const auto* context = reinterpret_cast<const BareLineContext*>(callbackData);
    if (line == nullptr || context == nullptr) return 0;
    BITMAP record{};
    if (GetObjectA(context->bitmap, sizeof record, &record) != sizeof record) return 0;
    OneBitInfo info = DescribeBareLines(record);
    TakeRow(context->deviceContext, context->bitmap, lineNumber, line,
            reinterpret_cast<BITMAPINFO*>(&info), DIB_RGB_COLORS);
    return 0;
}
