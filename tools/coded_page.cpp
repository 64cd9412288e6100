// The lines of a page of fax code, pushed out of the library's decoder.
//
// The library decodes a page of a known height, and with a height of 0 to the end of the data. The
// latter is how lines are counted that nobody states. A decoder makes white lines of closing codes;
// so the code is cut there first. And of code that was cut, what is put behind it can complete a
// line that never was; so the last line before such an end must come whatever these bytes are.
//
// Fax code has no check sums. What shows damage behind lines that all came: bytes behind the page's
// end, code that ends within a line, and end-of-line codes that don't fit the lines.
#include "coded_page.h"

#include <algorithm>

#include "closing_codes.h"
#include "fax_stream.h"
#include "line_ends.h"
#include "messages.h"
#include "mmr_blocks.h"
#include "vellim/failures.h"
#include "vellim/files.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

struct CodedLines {
    CodeFile code;
    FaxStream stream;
    PageCodes codes;
    uint64_t codeBytes = 0;  // without the padding, and for FaxCoding::Mmr without block heads
    uint32_t height = 0;
    std::string flaw;  // why the page isn't whole, though all lines come
};

constexpr uint32_t kUsualPadding = 0;
// What is counted of lines that nobody states. The largest of drawings have a quarter of it; beyond
// it, a few bytes of rubbish would keep the machine busy for minutes.
constexpr uint64_t kMostCountedPixels = 1ULL << 35U;

// A run that keeps its last line back.
struct Run {
    const LineTaker* taker = nullptr;  // null: lines are only counted
    uint32_t most = 0;                 // lines to go to; 0: as many as come
    uint32_t lines = 0;
    std::vector<uint8_t> last;
    bool refused = false;
};

bool GiveLast(Run& run) {
    if (run.lines == 0 || run.taker == nullptr) return true;
    run.refused = !run.taker->take(run.taker->data, run.last.data());
    return !run.refused;
}

uint32_t OnLine(uint8_t* line, uint32_t /*lineNumber*/, uintptr_t callbackData) noexcept {
    auto& run = *reinterpret_cast<Run*>(callbackData);
    if (!GiveLast(run)) return TIFF_IO_ERROR;
    std::copy_n(line, run.last.size(), run.last.begin());
    ++run.lines;
    return run.lines == run.most ? TIFF_LINE_STOP : TIFF_LINE_GO_ON;
}

Run MakeRun(const CodedLines& coded) {
    Run run;
    run.last.resize(RowBytes(coded.stream.width, kBilevel));
    return run;
}

int32_t Decode(const CodedLines& coded, uint32_t height, Run& run) {
    return DecodeFax(coded.stream, height, reinterpret_cast<uintptr_t>(&run), OnLine);
}

// Puts padding behind the first `codeBytes` bytes of the code, and leaves out the others.
bool Pad(CodedLines& coded, uint64_t codeBytes, uint32_t way, std::string& why) {
    CodeFile& code = coded.code;
    const std::string bytes = PaddingOf(coded.stream.coding, way);
    const bool cut = coded.stream.coding == FaxCoding::Mmr ? CutBlocks(code, codeBytes, why)
                                                           : CutCode(code, codeBytes, why);
    return cut && AddCode(code, bytes.data(), bytes.size(), why);
}

// Whether the run's last line comes of so many bytes of the code whatever is put behind them.
bool LastLineComesOf(CodedLines& coded, const Run& run, uint64_t codeBytes) {
    std::string why;
    for (uint32_t way = 0; way < kPaddings; ++way) {
        if (!Pad(coded, codeBytes, way, why)) return false;
        Run other = MakeRun(coded);
        other.most = run.lines;
        Decode(coded, 0, other);
        if (other.lines != run.lines || other.last != run.last) return false;
    }
    return true;
}

