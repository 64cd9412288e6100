#include "support/tiff_builder.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "vellim/tags.h"

namespace vellim::test {
namespace {

constexpr uint16_t kAscii = 2, kShort = 3, kLong = 4, kRational = 5;

// TIFF 6.0, section 2, has the widths of the types 1 to 12.
size_t UnitWidth(uint16_t type) {
    constexpr std::array<size_t, 13> kWidths = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8};
    return type < kWidths.size() ? kWidths[type] : 1;
}

// Writes a file front to back, in one byte order.
struct Writer {
    bool bigEndian;
    Bytes file;

    // `bytes` as little-endian units of `width`, in the file's order.
    void Elements(Bytes bytes, size_t width) {
        for (size_t at = 0; bigEndian && at + width <= bytes.size(); at += width)
            std::reverse(&bytes[at], &bytes[at] + width);
        file.insert(file.end(), bytes.begin(), bytes.end());
    }
    void Number(uint32_t value, size_t width) {
        Bytes bytes(width);
        std::memcpy(bytes.data(), &value, width);
        Elements(bytes, width);
    }
    void Patch(uint32_t at, uint32_t value) {
        Writer number{bigEndian, {}};
        number.Number(value, 4);
        std::ranges::copy(number.file, &file[at]);
    }
    uint32_t AlignedPosition() {
        file.resize((file.size() + 1) / 2 * 2);
        return static_cast<uint32_t>(file.size());
    }
};

template <typename Number>
TagSpec TagOf(uint16_t tag, uint16_t type, const std::vector<Number>& values) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(values.data());
    return {tag, type, static_cast<uint32_t>(values.size()),
            Bytes(bytes, bytes + values.size() * sizeof(Number))};
}

// The image's tags with those of its strips, sorted. A strip tag that the test gave itself stays.
std::vector<TagSpec> AllTags(const ImageSpec& image, const std::vector<uint32_t>& stripOffsets) {
    std::vector<TagSpec> tags = image.tags;
    std::vector<uint32_t> byteCounts;
    for (const Bytes& strip : image.strips)
        byteCounts.push_back(static_cast<uint32_t>(strip.size()));
    for (const TagSpec& ofStrips : {LongTag(TIFF_TAG_STRIP_OFFSETS, stripOffsets),
                                    LongTag(TIFF_TAG_STRIP_BYTE_COUNTS, byteCounts)}) {
        const bool given = std::ranges::find(tags, ofStrips.tag, &TagSpec::tag) != tags.end();
        if (!given && !image.strips.empty()) tags.push_back(ofStrips);
    }
    std::ranges::stable_sort(tags, {}, &TagSpec::tag);
    return tags;
}

// Strips, values, directory; gives the place of the directory's link.
uint32_t WriteImage(Writer& out, const ImageSpec& image, uint32_t linkFromBefore) {
    std::vector<uint32_t> stripOffsets;
    for (const Bytes& strip : image.strips) {
        stripOffsets.push_back(static_cast<uint32_t>(out.file.size()));
        out.Elements(strip, 1);
    }
    const std::vector<TagSpec> tags = AllTags(image, stripOffsets);
    Writer entries{out.bigEndian, {}};
    for (const TagSpec& tag : tags) {
        entries.Number(tag.tag, 2);
        entries.Number(tag.type, 2);
        entries.Number(tag.count, 4);
        const bool isInline = tag.value.size() <= 4;
        if (!isInline) entries.Number(out.AlignedPosition(), 4);
        (isInline ? entries : out).Elements(tag.value, UnitWidth(tag.type));
        if (isInline) entries.Elements(Bytes(4 - tag.value.size()), 1);
    }
    out.Patch(linkFromBefore, out.AlignedPosition());
    out.Number(static_cast<uint32_t>(tags.size()), 2);
    out.Elements(entries.file, 1);
    out.Number(0, 4);
    return static_cast<uint32_t>(out.file.size()) - 4;
}

// A folder of this process alone.
struct TemporaryFolder {
    std::string path = (std::filesystem::temp_directory_path() / "vellim-XXXXXX").string();
    TemporaryFolder() {
        if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("no temporary folder");
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
};

}  // namespace

TagSpec ShortTag(uint16_t tag, std::vector<uint16_t> values) {
    return TagOf(tag, kShort, values);
}
TagSpec LongTag(uint16_t tag, std::vector<uint32_t> values) {
    return TagOf(tag, kLong, values);
}
TagSpec RationalTag(uint16_t tag, uint32_t numerator, uint32_t denominator) {
    return {tag, kRational, 1, LongTag(tag, {numerator, denominator}).value};
}
TagSpec AsciiTag(uint16_t tag, std::string_view text) {
    Bytes bytes(text.begin(), text.end());
    bytes.push_back(0);
    return TagOf(tag, kAscii, bytes);
}

ImageSpec SimpleImage(uint32_t width, uint32_t height, uint16_t bits, uint16_t samples,
                      uint16_t compression, uint16_t photometric, uint32_t rowsPerStrip,
                      std::vector<Bytes> strips) {
    std::vector<TagSpec> tags = {
        LongTag(TIFF_TAG_IMAGE_WIDTH, {width}),
        LongTag(TIFF_TAG_IMAGE_LENGTH, {height}),
        ShortTag(TIFF_TAG_BITS_PER_SAMPLE, std::vector<uint16_t>(samples, bits)),
        ShortTag(TIFF_TAG_COMPRESSION, {compression}),
        ShortTag(TIFF_TAG_PHOTOMETRIC, {photometric}),
        ShortTag(TIFF_TAG_SAMPLES_PER_PIXEL, {samples}),
    };
    if (rowsPerStrip != 0) tags.push_back(LongTag(TIFF_TAG_ROWS_PER_STRIP, {rowsPerStrip}));
    return {std::move(tags), std::move(strips)};
}

Bytes BuildTiff(const std::vector<ImageSpec>& images, bool bigEndian) {
    const uint8_t mark = bigEndian ? 'M' : 'I';
    Writer out{bigEndian, {mark, mark}};
    out.Number(42, 2);
    out.Number(0, 4);
    uint32_t link = 4;
    for (const ImageSpec& image : images)
        link = WriteImage(out, image, link);
    return out.file;
}

GlobalHandle BlockOf(const Bytes& bytes) {
    const GlobalHandle block = GlobalAlloc(GHND, static_cast<uint32_t>(bytes.size()));
    if (block == 0) throw std::runtime_error("no memory block");
    std::ranges::copy(bytes, static_cast<uint8_t*>(GlobalLock(block)));
    GlobalUnlock(block);
    return block;
}

std::string FileOf(const Bytes& bytes, std::string_view name) {
    static const TemporaryFolder folder;
    const std::string path = (std::filesystem::path(folder.path) / name).string();
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
    file.close();
    if (!file) throw std::runtime_error("can't write " + path);
    return path;
}

}  // namespace vellim::test
