// Runs of the decoders by way of the library's own entries.
#pragma once

#include <gtest/gtest.h>

#include "platform/guards.h"
#include "platform/memory/memory_blocks.h"
#include "support/engine_run.h"
#include "vellim/vellim.h"

namespace vellim::test {

// `decode` is given the data for CallAnswer. Lines are numbered from `first` on; result and failure
// code agree, and no block stays behind.
inline Outcome Take(size_t lineBytes, const std::function<int32_t(uintptr_t)>& decode,
                    uint32_t first = 0, const Answer& answer = {}) {
    Outcome got;
    const Answer keep = [&](uint8_t* line, uint32_t number) {
        EXPECT_EQ(number, first + got.lines.size());
        got.lines.emplace_back(line, line + lineBytes);
        return answer ? answer(line, number) : 0;
    };
    const uint32_t blocks = LiveGlobalBlocks();
    const int32_t result = decode(reinterpret_cast<uintptr_t>(&keep));
    got.code = static_cast<uint32_t>(TiffError());
    EXPECT_EQ(LiveGlobalBlocks(), blocks);
    EXPECT_EQ(result, got.code == 0 ? 1 : 0);
    return got;
}

struct Part {
    uint32_t firstStrip = 0, lineCount = 0, firstLine = 0;
};

inline Outcome DecodeFile(const Bytes& bytes, Part part = {}, const Answer& answer = {}) {
    const OwnedBlock block(BlockOf(bytes));
    const TiffFileHandle file =
        OpenTiffInMemory(block.Get(), static_cast<int32_t>(bytes.size()), T_READ);
    TiffDimensions size{};
    GetTiffImage(file, 0);
    GetTiffDimensions(file, 0, &size);
    const auto decode = [&](uintptr_t data) {
        return DecodeTiffImage(file, 0, part.firstStrip, part.lineCount, data, CallAnswer);
    };
    const size_t lineBytes = (static_cast<size_t>(size.biWidth) * size.biBitCount + 7) / 8;
    Outcome got = Take(lineBytes, decode, part.firstLine, answer);
    CloseTiffFile(file);
    return got;
}

}  // namespace vellim::test
