// Four codes at a time while the code buffer has room for a wide store, else one by one.
#include "codec/lzw_code_writer.h"

#include <bit>
#include <cstring>

#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr unsigned kPairBits = 16;
constexpr unsigned kPendingBits = 64;
constexpr unsigned kGroup = 4;  // four codes of 12 bits and what may be pending fit together

}  // namespace

void LzwCodeWriter::WriteFour(const uint16_t* codes, unsigned width) {
    uint64_t group = codes[0];
    for (unsigned i = 1; i < kGroup; ++i)
        group = group << width | codes[i];
    count_ += kGroup * width;
    pending_ |= group << (kPendingBits - count_);
    uint64_t bytes = pending_;
    if constexpr (std::endian::native == std::endian::little) bytes = __builtin_bswap64(bytes);
    std::memcpy(state_.CodeCursor, &bytes, sizeof(bytes));
    const uint32_t written = count_ / kPairBits * 2;
    state_.CodeCursor += written;
    state_.CodeLeft -= written;
    pending_ <<= written * 8;
    count_ -= written * 8;
}

uint32_t LzwCodeWriter::PutByte() {
    if (state_.CodeLeft == 0) {
        const uint32_t result = FlushCodeBuffer(&state_);
        if (result != TIFF_SUCCESS) return result;
        if (state_.CodeLeft == 0) return TIFF_BAD_CODE;
    }
    *state_.CodeCursor = static_cast<uint8_t>(pending_ >> (kPendingBits - 8));
    state_.CodeCursor += 1;
    state_.CodeLeft -= 1;
    pending_ <<= 8;
    count_ -= 8;
    return TIFF_SUCCESS;
}

uint32_t LzwCodeWriter::DrainPairs() {
    while (count_ >= kPairBits) {
        const bool isAlone = state_.CodeLeft == 1;
        uint32_t result = PutByte();
        if (result == TIFF_SUCCESS && !isAlone) result = PutByte();
        if (result != TIFF_SUCCESS) return result;
    }
    return TIFF_SUCCESS;
}

uint32_t LzwCodeWriter::Write(std::span<const uint16_t> codes, unsigned width) {
    while (!codes.empty()) {
        if (codes.size() >= kGroup && state_.CodeLeft >= sizeof(pending_)) [[likely]] {
            WriteFour(codes.data(), width);
            codes = codes.subspan(kGroup);
            continue;
        }
        count_ += width;
        pending_ |= uint64_t{codes.front()} << (kPendingBits - count_);
        codes = codes.subspan(1);
        const uint32_t result = DrainPairs();
        if (result != TIFF_SUCCESS) return result;
    }
    return TIFF_SUCCESS;
}

uint32_t LzwCodeWriter::Close() {
    count_ = (count_ + kPairBits - 1) / kPairBits * kPairBits;
    while (count_ > 0) {
        const uint32_t result = PutByte();
        if (result != TIFF_SUCCESS) return result;
    }
    return TIFF_SUCCESS;
}

}  // namespace vellim
