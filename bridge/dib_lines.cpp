// Lines on their way into a DIB and out of it. A run's line 0 is the top one, a DIB's row 0 the
// lowest.
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "bridge/red_and_blue.h"
#include "vellim/load.h"
#include "vellim/save.h"

namespace {

// The record behind the callback's value, or null when this line has no row in the DIB.
template <typename Context>
const Context* ContextOf(const uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const auto* context = reinterpret_cast<const Context*>(callbackData);
    if (line == nullptr || context == nullptr || context->Bits == nullptr) return nullptr;
    return int64_t{lineNumber} < int64_t{context->Height} ? context : nullptr;
}

template <typename Context>
uint8_t* RowOf(const Context& context, uint32_t lineNumber) {
    const size_t row = static_cast<uint32_t>(context.Height) - 1 - lineNumber;
    return context.Bits + row * context.StrideOrUsage;
}

// A line longer than its row is cut to it.
template <typename Context>
uint32_t BytesOf(const Context& context) {
    return std::min(context.LineBytes, context.StrideOrUsage);
}

// A row's padding stays as it is.
void StoreLine(const LoadLineContext& context, const uint8_t* line, uint32_t lineNumber) {
    std::memcpy(RowOf(context, lineNumber), line, BytesOf(context));
}

void FetchLine(const SaveLineContext& context, uint8_t* line, uint32_t lineNumber) {
    std::memcpy(line, RowOf(context, lineNumber), BytesOf(context));
}

}  // namespace

uint32_t DllFlushTiffLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    if (const auto* context = ContextOf<LoadLineContext>(line, lineNumber, callbackData))
        StoreLine(*context, line, lineNumber);
    return 0;
}

uint32_t DllFlushTiffLine24DIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const auto* context = ContextOf<LoadLineContext>(line, lineNumber, callbackData);
    if (context == nullptr) return 0;
    vellim::ExchangeRedAndBlue(line, BytesOf(*context));
    StoreLine(*context, line, lineNumber);
    return 0;
}

uint32_t DllFillTiffLineDIB(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    if (const auto* context = ContextOf<SaveLineContext>(line, lineNumber, callbackData))
        FetchLine(*context, line, lineNumber);
    return 0;
}

uint32_t DllFillTiffLineDIB24Bit(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const auto* context = ContextOf<SaveLineContext>(line, lineNumber, callbackData);
    if (context == nullptr) return 0;
    FetchLine(*context, line, lineNumber);
    vellim::ExchangeRedAndBlue(line, BytesOf(*context));
    return 0;
}
