#include "codec/fax_2d_row.h"

#include <bit>

#include "codec/fax_modes.h"
#include "codec/run_reader.h"
#include "codec/vertical_chain.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// Zero bits in front of the first 1 bit, which tell a mode.
enum ModeZeros : uint32_t {
    kZerosVertical0 = 0,
    kZerosVertical1 = 1,
    kZerosHorizontal = 2,
    kZerosPass = 3,
    kZerosVertical2 = 4,
    kZerosVertical3 = 5,
    kZerosExtension = 6,
    kZerosEndOfLine = 8,
};

constexpr bool HasSign(uint32_t zeros) {
    return zeros == kZerosVertical1 || zeros == kZerosVertical2 || zeros == kZerosVertical3;
}

// A 1 bit that ends the search for the first one: no mode has more than eight zeros in front.
constexpr uint64_t kBehindEightZeros = 1ULL << 55;

// Those of the window's first bits that are in hand, the others zero.
uint64_t InHand(uint64_t window, uint32_t valid) {
    return valid == 0 ? 0 : window >> (64 - valid) << (64 - valid);
}

// Steps the look-ahead over the modes between its position and `to`, which quick reading went over.
// They are vertical and pass modes alone: a horizontal mode's runs leave the look-ahead known.
void CatchUp(LookAhead& lookAhead, const BitReader& reader, int64_t to) {
    uint32_t valid = lookAhead.valid;
    int64_t position = lookAhead.position;
    while (position < to) {
        uint64_t window = reader.LookBack(position);
        if (InHand(window, valid) == 0) valid = 8;
        const auto zeros = static_cast<uint32_t>(std::countl_zero(window | kBehindEightZeros));
        valid -= zeros + 1;
        window <<= zeros + 1;
        position += zeros + 1;
        if (HasSign(zeros)) {
            if (InHand(window, valid) == 0) valid = 8;
            valid -= 1;
            position += 1;
        }
    }
    lookAhead = {position, valid};
}

// Behind a run the look-ahead is known: its last lookup brought in eight bits, and eight more for a
// code longer than that.
uint32_t ValidBehindRun(const Run& run) {
    return (run.codeBits <= 8 ? 8U : 16U) - run.codeBits;
}

// What the modes do to a line.
struct Walk {
    int32_t* changes;
    const int32_t* reference;
    uint32_t count;
    uint32_t b1;
    int32_t a0;
    int32_t width;

    Walk(const FaxRow& row, const ChangeLists& lists)
        : changes(lists.Current()),
          reference(lists.Reference()),
          count(row.count),
          b1(row.b1),
          a0(row.a0),
          width(row.width) {}

    void PutBack(FaxRow& row) const {
        row.count = count;
        row.b1 = b1;
        row.a0 = a0;
    }

    [[nodiscard]] RunColor Color() const { return static_cast<RunColor>(count & 1U); }
    [[nodiscard]] bool LineGoesOn() const { return a0 < width; }

    void Store() { changes[count++] = a0; }

    void Vertical(int32_t offset) {
        a0 = reference[b1] + offset;
        Store();
        b1 += 1;
        FindB1(offset);
    }

    // Up to four vertical modes at once. Gives the bits of their codes.
    uint32_t Chain(const VerticalChain& chain) {
        const uint32_t stops = FollowChain(chain, reference + b1, changes + count, width);
        uint32_t last = chain.count - 1U;
        const bool stopsWithin = (stops & ((2U << last) - 1)) != 0;
        if (stopsWithin) last = static_cast<uint32_t>(std::countr_zero(stops));
        count += last + 1;
        b1 += last + 1;
        a0 = changes[count - 1];
        if (stopsWithin) FindB1(chain.offsets[last]);
        return chain.bits[last];
    }

    // The position moves, but isn't a change.
    void Pass() {
        a0 = reference[b1 + 1];
        b1 += 2;
    }

    void HorizontalRun(const Run& run) {
        a0 += run.length;
        Store();
    }

    // The reference list's closing entries, at the width or beyond, end this.
    void MoveOn() {
        if (!LineGoesOn()) return;
        while (reference[b1] <= a0)
            b1 += 2;
    }

  private:
    void FindB1(int32_t offset) {
        if (offset > 0) {
            if (BeforeB1() > a0) {
                b1 -= 2;
            } else {
                MoveOn();
            }
        } else if (offset < 0) {
            while (BeforeB1() > a0)
                b1 -= 2;
        }
    }

