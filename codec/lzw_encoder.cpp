// LZW (TIFF 6.0 section 13), each strip by itself, lines with or without horizontal differencing
// (section 14).
//
// Codes are gathered for a generation, the time between two clear codes or strip ends, and written
// when it is over. A code stands in the list at the number of the table entry made with it, and so
// its place says how wide it is written. Strings go on from one line to the next.
//
// A generation ends when the table is full, at the strip's end, and when it has stopped paying: the
// last line's new codes came to more bits than the line itself has. What was gathered when the
// lines stop coming in the middle of a strip is dropped, since the strip can't be read anyway.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <span>

#include "codec/differencing.h"
#include "codec/end_of_run.h"
#include "codec/engines.h"
#include "codec/lzw_code_writer.h"
#include "codec/lzw_dictionary.h"
#include "platform/guards.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr uint32_t kFullTable = kLzwTableSize - 1;
constexpr uint32_t kLinesToProve = 3;  // that a generation is given before it can be cut short
constexpr uint32_t kZerosBehindEnd = 3;
constexpr uint32_t kNoString = ~0U;

// The first places in the list whose codes are a bit wider, and the width in front of them.
struct WidthLimit {
    uint32_t index;
    unsigned width;
};
constexpr std::array<WidthLimit, 4> kWidthLimits = {
    {{512, 9}, {1024, 10}, {2048, 11}, {kLzwTableSize + kZerosBehindEnd, 12}}};

constexpr std::ptrdiff_t kShortestRun = 4;
constexpr std::ptrdiff_t kWordBytes = sizeof(uint64_t);
constexpr std::ptrdiff_t kFarthestLook = 4096;  // or each string would look through a long line

bool IsRunOfFour(const uint8_t* at) {
    uint32_t bytes = 0;
    std::memcpy(&bytes, at, sizeof(bytes));
    return bytes == std::rotl(bytes, 8);
}

// The end of the bytes from `at` on that are equal, as far as it is looked for.
const uint8_t* EndOfRepeats(const uint8_t* at, const uint8_t* lineEnd) {
    const uint8_t byte = *at;
    const uint8_t* const end = at + std::min(lineEnd - at, kFarthestLook);
    const uint64_t pattern = byte * uint64_t{0x0101010101010101};
    for (; end - at >= kWordBytes; at += sizeof(pattern)) {
        uint64_t bytes = 0;
        std::memcpy(&bytes, at, sizeof(bytes));
        if (bytes != pattern) break;
    }
    return std::find_if(at, end, [byte](uint8_t other) { return other != byte; });
}

// What a run keeps in its block.
struct Tables {
    LzwDictionary dictionary;
    std::array<uint16_t, kLzwTableSize + kZerosBehindEnd> codes;
};

class Encoder {
  public:
    Encoder(CodecState& state, Tables& tables)
        : state_(state),
          writer_(state),
          dictionary_(tables.dictionary),
          codes_(tables.codes),
          rowBits_(static_cast<uint16_t>(state.RowBytes * 8)) {}

    // Codes all lines, the first of which is in the line buffer. 3 or a failure code.
    uint32_t EncodeLines() {
        BeginGeneration();
        BeginLine();
        for (;;) {
            uint32_t result = CodeLine();
            if (result == TIFF_SUCCESS && state_.StripEnded != 0) result = CloseStrip();
            if (result == TIFF_SUCCESS) result = FillDataBuffer(&state_);
            if (result != TIFF_SUCCESS) return result;
            BeginLine();
            if (HasStoppedPaying()) {
                AppendString();
                Append(kLzwClear);
                result = WriteGeneration();
                if (result != TIFF_SUCCESS) return result;
            }
            checkedEntry_ = nextEntry_;
        }
    }

  private:
    void BeginGeneration() {
        dictionary_.Clear();
        nextEntry_ = kLzwFirstFree;
        checkedEntry_ = kLzwFirstFree;
        startLine_ = state_.LineNumber;
    }

    void BeginLine() {
        if (state_.Key == TIFF_KEY_LZW_DIFFERENCING) ApplyDifferencing(state_);
        at_ = state_.LineBuffer;
        end_ = at_ + state_.RowBytes;
    }

    uint32_t CodeLine() {
        while (FillTable()) {
            Append(kLzwClear);
            const uint32_t result = WriteGeneration();
            if (result != TIFF_SUCCESS) return result;
        }
        return TIFF_SUCCESS;
    }

    // Goes on through the line, up to its end or, giving true, to where the table is full.
    bool FillTable() {
        const uint8_t* at = at_;
        const uint8_t* const end = end_;
        uint32_t next = nextEntry_;
        uint32_t matched = string_ == kNoString ? BeginString(at, end, next) : string_;
        while (at != end && next != kFullTable) {
            uint32_t& longer = dictionary_.Find(matched, *at);
            if (longer != 0) {
                matched = LzwDictionary::CodeIn(longer);
                ++at;
                continue;
            }
            dictionary_.Add(longer, matched, *at, next);
            codes_[next++] = static_cast<uint16_t>(matched);
            matched = BeginString(at, end, next);
        }
        nextEntry_ = next;
        string_ = matched;
        at_ = at;
        return next == kFullTable;
    }

