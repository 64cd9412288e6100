// The line functions of a CALS picture on its way to the screen, one for each way to turn it. All
// that they need is in their record.
#include <optional>

#include "screen/line_ranges.h"
#include "screen/painted_line.h"
#include "vellim/cals.h"

namespace {

uint32_t FlushLine(const uint8_t* line, uint32_t lineNumber, uintptr_t callbackData,
                   uint32_t turns) {
    using namespace vellim;
    const auto* context = reinterpret_cast<const CalsScreenContext*>(callbackData);
    if (line == nullptr || context == nullptr) return 0;
    const std::optional<LineCopy> copy =
        CopyOfLine(turns, context->ImageRect, context->SourceRect, context->DestRect,
                   context->PaintRect, lineNumber);
    if (!copy) return 0;
    const MonoLinePaint paint = {context->DeviceContext, context->LineDC,    context->LineBitmap,
                                 context->RowPixels,     context->LineBytes, context->RasterOp,
                                 context->Scratch};
    PaintMonoLine(paint, *copy, turns, line);
    return 0;
}

}  // namespace

uint32_t FlushCALSLineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return FlushLine(line, lineNumber, callbackData, 0);
}

uint32_t FlushCALS90LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return FlushLine(line, lineNumber, callbackData, 1);
}

uint32_t FlushCALS180LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return FlushLine(line, lineNumber, callbackData, 2);
}

uint32_t FlushCALS270LineToScreen(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    return FlushLine(line, lineNumber, callbackData, 3);
}