    // The change of b1's colour before b1; left of everything where there is none.
    [[nodiscard]] int32_t BeforeB1() const { return reference[int64_t{b1} - 2]; }
};

// What quick reading wants in hand: a chain of vertical modes, and the eight bits that careful
// reading may bring in behind any of them. The runs of a horizontal mode see to their own.
constexpr uint32_t kQuickModeBits = kChainBits + 8;

// Both runs of a horizontal mode, whose code has been used up. False when the room ends in them.
inline bool ReadTwoRunsQuickly(BitReader& reader, RunColor color, Run& first, Run& second) {
    if (!reader.TopUp(kQuickRunBits)) return false;
    const RunPair pair = LookUpRunPair(reader.Window(), color);
    if (pair.bits != 0) {
        reader.Consume(pair.bits);
        first.length = pair.first;
        second.length = pair.second;
        second.codeBits = pair.secondBits;
        return true;
    }
    return ReadRunQuickly(reader, color, first) && reader.TopUp(kQuickRunBits) &&
           ReadRunQuickly(reader, OtherColor(color), second);
}

// A horizontal mode. False, with nothing taken, when the room ends in it.
inline bool TakeHorizontal(Walk& walk, BitReader& reader, LookAhead& lookAhead) {
    const BitReader atMode = reader;
    reader.Consume(3);
    Run first;
    Run second;
    if (!ReadTwoRunsQuickly(reader, walk.Color(), first, second)) {
        reader = atMode;
        return false;
    }
    walk.HorizontalRun(first);
    walk.HorizontalRun(second);
    walk.MoveOn();
    lookAhead = {reader.Position(), ValidBehindRun(second)};
    return true;
}

// Reads modes to the line's end (true), or up to one that needs care (false): where the code
// buffer's room or the list's ends, or behind six zero bits.
bool ReadModesQuickly(FaxRow& row, const ChangeLists& lists, BitReader& sharedReader,
                      LookAhead& lookAhead) {
    Walk walk(row, lists);
    BitReader reader = sharedReader;
    const uint32_t lastCount = lists.Capacity() - kChainModes;
    bool lineDone = false;
    do {
        if (!reader.TopUp(kQuickModeBits)) break;
        if (walk.count > lastCount) break;
        const VerticalChain& chain = kVerticalChains[reader.Peek(kChainBits)];
        if (chain.count != 0) {
            reader.Consume(walk.Chain(chain));
            lineDone = !walk.LineGoesOn();
            continue;
        }
        if (reader.Peek(3) == 1) {
            if (!TakeHorizontal(walk, reader, lookAhead)) break;
        } else if (reader.Peek(4) == 1) {
            reader.Consume(4);
            walk.Pass();
            row.endsWithPass = !walk.LineGoesOn();
        } else {
            break;
        }
        lineDone = !walk.LineGoesOn();
    } while (!lineDone);
    walk.PutBack(row);
    sharedReader = reader;
    return lineDone;
}

// T.6 section 2.4.1.1: eight zero bits have been seen; the rest of two end-of-line codes must be
// there.
uint32_t ReadClosingCode(BitReader& reader) {
    reader.Consume(8);
    for (const uint32_t expected : {0x10U, 0x01U}) {
        if (const uint32_t failure = reader.Ensure(8); failure != 0) return failure;
        if (reader.Peek(8) != expected) return TIFF_BAD_CODE;
        reader.Consume(8);
    }
    return TIFF_UNEXPECTED_EOFB;
}

// The next bits of modes, with the look-ahead followed to the bit.
struct ModeBits {
    BitReader& reader;
    uint32_t valid;  // in hand, as LookAhead has it

    // Brings eight bits in when those in hand are all zeros. 0, or the failure of the reader's
    // fill.
    uint32_t BringIn() {
        if (InHand(reader.Window(), valid) != 0) return 0;
        valid = 8;
        return reader.Ensure(8);
    }

    // Up to eight zeros; bits that aren't in hand count as zeros.
    [[nodiscard]] uint32_t LeadingZeros() const {
        return static_cast<uint32_t>(
            std::countl_zero(InHand(reader.Window(), valid) | kBehindEightZeros));
    }

    void Use(uint32_t bits) {
        reader.Consume(bits);
        valid -= bits;
    }
};