    // Begins a string at `at` and moves behind what is matched of it. Runs are matched as a whole;
    // in a full table a string has its first byte alone.
    uint32_t BeginString(const uint8_t*& at, const uint8_t* end, uint32_t& next) {
        if (end - at >= kShortestRun && IsRunOfFour(at) && next != kFullTable)
            return TakeRun(at, end, next);
        return *at++;
    }

    // A run as so many strings: the longest that there is, which the next code makes longer by one,
    // then that, until one takes what is left.
    uint32_t TakeRun(const uint8_t*& at, const uint8_t* end, uint32_t& next) {
        const uint8_t byte = *at;
        const uint8_t* const runEnd = EndOfRepeats(at, end);
        for (;;) {
            const uint32_t longest = dictionary_.LongestRun(byte);
            const auto left = static_cast<size_t>(runEnd - at);
            if (left <= longest || !dictionary_.CanRecordMore(byte)) {
                const auto length = static_cast<uint32_t>(std::min<size_t>(left, longest));
                at += length;
                return dictionary_.RunCode(byte, length);
            }
            const uint32_t matched = dictionary_.RunCode(byte, longest);
            uint32_t& longer = dictionary_.Find(matched, byte);
            const bool isNew = longer == 0;
            if (isNew) {
                dictionary_.Add(longer, matched, byte, next);
                codes_[next++] = static_cast<uint16_t>(matched);
                at += longest;
            }
            dictionary_.RecordLongerRun(byte, LzwDictionary::CodeIn(longer));
            if (next == kFullTable) return *at++;
        }
    }

    // Whether the last line's codes came to more bits than the line has, in a generation that has
    // been given its chance. The line's bits are known modulo 65,536 only, so that lines of 8,192
    // bytes and more are cleared earlier.
    [[nodiscard]] bool HasStoppedPaying() const {
        const auto width = static_cast<uint32_t>(std::bit_width(nextEntry_));
        return (nextEntry_ - checkedEntry_) * width > rowBits_ &&
               state_.LineNumber - startLine_ >= kLinesToProve;
    }

    void Append(uint32_t code) { codes_[nextEntry_++] = static_cast<uint16_t>(code); }

    void AppendString() {
        if (string_ != kNoString) Append(string_);
        string_ = kNoString;
    }

    // The end code is written with three zero codes behind it, so that a reader that looks ahead
    // stays inside the strip.
    uint32_t CloseStrip() {
        AppendString();
        Append(kLzwEnd);
        for (uint32_t i = 0; i < kZerosBehindEnd; ++i)
            Append(0);
        uint32_t result = WriteGeneration();
        if (result == TIFF_SUCCESS) result = writer_.Close();
        needsClear_ = true;
        return result;
    }

    // Writes the list, up to nextEntry_, and begins the next generation.
    uint32_t WriteGeneration() {
        uint32_t from = kLzwFirstFree;
        if (needsClear_) codes_[--from] = kLzwClear;
        needsClear_ = false;
        for (const WidthLimit& limit : kWidthLimits) {
            const uint32_t to = std::min(limit.index, nextEntry_);
            if (from >= to) break;
            const uint32_t result =
                writer_.Write(std::span(codes_).subspan(from, to - from), limit.width);
            if (result != TIFF_SUCCESS) return result;
            from = to;
        }
        BeginGeneration();
        return TIFF_SUCCESS;
    }

    CodecState& state_;
    LzwCodeWriter writer_;
    LzwDictionary& dictionary_;
    std::array<uint16_t, kLzwTableSize + kZerosBehindEnd>& codes_;
    const uint16_t rowBits_;
    bool needsClear_ = true;       // the strip has no code yet
    uint32_t string_ = kNoString;  // the code of what is matched so far
    uint32_t nextEntry_ = 0;       // the next table entry, and the next place in the list
    uint32_t checkedEntry_ = 0;    // that was the next one when the line began
    uint32_t startLine_ = 0;       // LineNumber when the generation began
    const uint8_t* at_ = nullptr;  // the line's next byte
    const uint8_t* end_ = nullptr;
};

}  // namespace

uint32_t EncodeLzw(CodecState& state) {
    const uint32_t result = InitEncodeBuffers(&state);
    if (result != TIFF_SUCCESS) return EndOfRun(result);
    if (state.RowBytes == 0) return TIFF_BAD_CODE;

    const OwnedBlock block(GlobalAlloc(GHND, sizeof(Tables)));
    const LockedBlock memory(block.Get());
    if (!memory) return TIFF_NO_MEMORY;
    return EndOfRun(Encoder(state, *memory.As<Tables>()).EncodeLines());
}

}  // namespace vellim
