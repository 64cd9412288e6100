// Vertical modes come in chains: nine of ten modes of a page are vertical, and most of those take
// one bit. The next eight bits resolve up to four of them, which are then carried out at once: each
// change is the reference line's change at its place plus an offset, as long as b1 needn't move by
// more than one place and the line doesn't end.
#pragma once

#include <array>
#include <cstdint>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vellim {

inline constexpr uint32_t kChainModes = 4;
inline constexpr uint32_t kChainBits = 8;

// The vertical modes that the next bits begin with.
struct VerticalChain {
    int32_t offsets[kChainModes];  // a1 right of b1
    uint8_t bits[kChainModes];     // of the code up to and with each mode
    uint8_t count;                 // 0 when the first mode isn't vertical or doesn't fit
};

extern const std::array<VerticalChain, 1U << kChainBits> kVerticalChains;

// Writes `reference[i] + chain.offsets[i]` to `changes[i]` for all four i. Gives a bit for each i
// at which the chain must stop to look: the change reaches `width`, or isn't left of reference[i +
// 1], or is left of reference[i - 1].
inline uint32_t FollowChain(const VerticalChain& chain, const int32_t* reference, int32_t* changes,
                            int32_t width) {
#if defined(__SSE2__)
    const auto load = [](const int32_t* from) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    };
    const __m128i positions = _mm_add_epi32(load(reference), load(chain.offsets));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(changes), positions);
    const __m128i atEnd = _mm_cmpgt_epi32(positions, _mm_set1_epi32(width - 1));
    const __m128i behind = _mm_cmpgt_epi32(load(reference - 1), positions);
    const __m128i before = _mm_cmpgt_epi32(load(reference + 1), positions);
    const auto bits = [](__m128i lanes) {
        return static_cast<uint32_t>(_mm_movemask_ps(_mm_castsi128_ps(lanes)));
    };
    return bits(_mm_or_si128(atEnd, behind)) | (bits(before) ^ 0xFU);
#else
    uint32_t stops = 0;
    for (uint32_t i = 0; i < kChainModes; ++i) {
        const int32_t* const b1 = reference + i;
        const int32_t position = b1[0] + chain.offsets[i];
        changes[i] = position;
        const bool stop = position >= width || b1[1] <= position || b1[-1] > position;
        stops |= uint32_t{stop} << i;
    }
    return stops;
#endif
}

}  // namespace vellim
