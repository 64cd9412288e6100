// Editing files that hold whatever the input is: a failure leaves the file as it was; after a
// success it has its images, their tags and their strips, and nothing but the edit has changed.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "fuzz/checks.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {
namespace {

using Bytes = std::vector<uint8_t>;

// A chain that loops has as many images as there are places, all alike.
constexpr int32_t kMaxImages = 8;
constexpr uint32_t kTag = 40000;
constexpr std::array<uint8_t, 16> kValue = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

struct Folder {
    std::filesystem::path path = std::filesystem::temp_directory_path() / "vellim-fuzz-XXXXXX";
    Folder() {
        std::string name = path.string();
        Require(mkdtemp(name.data()) != nullptr, "a folder can be made");
        path = name;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

Bytes Read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

void Write(const std::string& path, const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
}

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
    const LockedBlock locked(block);
    if (locked) value.bytes.assign(locked.As<uint8_t>(), locked.As<uint8_t>() + locked.Size());
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
    const Bytes bytes = Read(path);
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_READ);
    std::vector<Image> images(static_cast<size_t>(NumberOfTiffImages(file, TIFF_ALL_IMAGES)));
    for (int32_t i = 0; i < std::min<int32_t>(static_cast<int32_t>(images.size()), kMaxImages); i++)
        if (GetTiffImage(file, i) == 1) {
            images[static_cast<size_t>(i)] = ImageOf(file, i, bytes);
            DropTiffImage(file, i);
        }
    CloseTiffFile(file);
    return images;
}

// A strip that the old file cut short may find more in the new one.
void RequireSame(const Image& before, const Image& after) {
    Require(before.tags == after.tags, "tags are as they were");
    Require(before.strips.size() == after.strips.size(), "as many strips");
    for (size_t i = 0; i < before.strips.size(); i++) {
        const Bytes &a = before.strips[i], &b = after.strips[i];
        Require(a.size() <= b.size() && std::equal(a.begin(), a.end(), b.begin()),
                "strips are as they were");
    }
}

void RequireSame(const std::vector<Image>& before, const std::vector<Image>& after) {
    for (size_t i = 0; i < before.size(); i++)
        RequireSame(before[i], after[i]);
}

void Edit(const std::string& path, size_t image, uint32_t type) {
    const Bytes old = Read(path);
    std::vector<Image> expected = ImagesOf(path);
    const auto index = static_cast<int32_t>(image);
    int32_t result = AddTiffTagToImage(path.c_str(), index, kTag, type, kValue.data(), 2);
    RequireTold(result, TiffError());
    if (result == 0) return Require(Read(path) == old, "a failure changes nothing");
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
    if (result == 1 && image < kMaxImages) RequireSame(source[image], after.back());
}

// In a file of any content, whose tags and strips may lie anywhere, one link is all that changes.
void CopyInto(const std::string& from, const std::string& to) {
    constexpr ptrdiff_t kLinkBytes = 4;
    const Bytes before = Read(to);
    const int32_t result = CopyTiffImageInFile(from.c_str(), 0, to.c_str(), T_APPEND);
    RequireTold(result, TiffError());
    const Bytes after = Read(to);
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
    static const Folder folder;
    const std::string path = folder.path / "input.tif", copy = folder.path / "copy.tif";
    const Bytes bytes(data, data + size);
    Write(path, bytes);
    const size_t images = ImagesOf(path).size();
    if (images == 0) return 0;
    const size_t image = bytes.back() % images;
    const uint32_t type = bytes[size - 2] % 14;
    const BlockBalance balance;
    Edit(path, image, type);
    Write(path, bytes);
    std::filesystem::remove(copy);
    Copy(path, image, copy);
    Copy(path, image, copy);
    if (std::filesystem::exists(copy)) CopyInto(copy, path);
    return 0;
}
