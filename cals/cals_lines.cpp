// Lines between the Group 4 coder and the rows of a DIB. A run's line 0 is the top one, a DIB's row
// 0 the lowest.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "vellim/cals.h"

namespace {

// The record behind the callback's value, or null when this line has no row in the DIB.
const CalsLineContext* ContextOf(const uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const auto* context = reinterpret_cast<const CalsLineContext*>(callbackData);
    if (line == nullptr || context == nullptr || context->Bits == nullptr) return nullptr;
    return lineNumber < context->Height ? context : nullptr;
}

uint8_t* RowOf(const CalsLineContext& context, uint32_t lineNumber) {
    return context.Bits + size_t{context.Height - 1 - lineNumber} * context.Stride;
}

// A line longer than its row is cut to it.
uint32_t BytesOf(const CalsLineContext& context) {
    return std::min(context.LineBytes, context.Stride);
}

}  // namespace

uint32_t DllFlushCALSLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    if (const CalsLineContext* context = ContextOf(line, lineNumber, callbackData))
        std::memcpy(RowOf(*context, lineNumber), line, BytesOf(*context));
    return 0;
}

uint32_t DllFillCALSLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const CalsLineContext* context = ContextOf(line, lineNumber, callbackData);
    if (context == nullptr) return 0;
    const uint8_t* row = RowOf(*context, lineNumber);
    const uint8_t inverts = context->Invert != 0 ? 0xFF : 0;
    std::transform(row, row + BytesOf(*context), line,
                   [inverts](uint8_t byte) { return static_cast<uint8_t>(byte ^ inverts); });
    return 0;
}
