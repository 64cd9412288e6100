#include "screen/painted_line.h"

#include "platform/graphics/pixel_copy.h"
#include "screen/kernels.h"

namespace vellim {
namespace {

// A bitmap's column is loaded from its top, and at one turn a row's left end becomes the top.
void (*const kTurnLine[])(const uint8_t*, uint8_t*, uint32_t) = {
    nullptr, SpreadMonoLine, MirrorMonoLine, SpreadMonoLineReversed};

}  // namespace

bool IsDrawn(const LineCopy& copy, DeviceContextHandle to) {
    const DeviceContext* context = FindContext(to);
    return context != nullptr && MeetsPixels(*context, {copy.X, copy.Y}, copy.Width, copy.Height);
}

void DrawLine(const LineCopy& copy, DeviceContextHandle to, DeviceContextHandle lineContext,
              uint32_t operation) {
    BitBlt(to, copy.X, copy.Y, copy.Width, copy.Height, lineContext, copy.SourceX, copy.SourceY,
           operation);
}

void PaintMonoLine(const MonoLinePaint& paint, const LineCopy& copy, uint32_t turns,
                   const uint8_t* line) {
    if (!IsDrawn(copy, paint.To)) return;
    const uint8_t* row = line;
    if (turns != 0) {
        if (paint.Scratch == nullptr) return;
        kTurnLine[turns](line, paint.Scratch, paint.RowPixels);
        row = paint.Scratch;
    }
    SetBitmapBits(paint.LineBitmap, paint.LineBytes, row);
    DrawLine(copy, paint.To, paint.LineDC, paint.RasterOp);
}

}  // namespace vellim
