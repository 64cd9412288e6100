// Where an image content is in a file, in one number: the place of its segment (IOCA) or of its
// image object (MO:DCA), and how many contents stand before it there.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vellim::tool {

struct ContentPlace {
    uint64_t at = 0;
    uint32_t number = 0;
};

// Contents are come to one by one, so there is a bound to how many are found in one place; nobody
// but who means harm goes there.
constexpr unsigned kNumberBits = 10;
constexpr uint32_t kMostContents = 1U << kNumberBits;

constexpr uint64_t Packed(const ContentPlace& place) {
    return place.at << kNumberBits | place.number;
}

constexpr ContentPlace Unpacked(uint64_t packed) {
    return {packed >> kNumberBits, static_cast<uint32_t>(packed & (kMostContents - 1))};
}

// The places in a file, found one after the other.
struct ContentPlaces {
    std::vector<uint64_t> packed;
    ContentPlace next;
    uint64_t beyond = 0;  // contents above the most of a place
};

// Adds a content that is in place `at`.
inline void AddContent(ContentPlaces& places, uint64_t at) {
    if (places.packed.empty() || places.next.at != at) places.next = {at, 0};
    if (places.next.number == kMostContents) {
        ++places.beyond;
        return;
    }
    places.packed.push_back(Packed(places.next));
    ++places.next.number;
}

// The places of all contents of the segments from `offset` on; those beyond are told to `beside`.
std::vector<uint64_t> ContentsInARow(int descriptor, uint64_t offset,
                                     std::vector<std::string>& beside);

// Adds "words (2 fields)" to what a file has beside its images, unless there are none.
void TellBeside(std::vector<std::string>& beside, std::string_view words, uint64_t count,
                std::string_view unit);
void TellBeyond(std::vector<std::string>& beside, const ContentPlaces& places);

}  // namespace vellim::tool
