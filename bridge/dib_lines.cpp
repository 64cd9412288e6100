// Decoded lines on their way into a DIB. The decoder's line 0 is the top one, a DIB's row 0 the
// lowest; TIFF stores a 24-bit pixel red first, a DIB blue first.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "vellim/load.h"

namespace {

// The record behind the callback's value, or null when this line has no row in the DIB.
const LoadLineContext* ContextOf(const uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const auto* context = reinterpret_cast<const LoadLineContext*>(callbackData);
    if (line == nullptr || context == nullptr || context->Bits == nullptr) return nullptr;
    return lineNumber < context->Height ? context : nullptr;
}

// A row's padding stays as it is. A line longer than its row is cut to it.
void StoreLine(const LoadLineContext& context, const uint8_t* line, uint32_t lineNumber) {
    const size_t row = context.Height - 1 - lineNumber;
    std::memcpy(context.Bits + row * context.StrideOrUsage, line,
                std::min(context.LineBytes, context.StrideOrUsage));
}

}  // namespace

uint32_t DllFlushTiffLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    if (const auto* context = ContextOf(line, lineNumber, callbackData))
        StoreLine(*context, line, lineNumber);
    return 0;
}

uint32_t DllFlushTiffLine24DIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const auto* context = ContextOf(line, lineNumber, callbackData);
    if (context == nullptr) return 0;
    for (size_t i = 0; i + 2 < context->LineBytes; i += 3)
        std::swap(line[i], line[i + 2]);
    StoreLine(*context, line, lineNumber);
    return 0;
}
