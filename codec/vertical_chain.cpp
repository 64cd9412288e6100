#include "codec/vertical_chain.h"

#include "codec/fax_modes.h"

namespace vellim {
namespace {

// The vertical mode that the first bits of `bits` (of `length` bits) are, or null.
constexpr const ModeCode* VerticalModeAt(uint32_t bits, uint32_t length) {
    for (const ModeCode& code : kModeCodes) {
        if (code.kind != ModeKind::Vertical || code.bits.size() > length) continue;
        uint32_t value = 0;
        for (const char bit : code.bits)
            value = value * 2 + (bit == '1' ? 1U : 0U);
        if (bits >> (length - code.bits.size()) == value) return &code;
    }
    return nullptr;
}

constexpr VerticalChain ChainOf(uint32_t bits) {
    VerticalChain chain{};
    uint32_t left = kChainBits;
    while (chain.count < kChainModes) {
        const ModeCode* const mode = VerticalModeAt(bits & ((1U << left) - 1), left);
        if (mode == nullptr) break;
        left -= static_cast<uint32_t>(mode->bits.size());
        chain.offsets[chain.count] = mode->offset;
        chain.bits[chain.count] = static_cast<uint8_t>(kChainBits - left);
        ++chain.count;
    }
    return chain;
}

constexpr std::array<VerticalChain, 1U << kChainBits> MakeChains() {
    std::array<VerticalChain, 1U << kChainBits> chains{};
    for (uint32_t bits = 0; bits < chains.size(); ++bits)
        chains[bits] = ChainOf(bits);
    return chains;
}

}  // namespace

constexpr std::array<VerticalChain, 1U << kChainBits> kVerticalChains = MakeChains();

}  // namespace vellim
