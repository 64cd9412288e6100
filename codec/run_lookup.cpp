#include "codec/run_lookup.h"

#include <string_view>

#include "codec/fax_codes.h"

namespace vellim {
namespace {

// A code of the full set of one colour, as a number.
struct Code {
    uint32_t bits;
    RunEntry entry;
};

constexpr Code ToCode(const RunCode& row, RunKind kind) {
    uint32_t bits = 0;
    for (const char bit : row.bits)
        bits = bits * 2 + (bit == '1' ? 1U : 0U);
    return {bits, {static_cast<uint16_t>(row.run), static_cast<uint8_t>(row.bits.size()), kind}};
}

inline constexpr size_t kCodesOfAColor = std::size(kWhiteTerminatingCodes) +
                                         std::size(kWhiteMakeUpCodes) +
                                         std::size(kExtendedMakeUpCodes);

using CodeSet = std::array<Code, kCodesOfAColor>;

constexpr CodeSet AllCodes(const auto& terminating, const auto& makeUp) {
    CodeSet codes{};
    size_t n = 0;
    for (const RunCode& row : terminating)
        codes[n++] = ToCode(row, RunKind::Terminating);
    for (const RunCode& row : makeUp)
        codes[n++] = ToCode(row, RunKind::MakeUp);
    for (const RunCode& row : kExtendedMakeUpCodes)
        codes[n++] = ToCode(row, RunKind::MakeUp);
    return codes;
}

template <int kBits>
constexpr std::array<RunEntry, 1U << kBits> MakeLookup(const CodeSet& codes) {
    std::array<RunEntry, 1U << kBits> lookup{};
    constexpr RunEntry zeroByte{0, 8, RunKind::ZeroByte};
    for (uint32_t i = 0; i < (1U << (kBits - zeroByte.length)); ++i)
        lookup[i] = zeroByte;
    for (const Code& code : codes) {
        const int free = kBits - code.entry.length;
        for (uint32_t i = 0; i < (1U << free); ++i)
            lookup[(code.bits << free) + i] = code.entry;
    }
    return lookup;
}

constexpr std::array<RunPair, 1U << kPairBits> MakePairLookup(const CodeSet& firsts,
                                                              const CodeSet& seconds) {
    std::array<RunPair, 1U << kPairBits> lookup{};
    for (const Code& a : firsts) {
        for (const Code& b : seconds) {
            const int bits = a.entry.length + b.entry.length;
            const bool bothTerminate =
                a.entry.kind == RunKind::Terminating && b.entry.kind == RunKind::Terminating;
            if (!bothTerminate || bits > kPairBits) continue;
            const int free = kPairBits - bits;
            const uint32_t at = ((a.bits << b.entry.length) + b.bits) << free;
            for (uint32_t i = 0; i < (1U << free); ++i) {
                lookup[at + i] = {static_cast<uint8_t>(a.entry.run),
                                  static_cast<uint8_t>(b.entry.run), static_cast<uint8_t>(bits),
                                  b.entry.length};
            }
        }
    }
    return lookup;
}

constexpr CodeSet kWhiteCodes = AllCodes(kWhiteTerminatingCodes, kWhiteMakeUpCodes);
constexpr CodeSet kBlackCodes = AllCodes(kBlackTerminatingCodes, kBlackMakeUpCodes);

// No code begins another, and together they leave only the pattern of eight zeros: the sum of
// 2^-length is 255/256.
constexpr bool IsCompletePrefixCode(const CodeSet& codes, int longest) {
    uint32_t sum = 0;
    int seenLongest = 0;
    for (size_t i = 0; i < codes.size(); ++i) {
        const Code& a = codes[i];
        sum += 1U << (16 - a.entry.length);
        if (a.entry.length > seenLongest) seenLongest = a.entry.length;
        for (size_t k = 0; k < codes.size(); ++k) {
            const Code& b = codes[k];
            if (i == k || b.entry.length < a.entry.length) continue;
            if (b.bits >> (b.entry.length - a.entry.length) == a.bits) return false;
            if (a.entry.kind == b.entry.kind && a.entry.run == b.entry.run) return false;
        }
    }
    return sum == 255U << 8 && seenLongest == longest;
}

static_assert(IsCompletePrefixCode(kWhiteCodes, kWhiteLookupBits));
static_assert(IsCompletePrefixCode(kBlackCodes, kBlackLookupBits));

}  // namespace

constexpr std::array<RunEntry, 1U << kWhiteLookupBits> kWhiteRuns =
    MakeLookup<kWhiteLookupBits>(kWhiteCodes);
constexpr std::array<RunEntry, 1U << kBlackLookupBits> kBlackRuns =
    MakeLookup<kBlackLookupBits>(kBlackCodes);
constexpr std::array<std::array<RunPair, 1U << kPairBits>, 2> kRunPairs = {
    MakePairLookup(kWhiteCodes, kBlackCodes), MakePairLookup(kBlackCodes, kWhiteCodes)};

}  // namespace vellim
