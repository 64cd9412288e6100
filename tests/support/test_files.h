// A test's own files and folders, what they and blocks hold, and other programs run on them.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "platform/guards.h"
#include "support/tiff_builder.h"

namespace vellim::test {

// The words of a command, parted by blanks.
inline std::string Words(std::initializer_list<std::string_view> words) {
    std::string line;
    for (const std::string_view word : words)
        line.append(line.empty() ? "" : " ").append(word);
    return line;
}

inline Bytes ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline std::string ReadText(const std::string& path) {
    const Bytes bytes = ReadFile(path);
    return {bytes.begin(), bytes.end()};
}

// first, first + 1 and so on.
inline Bytes Counted(size_t count, uint8_t first = 1) {
    Bytes bytes(count);
    std::iota(bytes.begin(), bytes.end(), first);
    return bytes;
}

inline Bytes BytesOf(GlobalHandle block) {
    const LockedBlock locked(block);
    return locked ? Bytes(locked.As<uint8_t>(), locked.As<uint8_t>() + locked.Size()) : Bytes();
}

// A path in the test's own folder where nothing is yet, and one where an empty folder is.
inline std::string NewPath(const std::string& name) {
    const auto path = std::filesystem::path(FileOf({}, "anchor")).replace_filename(name);
    std::filesystem::remove_all(path);
    return path;
}

inline std::filesystem::path NewFolder(const std::string& name) {
    const std::string folder = NewPath(name);
    std::filesystem::create_directories(folder);
    return folder;
}

inline std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

// What a shell command writes; its standard error counts too.
inline std::string Shell(const std::string& command) {
    const std::string out = NewPath("shell");
    const int status = std::system(("{ " + command + "; } >" + out + " 2>&1").c_str());
    return ReadText(out) + (status == 0 ? "" : " failed");
}

inline ImageSpec With(ImageSpec image, const std::vector<TagSpec>& more) {
    image.tags.insert(image.tags.end(), more.begin(), more.end());
    return image;
}

inline uint64_t Number(const Bytes& bytes, size_t at, size_t width, bool bigEndian = false) {
    uint64_t number = 0;
    for (size_t i = 0; i < width; i++)
        number = number << 8 | bytes.at(bigEndian ? at + i : at + width - 1 - i);
    return number;
}

// Where the link of each image of an "II" file stands.
inline std::vector<size_t> LinksOf(const Bytes& file) {
    std::vector<size_t> links;
    for (size_t start = Number(file, 4, 4); start != 0; start = Number(file, links.back(), 4))
        links.push_back(start + 2 + Number(file, start, 2) * 12);
    return links;
}

}  // namespace vellim::test
