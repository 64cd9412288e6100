// A word of 64 pixels against itself, moved by one pixel, has a 1 wherever the colour changes.
//
// Which words have a change, and how many, can't be foretold, so that a branch on either would cost
// more than what it saves. Words with changes are therefore listed first, without a branch a word;
// then each of them stores the changes of all its bytes, eight from a table at a time, whatever
// number of them counts.

#include "codec/change_finder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "codec/bit_reader.h"

namespace vellim {
namespace {

constexpr int32_t kWordBytes = 8;
constexpr int32_t kWordPixels = 64;
constexpr int32_t kGroupWords = 8;    // one test passes over a group of one colour
constexpr int32_t kListedWords = 64;  // words listed before their changes are stored

// Where a byte has its 1 bits, from the left, and how many they are.
struct alignas(32) BitPlaces {
    std::array<Change, 8> places;
    uint64_t count;
};

constexpr std::array<BitPlaces, 256> MakeBitPlaces() {
    std::array<BitPlaces, 256> table{};
    for (uint32_t byte = 0; byte < table.size(); ++byte) {
        BitPlaces& entry = table[byte];
        for (Change place = 0; place < 8; ++place)
            if ((byte >> (7 - place) & 1) != 0) entry.places[entry.count++] = place;
    }
    return table;
}

constexpr std::array<BitPlaces, 256> kBitPlaces = MakeBitPlaces();
static_assert(sizeof BitPlaces::places == kSpareChanges * sizeof(Change));

// GCC's and clang's name for eight numbers in one register, on any processor.
using EightChanges = Change __attribute__((vector_size(sizeof BitPlaces::places)));

struct Line {
    const uint8_t* bytes;
    uint32_t before;  // the pixel left of the line

    [[nodiscard]] const uint8_t* Word(int32_t word) const {
        return bytes + ptrdiff_t{word} * kWordBytes;
    }
    // The pixel left of a word.
    [[nodiscard]] uint64_t LeftOf(int32_t word) const {
        return word == 0 ? before : Word(word)[-1] & 1U;
    }
    [[nodiscard]] bool HasChange(int32_t word) const {
        // All pixels 0 behind a 0, or all 1 behind a 1.
        return LoadNative64(Word(word)) + LeftOf(word) != 0;
    }
    [[nodiscard]] bool GroupHasChange(int32_t word, int32_t words) const {
        const uint64_t left = 0 - LeftOf(word);
        uint64_t differing = 0;
        for (int32_t i = 0; i < words; ++i)
            differing |= LoadNative64(Word(word + i)) ^ left;
        return differing != 0;
    }
    [[nodiscard]] uint64_t ChangesOf(int32_t word) const {
        const uint64_t pixels = LoadBigEndian64(Word(word));
        return pixels ^ (pixels >> 1 | LeftOf(word) << (kWordPixels - 1));
    }
};

Change* StoreChanges(uint64_t changes, int32_t word, Change* list) {
    const auto first = static_cast<Change>(word * kWordPixels);
    EightChanges byteStart{first, first, first, first, first, first, first, first};
    for (int i = 1; i <= kWordBytes; ++i) {
        const BitPlaces& bits = kBitPlaces[changes >> (kWordPixels - 8 * i) & 0xFF];
        EightChanges places;
        std::memcpy(&places, bits.places.data(), sizeof places);
        places += byteStart;
        std::memcpy(list, &places, sizeof places);
        list += bits.count;
        byteStart += 8;
    }
    return list;
}

}  // namespace

Change* FindChanges(const uint8_t* line, int32_t pixels, uint32_t before, Change* changes) {
    if (pixels <= 0) return changes;
    const Line source{line, before};
    const int32_t lastWord = (pixels - 1) / kWordPixels;
    for (int32_t word = 0; word < lastWord;) {
        std::array<int32_t, kListedWords> listed;
        size_t count = 0;
        const auto list = [&](int32_t candidate) {
            listed[count] = candidate;
            count += source.HasChange(candidate) ? 1U : 0U;
        };
        const int32_t stop = std::min(word + kListedWords, lastWord);
        for (; stop - word >= kGroupWords; word += kGroupWords) {
            if (!source.GroupHasChange(word, kGroupWords)) continue;
            for (int32_t i = 0; i < kGroupWords; ++i)
                list(word + i);
        }
        if (source.GroupHasChange(word, stop - word)) {
            for (int32_t i = word; i < stop; ++i)
                list(i);
        }
        word = stop;
        for (size_t i = 0; i < count; ++i)
            changes = StoreChanges(source.ChangesOf(listed[i]), listed[i], changes);
    }
    const int32_t behind = (lastWord + 1) * kWordPixels - pixels;
    const uint64_t last = source.ChangesOf(lastWord) & ~uint64_t{0} << behind;
    return last == 0 ? changes : StoreChanges(last, lastWord, changes);
}

}  // namespace vellim
