#include "support/reference_ccitt.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "codec/fax_codes.h"
#include "vellim/failures.h"

namespace vellim::test {
namespace {

bool PixelAt(const Bytes& row, int32_t x) {
    return (row[static_cast<size_t>(x) / 8] >> (7 - x % 8) & 1) != 0;
}

void SetPixel(Bytes& row, int32_t x) {
    uint8_t& byte = row[static_cast<size_t>(x) / 8];
    byte = static_cast<uint8_t>(byte | 0x80 >> (x % 8));
}

// ---- Encoding. ----

struct BitWriter {
    void Put(std::string_view bits) {
        for (const char bit : bits) {
            if (count_ % 8 == 0) bytes_.push_back(0);
            if (bit == '1')
                bytes_.back() = static_cast<uint8_t>(bytes_.back() | 0x80 >> (count_ % 8));
            ++count_;
        }
    }
    void AlignSoThat(size_t bits) {
        while ((count_ + bits) % 8 != 0)
            Put("0");
    }
    Bytes Take() { return std::move(bytes_); }

    Bytes bytes_;
    size_t count_ = 0;
};

struct Code {
    int32_t run;
    std::string_view text;
    uint32_t bits, length;
    bool makeUp;
};

const std::vector<Code>& CodesOf(bool black) {
    const auto make = [](const auto& terminating, const auto& makeUp) {
        std::vector<Code> codes;
        const auto append = [&](const auto& table, bool isMakeUp) {
            for (const auto& [run, text] : table) {
                const auto bits = std::stoul(std::string(text), nullptr, 2);
                codes.push_back({run, text, static_cast<uint32_t>(bits),
                                 static_cast<uint32_t>(text.size()), isMakeUp});
            }
        };
        append(terminating, false);
        append(makeUp, true);
        append(kExtendedMakeUpCodes, true);
        return codes;
    };
    static const auto whites = make(kWhiteTerminatingCodes, kWhiteMakeUpCodes);
    static const auto blacks = make(kBlackTerminatingCodes, kBlackMakeUpCodes);
    return black ? blacks : whites;
}

void PutRun(BitWriter& out, bool black, int32_t run) {
    const auto put = [&](int32_t part, bool makeUp) {
        for (const Code& code : CodesOf(black))
            if (code.run == part && code.makeUp == makeUp) return out.Put(code.text);
    };
    for (; run > 2560; run -= 2560)
        put(2560, true);
    if (run >= 64) put(run / 64 * 64, true);
    put(run % 64, false);
}

// First pixel from `from` on that isn't of `color`, or the width.
int32_t EndOfRunAt(const Bytes& row, int32_t from, int32_t width, bool color) {
    while (from < width && PixelAt(row, from) == color)
        ++from;
    return from;
}

void PutRow1D(BitWriter& out, const Bytes& row, int32_t width) {
    bool black = false;
    int32_t x = 0;
    do {
        const int32_t end = EndOfRunAt(row, x, width, black);
        PutRun(out, black, end - x);
        x = end;
        black = !black;
    } while (x < width);
}

void PutRow2D(BitWriter& out, const Bytes& row, const Bytes& above, int32_t width) {
    int32_t a0 = -1;
    bool black = false;
    while (a0 < width) {
        const int32_t from = std::max(a0, 0);
        const int32_t a1 = EndOfRunAt(row, from, width, black);
        int32_t b1 = a0 + 1;
        const auto pixelAbove = [&](int32_t x) { return x >= 0 && PixelAt(above, x); };
        while (b1 < width && !(pixelAbove(b1) != black && pixelAbove(b1 - 1) == black))
            ++b1;
        const int32_t b2 = b1 < width ? EndOfRunAt(above, b1, width, !black) : width;
        if (b2 < a1) {
            out.Put("0001");
            a0 = b2;
        } else if (std::abs(a1 - b1) <= 3) {
            constexpr std::string_view codes[] = {"0000010", "000010", "010",    "1",
                                                  "011",     "000011", "0000011"};
            out.Put(codes[a1 - b1 + 3]);
            a0 = a1;
            black = !black;
        } else {
            const int32_t a2 = EndOfRunAt(row, a1, width, !black);
            out.Put("001");
            PutRun(out, black, a1 - from);
            PutRun(out, !black, a2 - a1);
            a0 = a2;
        }
    }
}

// ---- Decoding. ----

struct Failure {
    uint32_t code;
};

// A window of eight bits, and the rest of the byte last read behind it.
struct WindowReader {
    void Seek(size_t offset) {
        next_ = offset;
        valid_ = lastBits_ = window_ = 0;
    }
    void TopUp() {
        while (valid_ < 8) {
            if (lastBits_ == 0) TakeByte();
            MoveBit();
        }
    }
    void Drop(int bits) {
        window_ = (window_ << bits) & 0xFF;
        valid_ -= bits;
    }
    [[nodiscard]] int Window() const { return window_; }
    [[nodiscard]] int LeadingZeros() const {
        return std::countl_zero(static_cast<uint8_t>(window_));
    }
    // Up to and with the first 1 bit.
    void SkipThroughOne() {
        while (!TakeBit()) {
        }
    }
    bool TakeBit() {
        if (valid_ == 0 && lastBits_ == 0) TakeByte();
        if (valid_ == 0) MoveHeldBits();
        const bool bit = (window_ & 0x80) != 0;
        Drop(1);
        return bit;
    }
    // What is in hand then reaches to the end of the byte.
    void HoldWholeByte() {
        const int ahead = valid_ + lastBits_;
        if (ahead >= 8) {
            const int back = ahead / 8 * 8;
            lastBits_ = ahead % 8;
            valid_ = window_ = 0;
            next_ -= static_cast<size_t>(back / 8);
            last_ = stream_[next_ - 1];
        }
        MoveHeldBits();
    }
    void AlignToByte() {
        const size_t whole = static_cast<size_t>(valid_ + lastBits_) / 8;
        Seek(next_ - whole);
    }
    void TakeByte() {
        if (next_ >= stream_.size()) throw Failure{TIFF_UNEXPECTED_END};
        last_ = stream_[next_++];
        lastBits_ = 8;
    }
    void MoveHeldBits() {
        while (lastBits_ != 0 && valid_ < 8)
            MoveBit();
    }
    void MoveBit() {
        const int bit = last_ >> (lastBits_ - 1) & 1;
        window_ |= bit << (7 - valid_);
        ++valid_;
        --lastBits_;
    }

