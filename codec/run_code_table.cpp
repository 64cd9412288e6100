#include "codec/run_code_table.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "codec/fax_codes.h"
#include "codec/fax_modes.h"

namespace vellim {
namespace {

constexpr size_t kMakeUpStep = 64;
// Of make-up and terminating code together.
constexpr uint32_t kLongestWhiteCode = 12 + 8;
constexpr uint32_t kLongestBlackCode = 13 + 12;
static_assert(3 + kLongestWhiteCode + kLongestBlackCode <= 57);

constexpr BitCode ToCode(std::string_view text) {
    uint32_t bits = 0;
    for (const char bit : text)
        bits = bits * 2 + (bit == '1' ? 1U : 0U);
    return {bits, static_cast<uint32_t>(text.size())};
}

constexpr RunCodeTable MakeTable(const auto& terminating, const auto& makeUp) {
    RunCodeTable table{};
    for (const RunCode& row : terminating)
        table[static_cast<size_t>(row.run)] = ToCode(row.bits);
    const auto enter = [&](const RunCode& row) {
        const BitCode code = ToCode(row.bits);
        const auto run = static_cast<size_t>(row.run);
        for (size_t rest = 0; rest < kMakeUpStep && run + rest < table.size(); ++rest) {
            const BitCode last = table[rest];
            table[run + rest] = {code.bits << last.length | last.bits, code.length + last.length};
        }
    };
    for (const RunCode& row : makeUp)
        enter(row);
    for (const RunCode& row : kExtendedMakeUpCodes)
        enter(row);
    return table;
}

// No entry was left out, and the longest code has `longest` bits.
constexpr bool IsWhole(const auto& table, uint32_t longest) {
    uint32_t seen = 0;
    for (const BitCode code : table) {
        if (code.length == 0) return false;
        seen = std::max(seen, code.length);
    }
    return seen == longest;
}

constexpr BitCode FindMode(ModeKind kind, int32_t offset) {
    for (const ModeCode& row : kModeCodes)
        if (row.kind == kind && row.offset == offset) return ToCode(row.bits);
    return {};
}

constexpr std::array<BitCode, 2 * kMaxVertical + 1> MakeVerticalCodes() {
    std::array<BitCode, 2 * kMaxVertical + 1> codes{};
    for (size_t i = 0; i < codes.size(); ++i)
        codes[i] = FindMode(ModeKind::Vertical, static_cast<int32_t>(i - kMaxVertical));
    return codes;
}

constexpr RunCode kLastMakeUp = kExtendedMakeUpCodes[std::size(kExtendedMakeUpCodes) - 1];
static_assert(kLastMakeUp.run == int{kLongestMakeUp});

}  // namespace

constexpr std::array<RunCodeTable, 2> kRunCodes = {
    MakeTable(kWhiteTerminatingCodes, kWhiteMakeUpCodes),
    MakeTable(kBlackTerminatingCodes, kBlackMakeUpCodes)};
static_assert(IsWhole(kRunCodes[0], kLongestWhiteCode));
static_assert(IsWhole(kRunCodes[1], kLongestBlackCode));

constexpr BitCode kPassCode = FindMode(ModeKind::Pass, 0);
constexpr BitCode kHorizontalCode = FindMode(ModeKind::Horizontal, 0);
constexpr std::array<BitCode, 2 * kMaxVertical + 1> kVerticalCodes = MakeVerticalCodes();
static_assert(kPassCode.length == 4 && kHorizontalCode.length == 3);
static_assert(IsWhole(kVerticalCodes, kLongestModeCode));

void PutRun(BitWriter& out, RunColor color, uint32_t run) {
    constexpr BitCode kLongest = ToCode(kLastMakeUp.bits);
    for (; run > kLongestMakeUp; run -= kLongestMakeUp)
        out.PutCode(kLongest);
    out.PutCode(RunCodesOf(color)[run]);
}

}  // namespace vellim
