// Bare streams of fax code: no header, no size. What the user tells holds; for the rest the first
// lines are decoded in each way that may be meant, and the way in which they agree on where a line
// ends is taken.
#include <algorithm>
#include <array>
#include <bit>
#include <span>
#include <tuple>

#include "closing_codes.h"
#include "coded_page.h"
#include "line_ends.h"
#include "mmr_blocks.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kUsualFillOrder = TIFF_FILL_MSB_FIRST;
constexpr uint32_t kLooks = 64;
constexpr uint32_t kFewestAgreeing = 2;
// Of the lines that agree. Of two-dimensional lines a fourth tells, or fewer.
constexpr double kLeastShare = 0.5;
constexpr double kLeastShareTwoD = 0.125;
// T.4 section 2: pixels of the lines that fax machines send, at the resolutions they have.
constexpr std::array<uint32_t, 11> kFaxWidths = {864,  1216, 1728, 2048, 2432, 2592,
                                                 3072, 3456, 3648, 4096, 4864};
constexpr const char* kNeedsWidth =
    "a bare stream doesn't tell its width; give --width (fax pages have 1728)";
constexpr const char* kNoMmr = "it doesn't begin with a block of MMR code";

struct Guess {
    FaxCoding coding = FaxCoding::G4;
    uint32_t fillOrder = kUsualFillOrder;
    uint32_t width = 0;
};

// How well a guess fits; what stands first weighs more.
struct Fit {
    bool told = false;    // lines end where the user says
    bool steady = false;  // as many lines come with that width as there are end-of-line codes
    bool usual = false;   // lines end where those of fax machines do
    double share = 0;     // of the lines that agree
};

bool IsBetter(const Fit& fit, const Fit& than) {
    return std::tie(fit.told, fit.steady, fit.usual, fit.share) >
           std::tie(than.told, than.steady, than.usual, than.share);
}

bool HasEols(FaxCoding coding) {
    return coding == FaxCoding::G3Eol || coding == FaxCoding::G3TwoD;
}

// Whether the code begins with an end-of-line code, fill in front of it or not.
bool BeginsWithEol(std::span<const uint8_t> code, uint32_t fillOrder) {
    size_t zeros = 0;
    for (const uint8_t byte : code) {
        const uint8_t bits = fillOrder == TIFF_FILL_LSB_FIRST ? Mirrored(byte) : byte;
        if (bits != 0) return zeros + static_cast<size_t>(std::countl_zero(bits)) >= kEolZeros;
        zeros += 8;
    }
    return false;
}

// MMR code begins with a block, and that with an end-of-line code.
bool BeginsAsMmr(const std::vector<uint8_t>& bytes, std::string_view ending) {
    return IsMmr(bytes) &&
           (ending == "mmr" ||
            BeginsWithEol(std::span(bytes).subspan(kMmrHeadBytes), kUsualFillOrder));
}

FaxCoding CodingOfEnding(std::string_view ending) {
    return ending == "g3" ? FaxCoding::G3 : FaxCoding::G4;
}

std::optional<Fit> FitOf(FaxStream& stream, const Guess& guess, const SourceHints& hints,
                         uint32_t& width) {
    stream.coding = guess.coding;
    stream.fillOrder = guess.fillOrder;
    const LineEnds ends = FindLineEnds(stream, kLooks);
    if (ends.agreeing < kFewestAgreeing) return {};
    const double share = static_cast<double>(ends.agreeing) / ends.lines;
    if (share < (guess.coding == FaxCoding::G3TwoD ? kLeastShareTwoD : kLeastShare)) return {};
    width = ends.width;
    const bool usual = std::find(kFaxWidths.begin(), kFaxWidths.end(), width) != kFaxWidths.end();
    const bool steady = DecodeFirstLines(stream, width, kLooks).count == ends.lines;
    return Fit{width == hints.width, steady, usual, share};
}

// Whether lines agree by chance: few of them, read with bits the wrong way round, can agree on some
// width. One that contradicts the told width speaks for that.
bool IsUnlikely(const Guess& guess, const SourceHints& hints) {
    return hints.width != 0 && guess.width != hints.width && hints.fillOrder == 0 &&
           guess.fillOrder != kUsualFillOrder;
}