    const Bytes& stream_;
    size_t next_ = 0;
    int last_ = 0, lastBits_ = 0, window_ = 0, valid_ = 0;
};

struct RunRead {
    int32_t length = 0;
    bool zeroByte = false;
};

RunRead ReadRun(WindowReader& in, bool black) {
    RunRead run;
    for (;;) {
        in.TopUp();
        if (in.Window() == 0) {
            in.Drop(8);
            return {run.length, true};
        }
        const int first = in.Window();
        const Code* found = nullptr;
        for (const Code& code : CodesOf(black))
            if (code.length <= 8 && first >> (8 - code.length) == static_cast<int>(code.bits))
                found = &code;
        in.Drop(found != nullptr ? static_cast<int>(found->length) : 8);
        if (found == nullptr) {
            in.TopUp();
            const auto both = static_cast<uint32_t>(first << 8 | in.Window());
            for (const Code& code : CodesOf(black))
                if (code.length > 8 && both >> (16 - code.length) == code.bits) found = &code;
            if (found == nullptr) throw Failure{TIFF_BAD_CODE};  // the codes are complete
            in.Drop(static_cast<int>(found->length) - 8);
        }
        run.length += found->run;
        if (!found->makeUp) return run;
    }
}

// Changing elements as the rules speak of them.
using List = std::vector<int32_t>;

Bytes Paint(const List& list, int32_t width) {
    Bytes row(static_cast<size_t>(width + 7) / 8);
    const auto pixels = static_cast<int32_t>(row.size() * 8);
    for (size_t i = 0; i + 1 < list.size(); i += 2) {
        const int32_t end = list[i + 1] < list[i] ? list[i] + 1 : list[i + 1];
        for (int32_t x = std::max(list[i], 0); x < std::min(end, pixels); ++x)
            SetPixel(row, x);
    }
    return row;
}

struct Decoder {
    Outcome Run() {
        try {
            SeekStrip();
            if (run_.key == TIFF_KEY_CCITT_1D || run_.key == TIFF_KEY_CCITT_1D_BARE) Run1DNoEol();
            if (run_.key == TIFF_KEY_GROUP3_1D || run_.key == TIFF_KEY_GROUP3_1D_FILL) Run1DEol();
            if (run_.key == TIFF_KEY_GROUP4) RunGroup4();
            Run2DEol();
        } catch (const Failure& failure) {
            result_.code = failure.code == TIFF_LINE_STOP ? 0 : failure.code;
        }
        return std::move(result_);
    }

