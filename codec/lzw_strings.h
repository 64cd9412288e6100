// The strings of an LZW strip (TIFF 6.0 section 13), for decoding.
//
// Each code that is read opens an entry: its own string and one byte more, which is the first byte
// of the string that follows. In the output these bytes stand side by side, so an entry is no chain
// of prefixes but a place in the output and a length. The output since the last clear code is kept
// for that, behind the 256 single bytes, which are entries like all others:
//
//     00 01 .. FF | A B | A B C | D |      codes: ..., 258 = "AB" and the byte behind it, "ABA"
//                   ^258  ^259    ^260
//
// The entry opened last is still without its last byte. Its code means: the string before, and that
// string's first byte once more.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "codec/lzw_codes.h"

namespace vellim {

constexpr uint32_t kLzwChunk = 16;

// Upper bounds: strings grow by one byte a code at most.
constexpr uint32_t kLzwEntries = kLzwTableSize - kLzwFirstFree;
constexpr uint32_t kLzwLongestString = kLzwEntries + 1;
constexpr uint32_t kLzwLongestHistory = kLzwEntries * kLzwLongestString / 2;

struct LzwEntry {
    uint32_t start;   // offset in the history
    uint32_t length;  // the byte that is still to come included
};

// The entries, and one place more, where the entry goes that is opened when the table is full.
using LzwTable = std::array<LzwEntry, kLzwTableSize + 1>;

struct LzwStrings {
    LzwEntry* table = nullptr;
    uint8_t* history = nullptr;
    uint8_t* out = nullptr;  // end of the output so far
    uint32_t nextFree = kLzwFirstFree;

    // Whether `code` stands for a string; the clear and the end code don't, nor does one that has
    // no entry yet.
    [[nodiscard]] bool IsString(uint32_t code) const {
        return code < nextFree && (code < kLzwClear || code >= kLzwFirstFree);
    }

    void Clear() {
        out = history + kLzwLiterals;
        nextFree = kLzwFirstFree;
    }

    // Puts the string of `code` out and opens the entry that it begins. Chunks may be written past
    // the string's end.
    void Append(uint32_t code) {
        const LzwEntry entry = table[code];
        const uint8_t* from = history + entry.start;
        const bool isOpen = code + 1 == nextFree;
        CopyChunk(out, from);
        if (entry.length > kLzwChunk) [[unlikely]]
            CopyRest(out, from, entry.length);
        if (isOpen) [[unlikely]]
            out[entry.length - 1] = *from;
        table[nextFree] = {static_cast<uint32_t>(out - history), entry.length + 1};
        nextFree += nextFree < kLzwTableSize ? 1 : 0;
        out += entry.length;
    }

    // With a full table the output isn't looked back at any more: everything behind the last
    // entry's string may be written again.
    void ReuseTail() {
        const LzwEntry& last = table[kLzwTableSize - 1];
        out = history + last.start + last.length - 1;
    }

  private:
    // Read as a whole and then written: near the output's end the two places may overlap.
    static void CopyChunk(uint8_t* to, const uint8_t* from) {
        std::array<uint8_t, kLzwChunk> chunk;
        std::memcpy(chunk.data(), from, kLzwChunk);
        std::memcpy(to, chunk.data(), kLzwChunk);
    }

    static void CopyRest(uint8_t* to, const uint8_t* from, uint32_t length) {
        for (uint32_t done = kLzwChunk; done < length; done += kLzwChunk)
            CopyChunk(to + done, from + done);
    }
};

}  // namespace vellim
