// Editing files that hold whatever the input is: a failure leaves the file as it was; after a
// success it has its images, their tags and their strips, and nothing but the edit has changed.
#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "fuzz/checks.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {
namespace {

using test::Bytes;
using test::FileOf;
using test::ReadFile;

// A chain that loops has as many images as there are places, all alike.
constexpr int32_t kMaxImages = 8;
constexpr uint32_t kTag = 40000;
constexpr std::array<uint8_t, 16> kValue = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

struct Value {
    uint32_t type = 0, count = 0;
    Bytes bytes;

    [[nodiscard]] size_t Width() const { return type == TIFF_TYPE_SHORT ? 2 : 4; }
    [[nodiscard]] size_t Number(size_t index) const {
        size_t number = 0;
        if ((index + 1) * Width() <= bytes.size())
            std::copy_n(&bytes[index * Width()], Width(), reinterpret_cast<uint8_t*>(&number));
        return number;
    }
    bool operator==(const Value&) const = default;
};

Value TagOf(TiffFileHandle file, int32_t image, uint32_t tag) {
    GlobalHandle block = 0;
    Value value;
    GetTiffImageInfoBuffer(file, image, tag, &block, &value.type, &value.count);
    const OwnedBlock owned(block);
    value.bytes = test::BytesOf(block);
    return value;
}

struct Image {
    std::map<size_t, Value> tags;  // but for those that hold offsets
    std::vector<Bytes> strips;     // of each what the file has of it
};

Image ImageOf(TiffFileHandle file, int32_t index, const Bytes& bytes) {
    Image image;
    const Value list = TagOf(file, index, TIFF_ALL_TAGS);
    for (size_t i = 0; i < list.count; i++) {
        const auto tag = static_cast<uint32_t>(list.Number(i));
        if (tag == TIFF_ALL_TAGS) continue;  // can't be asked for
        Value& value = image.tags[tag] = TagOf(file, index, tag);
        // A type that is wider in files is held as its first bytes, in the file's byte order.
        if (value.type == 8 || (value.type >= 10 && value.type <= 13)) value.bytes.clear();
    }
    std::array<uint32_t, 2> compression{};
    GetTiffImageInfo(file, index, TIFF_TAG_COMPRESSION, compression.data());
    const bool tiles = compression[0] == 6;
    const Value offsets = TagOf(file, index, tiles ? 324 : 273);
    const Value counts = TagOf(file, index, tiles ? 325 : 279);
    for (size_t i = 0; i < offsets.count; i++) {
        const size_t from = std::min(offsets.Number(i), bytes.size());
        const size_t count = std::min(counts.Number(i), bytes.size() - from);
        const auto begin = bytes.begin() + static_cast<ptrdiff_t>(from);
        image.strips.emplace_back(begin, begin + static_cast<ptrdiff_t>(count));
    }
    for (const size_t tag : {273U, 324U, 519U, 520U, 521U})
        if ((tag == 273) != tiles) image.tags.erase(tag);
    return image;
}

std::vector<Image> ImagesOf(const std::string& path) {
    const Bytes bytes = ReadFile(path);
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_READ);
    const int32_t count = NumberOfTiffImages(file, TIFF_ALL_IMAGES);
    std::vector<Image> images(static_cast<size_t>(count));
    for (int32_t i = 0; i < std::min(count, kMaxImages); i++)
        if (GetTiffImage(file, i) == 1) {
            images[static_cast<size_t>(i)] = ImageOf(file, i, bytes);
            DropTiffImage(file, i);
        }
    CloseTiffFile(file);
    return images;
}

// What was there is as it was; a strip that the old file cut short may find more in the new one.
void RequireSame(const std::vector<Image>& before, const std::vector<Image>& after) {
    const auto isKept = [](const Bytes& a, const Bytes& b) {
        return a.size() <= b.size() && std::equal(a.begin(), a.end(), b.begin());
    };
    for (size_t i = 0; i < before.size(); i++) {
        Require(before[i].tags == after[i].tags, "tags are as they were");
        Require(std::ranges::equal(before[i].strips, after[i].strips, isKept), "strips are too");
    }
}

void Edit(const std::string& path, size_t image, uint32_t type) {
    const Bytes old = ReadFile(path);
    std::vector<Image> expected = ImagesOf(path);
    const auto index = static_cast<int32_t>(image);
    int32_t result = AddTiffTagToImage(path.c_str(), index, kTag, type, kValue.data(), 2);
    RequireTold(result, TiffError());
    if (result == 0) return Require(ReadFile(path) == old, "a failure changes nothing");
    std::vector<Image> edited = ImagesOf(path);
    Require(edited.size() == expected.size(), "as many images");
    if (image < kMaxImages) {
        const Value added = edited[image].tags[kTag];
        Require(added.type == type && added.count == 2, "the tag is there");
        expected[image].tags[kTag] = added;
    }
    RequireSame(expected, edited);

    result = DeleteTiffTagOfImage(path.c_str(), index, kTag);
    Require(result == 1 || TiffError() == TIFF_IO_ERROR, "what was edited can be edited");
    edited = ImagesOf(path);
    if (image < kMaxImages && result == 1)
        Require(expected[image].tags.erase(kTag) == 1, "the tag is gone");
    RequireSame(expected, edited);
}

// Copies an image into a file that copying has made.
void Copy(const std::string& from, size_t image, const std::string& to) {
    const std::vector<Image> source = ImagesOf(from), before = ImagesOf(to);
    const auto index = static_cast<int32_t>(image);
    const int32_t result = CopyTiffImageInFile(from.c_str(), index, to.c_str(), T_APPEND);
    RequireTold(result, TiffError());
    const std::vector<Image> after = ImagesOf(to);
    Require(after.size() == before.size() + static_cast<size_t>(result), "the chain is as told");
    RequireSame(before, after);
    if (result == 1 && image < kMaxImages) RequireSame({source[image]}, {after.back()});
}

// In a file of any content, whose tags and strips may lie anywhere, one link is all that changes.
void CopyInto(const std::string& from, const std::string& to) {
    constexpr ptrdiff_t kLinkBytes = 4;
    const Bytes before = ReadFile(to);
    const int32_t result = CopyTiffImageInFile(from.c_str(), 0, to.c_str(), T_APPEND);
    RequireTold(result, TiffError());
    const Bytes after = ReadFile(to);
    Require(after.size() >= before.size(), "nothing is cut off");
    const auto first = std::mismatch(before.begin(), before.end(), after.begin()).first;
    const auto last = std::mismatch(before.rbegin(), before.rend(),
                                    after.rbegin() + std::ssize(after) - std::ssize(before));
    Require(first == before.end() || (result == 1 && last.first.base() - first <= kLinkBytes),
            "only the link changes");
}

}  // namespace
}  // namespace vellim::fuzz

// The input is the file; its last bytes say which image is edited, and how.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    const Bytes bytes(data, data + size);
    const std::string path = FileOf(bytes, "input.tif");
    const size_t images = ImagesOf(path).size();
    if (images == 0) return 0;
    const size_t image = bytes.back() % images;
    const uint32_t type = bytes[size - 2] % 14;
    const BlockBalance balance;
    Edit(path, image, type);
    const std::string copy = vellim::test::NewPath("copy.tif");
    FileOf(bytes, "input.tif");
    Copy(path, image, copy);
    Copy(path, image, copy);
    if (std::filesystem::exists(copy)) CopyInto(copy, path);
    return 0;
}