    void SeekStrip() {
        if (strip_ >= run_.offsets.size() || run_.offsets[strip_] > run_.stream.size())
            throw Failure{TIFF_IO_ERROR};
        in_.Seek(run_.offsets[strip_++]);
    }
    void Deliver() {
        result_.lines.push_back(Paint(changes_, width_));
        if (result_.lines.size() >= run_.height) throw Failure{TIFF_LINE_STOP};
        stripEnded_ = result_.lines.size() % run_.rowsPerStrip == 0;
        if (stripEnded_) SeekStrip();
    }
    [[nodiscard]] bool BlackIsDue() const { return changes_.size() % 2 != 0; }

    void Run1DNoEol() {
        for (;;) {
            changes_.clear();
            int32_t position = 0;
            do {
                position += ReadRun(in_, BlackIsDue()).length;
                changes_.push_back(position);
            } while (position < width_);
            Deliver();
            if (!stripEnded_) in_.AlignToByte();
        }
    }
    // True when a run closed by a terminating code was stored.
    bool RowOfRuns(bool skipEndOfLine) {
        changes_.clear();
        endOfLine_ = false;
        bool seen = false;
        int32_t position = 0;
        do {
            const RunRead run = ReadRun(in_, BlackIsDue());
            if (run.zeroByte) {
                if (skipEndOfLine) in_.SkipThroughOne();
                endOfLine_ = true;
                position = width_;
            } else {
                position += run.length;
                seen = true;
            }
            changes_.push_back(position);
        } while (position < width_);
        return seen;
    }
    void Run1DEol() {
        for (;;) {
            if (RowOfRuns(true)) Deliver();
        }
    }
    void BeginRow2D() {
        reference_ = changes_;
        if (passed_ < 0) passed_ = width_;
        reference_.insert(reference_.end(), {passed_, width_, width_});
        changes_.clear();
        passed_ = -1;
    }
    void Row2D() {
        const bool group3 = run_.key != TIFF_KEY_GROUP4 && run_.key != kMmr;
        BeginRow2D();
        endOfLine_ = false;
        int32_t a0 = 0;
        size_t b1 = 0;
        const auto store = [&](int32_t position) {
            a0 = position;
            changes_.push_back(position);
            passed_ = -1;
        };
        do {
            if (in_.Window() == 0) in_.TopUp();
            const int zeros = in_.LeadingZeros();
            if (zeros == 0) {
                in_.Drop(1);
                store(reference_.at(b1++));
            } else if (zeros == 1 || zeros == 4 || zeros == 5) {
                in_.Drop(zeros + 1);
                if (in_.Window() == 0) in_.TopUp();
                const bool right = (in_.Window() & 0x80) != 0;
                in_.Drop(1);
                const int offset = zeros == 1 ? 1 : zeros - 2;
                store(reference_.at(b1++) + (right ? offset : -offset));
                if (!right) {
                    while (b1 > 1 && reference_.at(b1 - 2) > a0)
                        b1 -= 2;
                } else if (b1 >= 2 && reference_.at(b1 - 2) > a0) {
                    b1 -= 2;
                } else {
                    while (a0 < width_ && reference_.at(b1) <= a0)
                        b1 += 2;
                }
            } else if (zeros == 3) {
                in_.Drop(4);
                a0 = passed_ = reference_.at(b1 + 1);
                b1 += 2;
            } else if (zeros == 2) {
                in_.Drop(3);
                const bool black = BlackIsDue();
                store(a0 + ReadRun(in_, black).length);
                store(a0 + ReadRun(in_, !black).length);
                while (a0 < width_ && reference_.at(b1) <= a0)
                    b1 += 2;
            } else if (zeros == 6 && group3) {
                in_.Drop(7);
            } else if (zeros == 8 && run_.key != TIFF_KEY_GROUP4) {
                endOfLine_ = true;
                store(width_);
            } else if (zeros == 8) {
                for (const int expected : {0x10, 0x01}) {
                    in_.Drop(8);
                    in_.TopUp();
                    if (in_.Window() != expected) throw Failure{TIFF_BAD_CODE};
                }
                throw Failure{TIFF_UNEXPECTED_EOFB};
            } else {
                throw Failure{TIFF_BAD_CODE};
            }
        } while (a0 < width_);
    }
    void BeginStripIfDue() {
        if (!std::exchange(stripEnded_, false)) return;
        changes_.clear();
        passed_ = -1;
    }
    void RunGroup4() {
        for (;;) {
            BeginStripIfDue();
            Row2D();
            Deliver();
        }
    }
    void Run2DEol() {
        const bool mmr = run_.key == kMmr;
        bool oneDimensional = true;
        bool seen = false;
        for (;;) {
            BeginStripIfDue();
            const auto before = std::pair(changes_, passed_);
            if (oneDimensional) {
                passed_ = -1;
                seen = RowOfRuns(false) || (seen && !mmr);
            } else {
                seen = true;
                Row2D();
            }
            if (endOfLine_ || !mmr) {
                in_.SkipThroughOne();
                oneDimensional = in_.TakeBit();
                in_.HoldWholeByte();
            }
            if (seen) Deliver();
            if (mmr && !seen) std::tie(changes_, passed_) = before;
        }
    }