uint32_t ReadSignedVertical(Walk& walk, ModeBits& bits, uint32_t zeros) {
    bits.Use(zeros + 1);
    if (const uint32_t failure = bits.BringIn(); failure != 0) return failure;
    const bool right = bits.reader.Peek(1) != 0;
    bits.Use(1);
    const int32_t offset = zeros == kZerosVertical1 ? 1 : static_cast<int32_t>(zeros) - 2;
    walk.Vertical(right ? offset : -offset);
    return 0;
}

uint32_t ReadHorizontal(Walk& walk, ModeBits& bits) {
    bits.Use(3);
    Run run;
    for (int i = 0; i < 2; ++i) {
        const uint32_t failure = ReadRunCarefully(bits.reader, walk.Color(), run);
        if (failure != 0) return failure;
        walk.HorizontalRun(run);
    }
    walk.MoveOn();
    bits.valid = ValidBehindRun(run);
    return 0;
}

// What six zero bits and more mean, which is where the dialects differ.
template <FaxDialect kDialect>
uint32_t ReadRareMode(Walk& walk, ModeBits& bits, uint32_t zeros, bool& hasEndOfLine) {
    if (zeros == kZerosEndOfLine && kDialect == FaxDialect::Group4)
        return ReadClosingCode(bits.reader);
    if (zeros == kZerosEndOfLine) {
        // The line's rest takes the colour that is due; the zero bits stay for the caller.
        walk.a0 = walk.width;
        walk.Store();
        hasEndOfLine = true;
        return 0;
    }
    if (zeros != kZerosExtension || kDialect != FaxDialect::Group3) return TIFF_BAD_CODE;
    // The extension's own three bits are read as the next mode.
    bits.Use(kZerosExtension + 1);
    return 0;
}

// One mode, bit by bit as far as the stream goes.
template <FaxDialect kDialect>
uint32_t ReadModeCarefully(FaxRow& row, const ChangeLists& lists, BitReader& reader,
                           LookAhead& lookAhead) {
    Walk walk(row, lists);
    if (walk.count + 2 > lists.Capacity()) return TIFF_BAD_CODE;

    ModeBits bits{reader, lookAhead.valid};
    // What the look-ahead has in hand, the reader may still have to load.
    uint32_t failure = reader.Ensure(bits.valid);
    if (failure == 0) failure = bits.BringIn();
    if (failure != 0) return failure;
    switch (const uint32_t zeros = bits.LeadingZeros()) {
        case kZerosVertical0:
            bits.Use(1);
            walk.Vertical(0);
            break;
        case kZerosVertical1:
        case kZerosVertical2:
        case kZerosVertical3:
            failure = ReadSignedVertical(walk, bits, zeros);
            break;
        case kZerosHorizontal:
            failure = ReadHorizontal(walk, bits);
            break;
        case kZerosPass:
            bits.Use(4);
            walk.Pass();
            row.endsWithPass = !walk.LineGoesOn();
            break;
        default:
            failure = ReadRareMode<kDialect>(walk, bits, zeros, row.hasEndOfLine);
    }
    walk.PutBack(row);
    lookAhead = {reader.Position(), bits.valid};
    return failure;
}

}  // namespace

template <FaxDialect kDialect>
uint32_t DecodeFaxRow(FaxRow& row, const ChangeLists& lists, BitReader& reader,
                      LookAhead& lookAhead) {
    do {
        // Quick reading looks back for the look-ahead, so its bits must be in this buffer.
        if (reader.HasRoom() && reader.Position() >= 0 &&
            ReadModesQuickly(row, lists, reader, lookAhead)) {
            return 0;
        }
        CatchUp(lookAhead, reader, reader.Position());
        const uint32_t failure = ReadModeCarefully<kDialect>(row, lists, reader, lookAhead);
        if (failure != 0) return failure;
    } while (row.a0 < row.width);
    return 0;
}

template uint32_t DecodeFaxRow<FaxDialect::Group3>(FaxRow&, const ChangeLists&, BitReader&,
                                                   LookAhead&);
template uint32_t DecodeFaxRow<FaxDialect::Group4>(FaxRow&, const ChangeLists&, BitReader&,
                                                   LookAhead&);
template uint32_t DecodeFaxRow<FaxDialect::Mmr>(FaxRow&, const ChangeLists&, BitReader&,
                                                LookAhead&);

}  // namespace vellim