// Of a stream that begins with an end-of-line code.
std::optional<Guess> GuessByLines(FaxStream& stream, const std::vector<uint8_t>& head,
                                  const SourceHints& hints) {
    std::optional<Guess> best;
    Fit bestFit;
    for (const uint32_t fillOrder : {TIFF_FILL_MSB_FIRST, TIFF_FILL_LSB_FIRST}) {
        if (hints.fillOrder != 0 && hints.fillOrder != fillOrder) continue;
        if (!BeginsWithEol(head, fillOrder)) continue;
        for (const FaxCoding coding : {FaxCoding::G3Eol, FaxCoding::G3TwoD}) {
            if (hints.coding.value_or(coding) != coding) continue;
            Guess guess{coding, fillOrder, 0};
            const auto fit = FitOf(stream, guess, hints, guess.width);
            if (!fit || IsUnlikely(guess, hints) || (best && !IsBetter(*fit, bestFit))) continue;
            best = guess;
            bestFit = *fit;
        }
    }
    return best;
}

// The width of an MMR stream: its first line alone has an end-of-line code behind it, so the lines
// that follow must fit.
uint32_t MmrWidth(FaxStream& stream) {
    stream.coding = FaxCoding::Mmr;
    const uint32_t width = FindLineEnds(stream, 1).width;
    if (width == 0) return 0;
    return DecodeFirstLines(stream, width, kLooks).failure == TIFF_BAD_CODE ? 0 : width;
}

Guess GuessWithEols(FaxStream& stream, const std::vector<uint8_t>& head, const SourceHints& hints) {
    if (const auto guess = GuessByLines(stream, head, hints)) return *guess;
    Guess guess{hints.coding.value_or(FaxCoding::G3Eol), hints.fillOrder, 0};
    if (guess.fillOrder != 0) return guess;
    const bool reversed =
        !BeginsWithEol(head, TIFF_FILL_MSB_FIRST) && BeginsWithEol(head, TIFF_FILL_LSB_FIRST);
    guess.fillOrder = reversed ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST;
    return guess;
}

// What isn't told and can't be found out stays 0.
Guess GuessAll(FaxStream& stream, const std::vector<uint8_t>& head, std::string_view ending,
               const SourceHints& hints) {
    const uint32_t fillOrder = hints.fillOrder != 0 ? hints.fillOrder : kUsualFillOrder;
    const bool hasEol = hints.fillOrder != 0 ? BeginsWithEol(head, hints.fillOrder)
                                             : BeginsWithEol(head, TIFF_FILL_MSB_FIRST) ||
                                                   BeginsWithEol(head, TIFF_FILL_LSB_FIRST);
    if (hints.coding == FaxCoding::Mmr || (!hints.coding && BeginsAsMmr(head, ending)))
        return {FaxCoding::Mmr, fillOrder, fillOrder == kUsualFillOrder ? MmrWidth(stream) : 0};
    Guess guess{hints.coding.value_or(CodingOfEnding(ending)), fillOrder, 0};
    if (hints.coding ? HasEols(*hints.coding) : hasEol) guess = GuessWithEols(stream, head, hints);
    return guess;
}

}  // namespace

bool IsBareEnding(std::string_view ending) {
    constexpr std::array<std::string_view, 4> kEndings = {"g3", "g4", "fax", "mmr"};
    return std::find(kEndings.begin(), kEndings.end(), ending) != kEndings.end();
}

std::optional<RasterPage> OpenBareStream(int descriptor, std::string_view ending,
                                         const SourceHints& hints, std::string& why) {
    CodedPage page;
    if (!BeginCode(page.code, why) || !AddCode(page.code, descriptor, 0, UINT64_MAX, why))
        return {};
    auto stream = OpenFaxStream(page.code, why);
    if (!stream) return {};
    const std::vector<uint8_t> head = ReadCode(page.code, 0, kHeadBytes);
    const Guess guess = GuessAll(*stream, head, ending, hints);
    page.width = hints.width != 0 ? hints.width : guess.width;
    const bool isMmr = guess.coding == FaxCoding::Mmr;
    const bool shortMmr = ending == "mmr" && !hints.coding && head.size() < kMmrHeadBytes;
    if (shortMmr || (isMmr && !IsMmr(head))) {
        why = kNoMmr;
        return {};
    }
    if (page.width == 0) {
        why = kNeedsWidth;
        return {};
    }
    if (guess.width != 0 && guess.width != page.width)
        page.doubt = "its lines end at " + std::to_string(guess.width) + " pixels";
    page.coding = guess.coding;
    page.fillOrder = guess.fillOrder;
    page.height = hints.height;
    PageInfo info;
    info.storage = FaxCodingInWords(guess.coding);
    if (guess.fillOrder == TIFF_FILL_LSB_FIRST) info.storage += ", fill order 2";
    return OpenCodedPage(std::move(page), std::move(info), why);
}

}  // namespace vellim::tool