    const EngineRun& run_;
    int32_t width_ = static_cast<int32_t>(run_.width);
    WindowReader in_{run_.stream};
    size_t strip_ = 0;
    bool stripEnded_ = false;
    List changes_{};
    List reference_{};
    bool endOfLine_ = false;
    int32_t passed_ = -1;  // position of a pass that ended a line, or -1
    Outcome result_{};
};

}  // namespace

Bytes InBlocks(const Bytes& code, size_t size) {
    Bytes stream;
    for (size_t at = 0, bytes = size; bytes == size; at += bytes) {
        bytes = std::min(size, code.size() - at);
        stream.insert(stream.end(),
                      {0xFE, 0x92, static_cast<uint8_t>(bytes >> 8), static_cast<uint8_t>(bytes)});
        stream.insert(stream.end(), code.data() + at, code.data() + at + bytes);
    }
    return stream;
}

Bytes CodeOfBlocks(const Bytes& stream) {
    Bytes buffer(std::min<size_t>(stream.size(), 65520)), code;
    size_t at = 0;
    while (at + 4 <= stream.size() && stream[at] == 0xFE && stream[at + 1] == 0x92) {
        size_t length = size_t{stream[at + 2]} * 256 + stream[at + 3];
        if (length == 0) length = buffer.size();
        if (length > buffer.size()) break;
        at += 4;
        const size_t there = std::min(length, stream.size() - at);
        std::copy_n(stream.data() + at, there, buffer.data());
        code.insert(code.end(), buffer.data(), buffer.data() + length);
        at += there;
    }
    return code;
}

Picture RandomPicture(uint32_t seed, int32_t width, int32_t height, double meanRun) {
    std::mt19937 random(seed);
    std::exponential_distribution<double> run(1.0 / meanRun);
    Picture picture{width, {}};
    List changes;
    for (int32_t y = 0; y < height; ++y) {
        const uint32_t kind = random() % 8;
        if (y == 0 || kind == 0) {
            changes.clear();
            double x = random() % 3 == 0 ? 0 : run(random);
            while (x < width) {
                changes.push_back(static_cast<int32_t>(x));
                x += 1 + run(random);
            }
        } else if (kind != 1) {
            for (int32_t& change : changes) {
                if (random() % 3 == 0) change += static_cast<int32_t>(random() % 9) - 4;
            }
            std::sort(changes.begin(), changes.end());
            if (random() % 4 == 0 && changes.size() > 4) {
                const auto at =
                    changes.begin() + static_cast<std::ptrdiff_t>(random() % (changes.size() - 2));
                changes.erase(at, at + 2);
            }
        }
        for (int32_t& change : changes)
            change = std::clamp(change, 0, width);
        picture.rows.push_back(Paint(changes, width));
    }
    return picture;
}

Encoded ReferenceCcittEncoder(const EngineRun& run, const Picture& picture, int32_t k,
                              size_t lines) {
    Encoded result;
    result.offsets.resize(run.Strips());
    result.counts = result.offsets;
    if (lines == 0) return result;
    const CompressionKey key = run.key;
    constexpr std::string_view kEndOfLine = "000000000001";
    const bool group3 = (key & 0xFFFF) == 3, twoDimensional = group3 && (key & 0x10000) != 0;
    const bool fill = (key & 0x40000) != 0;
    BitWriter out;
    const auto stepToNextByte = [&] {
        do
            out.Put("0");
        while (out.count_ % 8 != 0);
    };
    const auto putEndOfLine = [&](std::string_view tag) {
        if (fill && twoDimensional) out.AlignSoThat(13);
        if (fill && !twoDimensional) stepToNextByte();
        out.Put(kEndOfLine);
        out.Put(tag);
    };
    const Bytes white(static_cast<size_t>(picture.width + 7) / 8);
    Bytes above = white;
    int32_t counter = k;
    uint32_t stripStart = 0;
    if (twoDimensional || key == kMmr) putEndOfLine("1");
    for (size_t y = 0; y < lines; ++y) {
        const Bytes& row = picture.rows[y];
        if (group3 && !twoDimensional) putEndOfLine("");
        if (key == TIFF_KEY_GROUP4 || (twoDimensional && counter != k) || (key == kMmr && y != 0)) {
            PutRow2D(out, row, above, picture.width);
            ++counter;
        } else if (key != kMmr || picture.width != 0) {
            PutRow1D(out, row, picture.width);
            counter = 1;
        }
        if (twoDimensional) putEndOfLine(counter == k ? "1" : "0");
        if (key == kMmr && y == 0) putEndOfLine("0");
        while ((key & 0xFFFF) == TIFF_KEY_CCITT_1D_BARE && out.count_ % 8 != 0)
            out.Put("0");
        above = row;
        if ((y + 1) % run.rowsPerStrip != 0 && y + 1 != run.height) continue;
        for (int i = 0; i < (key == TIFF_KEY_GROUP4 ? 2 : 0); ++i)
            out.Put(kEndOfLine);
        if (twoDimensional || key == TIFF_KEY_GROUP4) stepToNextByte();
        above = white;
        const size_t strip = y / run.rowsPerStrip;
        result.offsets[strip] = stripStart;
        result.counts[strip] = static_cast<uint32_t>(out.count_ / 8) - stripStart;
        stripStart += result.counts[strip];
    }
    const bool tagged = twoDimensional || key == kMmr;
    for (int i = 0; i < (tagged ? 6 : group3 ? 5 : 0); ++i)
        putEndOfLine(tagged ? "1" : "");
    result.stream = out.Take();
    result.stream.resize(out.count_ / 8);
    if (key == kMmr) result.stream = InBlocks(result.stream, 32767);
    return result;
}

Outcome ReferenceCcitt(const EngineRun& run) {
    if (run.key != kMmr) return Decoder{run}.Run();
    EngineRun code = run;
    code.stream = CodeOfBlocks(run.stream);
    return code.stream.empty() ? Outcome{TIFF_IO_ERROR} : Decoder{code}.Run();
}

}  // namespace vellim::test
