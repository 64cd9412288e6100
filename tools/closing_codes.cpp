// No sound code has eleven zeros in a row: codes end in three of them at most, and begin with
// seven. So an end-of-line code is one wherever it stands, but between lines that begin on byte
// boundaries, whose fill can make one of the next line's first bits.
#include "closing_codes.h"

#include <bit>

namespace vellim::tool {
namespace {

constexpr size_t kPieceBytes = 64UL << 10U;
constexpr uint64_t kEolBits = kEolZeros + 1;

struct Rule {
    bool tagged;      // a bit behind each end-of-line code tells how the next line is coded
    uint32_t fewest;  // closing codes where nothing follows
    uint32_t sure;    // closing codes wherever they stand
    uint32_t kept;    // for the decoder
};

// Six are return to control, of whose last byte a writer may have left out what doesn't fill it;
// two are an end-of-facsimile-block. Behind lines without such codes they would be read as lines;
// in two-dimensional coding all but the first would be white lines.
Rule RuleOf(FaxCoding coding) {
    switch (coding) {
        case FaxCoding::G3:
            return {false, 2, 4, 0};
        case FaxCoding::G3Eol:
            return {false, 1, 4, 1};
        case FaxCoding::G3TwoD:
            return {true, 1, 4, 0};
        case FaxCoding::Mmr:
            return {true, 1, 2, 0};
        default:
            return {false, 2, 2, 2};
    }
}

struct Scan {
    Rule rule;
    PageCodes found;
    uint64_t zeros = 0;  // before the next bit
    uint32_t eols = 0;   // one after the other, with no code between them or behind them
    bool behindEol = false;

    [[nodiscard]] bool Closes(uint32_t fewest) const { return found.lines != 0 && eols >= fewest; }
};

void TakeEol(Scan& scan, uint64_t bit) {
    if (scan.eols++ == 0) scan.found.closingBit = bit - kEolZeros;
    scan.found.closedBit = bit + 1;
    scan.behindEol = true;
}

// Takes the 1 at `bit`. False where it stands behind the page's end.
bool TakeOne(Scan& scan, uint64_t bit) {
    const bool isTag = scan.rule.tagged && scan.behindEol && scan.zeros == 0;
    scan.behindEol = false;
    if (scan.zeros >= kEolZeros) {
        TakeEol(scan, bit);
    } else if (isTag) {
        scan.found.closedBit = bit + 1;
    } else if (scan.Closes(scan.rule.sure)) {
        return false;
    } else {
        if (scan.eols != 0 || scan.found.lines == 0) ++scan.found.lines;
        scan.eols = 0;
        scan.found.codeEnd = bit + 1;
    }
    scan.zeros = 0;
    return true;
}

bool TakeByte(Scan& scan, uint64_t firstBit, uint8_t byte) {
    uint64_t reached = firstBit;
    while (byte != 0) {
        const auto zeros = static_cast<uint32_t>(std::countl_zero(byte));
        scan.zeros += zeros;
        if (!TakeOne(scan, reached + zeros)) return false;
        reached += zeros + 1;
        byte = static_cast<uint8_t>(byte << (zeros + 1));
    }
    scan.zeros += firstBit + 8 - reached;
    return true;
}

// Leaves out the code from `bit` on; the rest of its byte becomes zeros.
bool CutAtBit(CodeFile& code, uint64_t bit, std::string& why) {
    std::vector<uint8_t> byte = ReadCode(code, bit / 8, 1);
    if (byte.empty()) return true;
    byte[0] &= static_cast<uint8_t>(0xFF00U >> bit % 8);
    return CutCode(code, bit / 8, why) && AddCode(code, byte.data(), 1, why);
}

}  // namespace

bool FindPageCodes(const CodeFile& code, FaxCoding coding, PageCodes& found, std::string& why) {
    Scan scan;
    scan.rule = RuleOf(coding);
    bool goesOn = true;
    for (uint64_t at = 0; goesOn && at < code.size; at += kPieceBytes) {
        const std::vector<uint8_t> piece = ReadCode(code, at, kPieceBytes);
        if (piece.empty()) {
            why = "its code can't be read back";
            return false;
        }
        for (size_t i = 0; goesOn && i < piece.size(); ++i)
            goesOn = TakeByte(scan, (at + i) * 8, piece[i]);
    }
    found = scan.found;
    found.closed = scan.Closes(scan.rule.fewest);
    return true;
}

bool CutToPage(CodeFile& code, FaxCoding coding, const PageCodes& found, std::string& why) {
    if (found.closed) {
        return CutAtBit(code, found.closingBit + RuleOf(coding).kept * kEolBits, why);
    }
    // Zeros behind Group 4 code, and half a closing code, are no code; but a last code may end in
    // some zeros.
    const uint64_t used = (found.codeEnd + 7) / 8 + 1;
    return coding != FaxCoding::G4 || used >= code.size || CutCode(code, used, why);
}

}  // namespace vellim::tool
