// The twelve line functions of a TIFF picture on its way to the screen: one for each way to turn it
// and each kind of pixel.
//
// Whether a line is in view is asked first; one that isn't is not touched at all.
#include <optional>

#include "bridge/red_and_blue.h"
#include "screen/kernels.h"
#include "screen/line_ranges.h"
#include "screen/painted_line.h"
#include "screen/screen_view.h"
#include "vellim/screen.h"

namespace vellim {
namespace {

constexpr uint16_t kByteBits = 8;

using Kernel = void (*)(const uint8_t* source, uint8_t* target, uint32_t count);

// By quarter turns. A DIB's column is loaded from its foot, and at one turn a row's left end
// becomes the top.
constexpr Kernel kTurnNibbles[] = {nullptr, SpreadNibbleLineReversed, MirrorNibbleLine,
                                   SpreadNibbleLine};
constexpr Kernel kTurnBytes[] = {nullptr, SpreadByteLineReversed, MirrorByteLine, SpreadByteLine};
constexpr Kernel kTurnRgb[] = {nullptr, SpreadRgbLineReversed, MirrorRgbLine, SpreadRgbLine};

const ScreenLineContext* ContextOf(const uint8_t* line, uintptr_t callbackData) {
    const auto* context = reinterpret_cast<const ScreenLineContext*>(callbackData);
    const bool isPainting = ThreadScreenView().LineDC != 0;
    return line != nullptr && isPainting ? context : nullptr;
}

std::optional<LineCopy> PlaceOf(uint32_t turns, uint32_t lineNumber) {
    const ViewLayout& view = ThreadScreenView().View;
    return CopyOfLine(turns, view.ImageRect, view.SourceRect, view.DestRect, view.PaintRect,
                      lineNumber);
}

// Loads the line bitmap: a row of it, or the whole of a column.
void PaintColorLine(const ScreenLineContext& context, const LineCopy& copy, Kernel kernel,
                    uint32_t turns, const uint8_t* line) {
    const uint8_t* row = line;
    if (kernel != nullptr) {
        if (context.Scratch == nullptr) return;
        kernel(line, context.Scratch, context.RowPixels);
        row = context.Scratch;
    }
    const DeviceContextHandle lineContext = ThreadScreenView().LineDC;
    const uint32_t rows = RowsStayRows(turns) ? 1 : context.RowPixels;
    SetDIBits(lineContext, context.LineBitmap, 0, rows, row, context.Header, context.ColorUse);
    DrawLine(copy, context.DeviceContext, lineContext, context.RasterOp);
}

uint32_t FlushMono(const uint8_t* line, uint32_t lineNumber, uintptr_t data, uint32_t turns) {
    const ScreenLineContext* context = ContextOf(line, data);
    if (context == nullptr) return 0;
    const std::optional<LineCopy> copy = PlaceOf(turns, lineNumber);
    if (!copy) return 0;
    const MonoLinePaint paint = {
        context->DeviceContext, ThreadScreenView().LineDC, context->LineBitmap, context->RowPixels,
        context->LineBytes,     context->RasterOp,         context->Scratch};
    PaintMonoLine(paint, *copy, turns, line);
    return 0;
}

uint32_t FlushIndexed(const uint8_t* line, uint32_t lineNumber, uintptr_t data, uint32_t turns) {
    const ScreenLineContext* context = ContextOf(line, data);
    if (context == nullptr || context->Header == nullptr) return 0;
    const std::optional<LineCopy> copy = PlaceOf(turns, lineNumber);
    if (!copy) return 0;
    if (!IsDrawn(*copy, context->DeviceContext)) return 0;
    const bool isByte = context->Header->bmiHeader.biBitCount == kByteBits;
    PaintColorLine(*context, *copy, isByte ? kTurnBytes[turns] : kTurnNibbles[turns], turns, line);
    return 0;
}

uint32_t FlushRgb(uint8_t* line, uint32_t lineNumber, uintptr_t data, uint32_t turns) {
    const ScreenLineContext* context = ContextOf(line, data);
    if (context == nullptr) return 0;
    const std::optional<LineCopy> copy = PlaceOf(turns, lineNumber);
    if (!copy) return 0;
    if (!IsDrawn(*copy, context->DeviceContext)) return 0;
    ExchangeRedAndBlue(line, context->LineBytes);
    PaintColorLine(*context, *copy, kTurnRgb[turns], turns, line);
    return 0;
}

}  // namespace

ScreenView& ThreadScreenView() {
    thread_local ScreenView view;
    return view;
}

}  // namespace vellim

uint32_t FlushMonoLineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushMono(line, lineNumber, callbackData, 0);
}

uint32_t FlushRGBLineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushIndexed(line, lineNumber, callbackData, 0);
}

uint32_t FlushRGB24LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushRgb(line, lineNumber, callbackData, 0);
}

uint32_t FlushMonoRotLineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushMono(line, lineNumber, callbackData, 1);
}

uint32_t FlushRGBRotLineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushIndexed(line, lineNumber, callbackData, 1);
}

uint32_t FlushRGB24RotLineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushRgb(line, lineNumber, callbackData, 1);
}

uint32_t FlushMonoRot18LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushMono(line, lineNumber, callbackData, 2);
}

uint32_t FlushRGBRot18LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushIndexed(line, lineNumber, callbackData, 2);
}

uint32_t FlushRGB24Rot18LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushRgb(line, lineNumber, callbackData, 2);
}

uint32_t FlushMonoRot27LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushMono(line, lineNumber, callbackData, 3);
}

uint32_t FlushRGBRot27LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushIndexed(line, lineNumber, callbackData, 3);
}

uint32_t FlushRGB24Rot27LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return vellim::FlushRgb(line, lineNumber, callbackData, 3);
}
