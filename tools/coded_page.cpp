// The lines of a page of fax code, pushed out of the library's decoder.
//
// The library decodes a page of a known height, and with a height of 0 to the end of the data. The
// latter is how lines are counted that nobody states. Beside the lines of the page it gives those
// that a decoder makes of the closing codes: white ones, where an end-of-line code stands for a
// line. And of code that was cut, what is put behind it can complete a line that never was; so the
// last line before such an end must come whatever these bytes are.
#include "coded_page.h"

#include <algorithm>

#include "closing_codes.h"
#include "fax_stream.h"
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
    uint64_t codeBytes = 0;  // without the padding
    uint32_t closingCodes = 0;
    uint32_t height = 0;
    int32_t damage = TIFF_SUCCESS;  // why the lines that were counted ended, if not in order
};

constexpr uint32_t kUsualPadding = 0;

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

bool Pad(CodedLines& coded, uint32_t way, std::string& why) {
    CodeFile& code = coded.code;
    const std::string bytes = PaddingOf(coded.stream.coding, coded.stream.fillOrder, way);
    return CutCode(code, coded.codeBytes, why) && AddCode(code, bytes.data(), bytes.size(), why);
}

bool ComesAgain(CodedLines& coded, const Run& run, uint32_t way) {
    std::string why;
    if (!Pad(coded, way, why)) return false;
    Run other = MakeRun(coded);
    other.most = run.lines;
    Decode(coded, 0, other);
    return other.lines == run.lines && other.last == run.last;
}

// Whether the last line before the end of the data comes of the code alone, and not also of what is
// put behind it.
bool LastLineStands(CodedLines& coded, const Run& run) {
    if (run.lines == 0 || coded.closingCodes != 0) return true;
    bool stands = true;
    for (uint32_t way = kUsualPadding + 1; stands && way < kPaddings; ++way)
        stands = ComesAgain(coded, run, way);
    std::string why;
    return Pad(coded, kUsualPadding, why) && stands;
}

// White lines that come of the closing codes. In two-dimensional Group 3 the first code ends the
// last line, and each of the others a white one, that of the padding too. MMR lines follow each
// other without such codes; the first one behind a two-dimensional line is a white line, and its
// tag makes the others nothing. The code behind the first line is no closing code and gives
// nothing.
uint32_t LinesOfClosing(const CodedLines& coded, uint32_t lines) {
    switch (coded.stream.coding) {
        case FaxCoding::G3TwoD:
            return coded.closingCodes;
        case FaxCoding::Mmr:
            return coded.closingCodes != 0 && lines > 1 ? 1 : 0;
        default:
            return 0;
    }
}

bool CountLines(CodedLines& coded, std::string& why) {
    uint32_t linePixels = 0;
    uint32_t mostLines = 0;
    GetTiffSizeLimits(&linePixels, &mostLines);
    Run run = MakeRun(coded);
    run.most = mostLines + LinesOfClosing(coded, mostLines) + 1;
    const int32_t failure = Decode(coded, 0, run);
    uint32_t notLines = 0;
    if (failure == TIFF_UNEXPECTED_END) {
        notLines = LastLineStands(coded, run) ? LinesOfClosing(coded, run.lines) : 1;
    } else if (failure != TIFF_UNEXPECTED_EOFB) {
        coded.damage = failure;
    }
    coded.height = run.lines - std::min(run.lines, notLines);
    if (coded.height != 0) return IsServedSize(coded.stream.width, coded.height, why);
    why = "not a line comes of it";
    if (coded.damage != TIFF_SUCCESS) why += ": " + FailureInWords(coded.damage);
    return false;
}

// Leaves out the code from bit `firstBit` of the byte at `offset` on.
bool CutAtBit(CodedLines& coded, uint64_t offset, size_t firstBit, std::string& why) {
    CodeFile& code = coded.code;
    const bool mirrored = coded.stream.fillOrder == TIFF_FILL_LSB_FIRST;
    const auto kept = static_cast<uint8_t>(0xFF00U >> firstBit % 8);
    std::vector<uint8_t> byte = ReadCode(code, offset + firstBit / 8, 1);
    if (byte.empty()) return true;
    byte[0] &= mirrored ? Mirrored(kept) : kept;
    return CutCode(code, offset + firstBit / 8, why) && AddCode(code, byte.data(), 1, why);
}

// Finds the closing codes. Behind lines that begin on byte boundaries without such codes they would
// be read as lines, so there they are left out.
bool SettleEnd(CodedLines& coded, std::string& why) {
    CodeFile& code = coded.code;
    const FaxCoding coding = coded.stream.coding;
    std::vector<uint8_t> tail;
    if (coding == FaxCoding::Mmr && !SettleMmrBlocks(code, tail, kClosingBytes, why)) return false;
    const uint64_t tailAt = code.size - std::min<uint64_t>(code.size, kClosingBytes);
    if (coding != FaxCoding::Mmr) tail = ReadCode(code, tailAt, kClosingBytes);
    if (coding != FaxCoding::Mmr && coded.stream.fillOrder == TIFF_FILL_LSB_FIRST)
        std::transform(tail.begin(), tail.end(), tail.begin(), Mirrored);

    const bool tagged = coding == FaxCoding::Mmr || coding == FaxCoding::G3TwoD;
    const ClosingCodes found = FindClosingCodes(tail, tagged ? EolTag::Bit : EolTag::None);
    // Between lines without such codes, fill can make two of them look like one.
    const uint32_t fewest = coding == FaxCoding::G3 ? 2 : 1;
    if (coding != FaxCoding::G4 && found.count >= fewest) coded.closingCodes = found.count;
    if (coding == FaxCoding::G3 && coded.closingCodes != 0 &&
        !CutAtBit(coded, tailAt, found.firstBit, why)) {
        return false;
    }
    coded.codeBytes = code.size;
    return Pad(coded, kUsualPadding, why);
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
    const int32_t reason = failure != TIFF_SUCCESS ? failure : coded.damage;
    end.whole = !run.refused && reason == TIFF_SUCCESS && run.lines == coded.height;
    if (!end.whole) end.reason = FailureMessage(reason);
    if (coded.damage != TIFF_SUCCESS) {
        end.reason += " (behind " + std::to_string(coded.height) +
                      (coded.height == 1 ? " line" : " lines") +
                      ", which are taken for the whole page)";
    }
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
    coded->stream.fillOrder = page.fillOrder;
    coded->stream.width = page.width;
    coded->height = page.height;
    coded->code = std::move(page.code);
    if (!SettleEnd(*coded, why)) return {};
    if (coded->height == 0 && !CountLines(*coded, why)) return {};

    info.picture.width = page.width;
    info.picture.height = coded->height;
    info.picture.type = kBilevel;
    info.whiteIsZero = true;
    return MakePushingPage<PushCoded>(std::move(info), std::move(coded));
}

}  // namespace vellim::tool