// Whether the last line before the end of the data comes of the code alone.
bool LastLineStands(CodedLines& coded, const Run& run) {
    if (run.lines == 0 || coded.codes.closed) return true;
    const bool stands = LastLineComesOf(coded, run, coded.codeBytes);
    std::string why;
    return Pad(coded, coded.codeBytes, kUsualPadding, why) && stands;
}

// Whether T.6 code has bytes to spare behind its last line, so that another was begun there. A
// whole line can end in a few bits that change nothing, those of a run of no pixels.
bool EndsWithinLine(const CodedLines& coded, const Run& run) {
    constexpr uint64_t kSpareBytes = 3;
    const FaxCoding coding = coded.stream.coding;
    const uint64_t end = (coded.codes.codeEnd + 7) / 8;
    if ((coding != FaxCoding::G4 && coding != FaxCoding::Mmr) || end < kSpareBytes) return false;
    CodedLines copy;
    std::string why;
    if (!BeginCode(copy.code, why) ||
        !AddCode(copy.code, coded.code.descriptor.Get(), 0, coded.code.size, why)) {
        return false;
    }
    auto stream = OpenFaxStream(copy.code, why);
    if (!stream) return false;
    copy.stream = std::move(*stream);
    copy.stream.coding = coding;
    copy.stream.width = coded.stream.width;
    return LastLineComesOf(copy, run, end - kSpareBytes);
}

// What the end-of-line codes tell against the lines that came; empty if nothing.
std::string FlawOfEols(CodedLines& coded) {
    const FaxCoding coding = coded.stream.coding;
    if (coding != FaxCoding::G3Eol && coding != FaxCoding::G3TwoD) return {};
    if (coded.codes.lines != coded.height)
        return "its end-of-line codes tell of " + std::to_string(coded.codes.lines) + " lines";
    if (coding != FaxCoding::G3Eol) return {};
    const uint32_t width = coded.stream.width;
    const uint32_t odd = CountOddLines(coded.stream, width, coded.height);
    if (odd == 0) return {};
    return std::to_string(odd) + (odd == 1 ? " of its lines doesn't" : " of its lines don't") +
           " end at " + std::to_string(width) + " pixels";
}

// Whether a run that ended so came to the end of code that has no closing codes. Padding is no code
// of Group 4, unless it is too short for one.
bool EndsAtPadding(const CodedLines& coded, int32_t failure) {
    if (coded.codes.closed) return false;
    return failure == TIFF_UNEXPECTED_END ||
           (coded.stream.coding == FaxCoding::G4 && failure == TIFF_BAD_CODE);
}

// What shows damage in a run over all lines, which ended with `failure`.
std::string FlawOfRun(CodedLines& coded, const Run& run, int32_t failure) {
    const bool closedT6 = coded.stream.coding == FaxCoding::G4 && coded.codes.closed;
    const int32_t due = closedT6 ? TIFF_UNEXPECTED_EOFB : TIFF_UNEXPECTED_END;
    const bool inOrder = failure == due || EndsAtPadding(coded, failure);
    const bool begun = run.lines > coded.height || EndsWithinLine(coded, run);
    if (inOrder && !begun) return FlawOfEols(coded);
    const bool bad = failure != TIFF_UNEXPECTED_END && failure != TIFF_UNEXPECTED_EOFB;
    std::string flaw = bad ? FailureMessage(failure) : "its code ends within a line";
    return flaw + " (behind " + std::to_string(coded.height) +
           (coded.height == 1 ? " line" : " lines") + ", which are taken for the whole page)";
}

