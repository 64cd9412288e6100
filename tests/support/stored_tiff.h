// TIFF files read without the library: what was really stored.
#pragma once

#include <map>

#include "support/test_files.h"

namespace vellim::test {

using Directory = std::map<uint16_t, TagSpec>;

inline uint64_t Element(const TagSpec& tag, size_t index) {
    const size_t width = tag.value.size() / tag.count;
    return Number(tag.value, index * width, width);
}

// The directories of a file, values at their true width.
inline std::vector<Directory> Directories(const Bytes& file) {
    const bool big = file.at(0) == 'M';
    const auto number = [&](size_t at, size_t width) { return Number(file, at, width, big); };
    std::vector<Directory> all;
    for (size_t at = number(4, 4); at != 0; at = number(at + 2 + 12 * number(at, 2), 4)) {
        all.emplace_back();
        for (size_t i = 0, entry = at + 2; i < number(at, 2); i++, entry += 12) {
            constexpr size_t widths[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4};
            TagSpec tag{static_cast<uint16_t>(number(entry, 2)),
                        static_cast<uint16_t>(number(entry + 2, 2)),
                        static_cast<uint32_t>(number(entry + 4, 4)),
                        {}};
            const size_t width = widths[tag.type], bytes = tag.count * width;
            const size_t unit = tag.type == 5 || tag.type == 10 ? 4 : width;
            const size_t from = bytes <= 4 ? entry + 8 : number(entry + 8, 4);
            for (size_t byte = 0; byte < bytes; byte++)
                tag.value.push_back(static_cast<uint8_t>(number(from + byte / unit * unit, unit) >>
                                                         8 * (byte % unit)));
            all.back()[tag.tag] = tag;
        }
    }
    return all;
}

inline Bytes Piece(const Bytes& file, uint64_t from, uint64_t bytes) {
    const auto begin = file.begin() + static_cast<ptrdiff_t>(from);
    return {begin, begin + static_cast<ptrdiff_t>(bytes)};
}

inline std::vector<Bytes> Strips(const Bytes& file, const Directory& image) {
    std::vector<Bytes> strips;
    for (size_t i = 0; i < image.at(273).count; i++)
        strips.push_back(Piece(file, Element(image.at(273), i), Element(image.at(279), i)));
    return strips;
}

// The strips of each image, as stored.
inline std::vector<std::vector<Bytes>> StoredStrips(const std::string& path) {
    const Bytes file = ReadFile(path);
    std::vector<std::vector<Bytes>> images;
    for (const Directory& image : Directories(file))
        images.push_back(Strips(file, image));
    return images;
}

}  // namespace vellim::test