bool CountLines(CodedLines& coded, std::string& why) {
    uint32_t linePixels = 0;
    uint32_t mostLines = 0;
    GetTiffSizeLimits(&linePixels, &mostLines);
    const uint64_t mostCounted = kMostCountedPixels / coded.stream.width + 1;
    Run run = MakeRun(coded);
    run.most = static_cast<uint32_t>(std::min<uint64_t>(uint64_t{mostLines} + 1, mostCounted));
    const int32_t failure = Decode(coded, 0, run);
    if (run.lines == mostCounted) {
        why = "more lines come of it than are counted; give --height";
        return false;
    }
    const bool stands = !EndsAtPadding(coded, failure) || LastLineStands(coded, run);
    coded.height = run.lines - (stands ? 0 : 1);
    if (coded.height == 0) {
        why = "not a line comes of it";
        if (failure == TIFF_BAD_CODE) why += ": " + FailureInWords(failure);
        return false;
    }
    if (!IsServedSize(coded.stream.width, coded.height, why)) return false;
    if (coded.flaw.empty()) coded.flaw = FlawOfRun(coded, run, failure);
    return true;
}

void TellUnread(CodedLines& coded, uint64_t bytes) {
    if (bytes == 0 || !coded.flaw.empty()) return;
    coded.flaw = std::to_string(bytes) + " bytes behind its end aren't read";
}

// Brings the code into the form that is decoded: without what stands behind the page, and with each
// byte's first bit highest.
bool SettleCode(CodedLines& coded, uint32_t fillOrder, std::string& why) {
    const FaxCoding coding = coded.stream.coding;
    const bool inBlocks = coding == FaxCoding::Mmr;
    CodeFile unpacked;
    uint64_t unread = 0;
    if (inBlocks) {
        uint64_t end = 0;
        if (!TakeFromBlocks(coded.code, unpacked, end, why)) return false;
        unread = BytesBehind(coded.code, end);
    }
    CodeFile& code = inBlocks ? unpacked : coded.code;
    if (fillOrder == TIFF_FILL_LSB_FIRST && !MirrorCode(code, why)) return false;
    if (!FindPageCodes(code, coding, coded.codes, why)) return false;
    if (coded.codes.closed) unread += BytesBehind(code, (coded.codes.closedBit + 7) / 8);
    TellUnread(coded, unread);
    if (!CutToPage(code, coding, coded.codes, why)) return false;
    coded.codeBytes = code.size;
    return (!inBlocks || PutIntoBlocks(code, coded.code, why)) &&
           Pad(coded, coded.codeBytes, kUsualPadding, why);
}

LinesEnd PushCoded(CodedLines& coded, const LineTaker& taker) {
    Run run = MakeRun(coded);
    run.taker = &taker;
    const int32_t failure = Decode(coded, coded.height, run);
    if (!run.refused) {
        if (failure != TIFF_UNEXPECTED_END || LastLineStands(coded, run)) {
            GiveLast(run);
        } else {
            --run.lines;
        }
    }
    LinesEnd end;
    const bool allCame = failure == TIFF_SUCCESS && run.lines == coded.height;
    end.whole = !run.refused && allCame && coded.flaw.empty();
    end.reason = allCame ? coded.flaw : FailureMessage(failure);
    if (!allCame && !coded.flaw.empty()) end.reason += " (" + coded.flaw + ")";
    return end;
}

}  // namespace

std::optional<RasterPage> OpenCodedPage(CodedPage page, PageInfo info, std::string& why) {
    if (!IsServedSize(page.width, page.height == 0 ? 1 : page.height, why)) return {};
    if (page.code.size == 0) {
        why = "it holds no code";
        return {};
    }
    auto stream = OpenFaxStream(page.code, why);
    if (!stream) return {};
    auto coded = std::make_unique<CodedLines>();
    coded->stream = std::move(*stream);
    coded->stream.coding = page.coding;
    coded->stream.width = page.width;
    coded->height = page.height;
    coded->flaw = std::move(page.doubt);
    coded->code = std::move(page.code);
    if (!SettleCode(*coded, page.fillOrder, why)) return {};
    if (coded->height == 0 && !CountLines(*coded, why)) return {};

    info.picture.width = page.width;
    info.picture.height = coded->height;
    info.picture.type = kBilevel;
    info.whiteIsZero = true;
    return MakePushingPage<PushCoded>(std::move(info), std::move(coded));
}

}  // namespace vellim::tool
