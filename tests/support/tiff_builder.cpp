#include "support/tiff_builder.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "platform/guards.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim::test {
namespace {

// TIFF 6.0, section 2, has the widths of the types 1 to 12; 13 is IFD.
size_t UnitWidth(uint16_t type) {
    constexpr size_t kWidths[] = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8, 4};
    return type < std::size(kWidths) ? kWidths[type] : 1;
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
    void Long(uint32_t value) { Elements(LongTag(0, {value}).value, 4); }
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

// Strips, values, directory; gives the place of the directory's link.
uint32_t WriteImage(Writer& out, const ImageSpec& image, uint32_t linkFromBefore) {
    std::vector<uint32_t> offsets, byteCounts;
    for (const Bytes& strip : image.strips) {
        offsets.push_back(static_cast<uint32_t>(out.file.size()));
        byteCounts.push_back(static_cast<uint32_t>(strip.size()));
        out.Elements(strip, 1);
    }
    std::vector<TagSpec> tags = image.tags;
    for (const TagSpec& added : {LongTag(TIFF_TAG_STRIP_OFFSETS, offsets),
                                 LongTag(TIFF_TAG_STRIP_BYTE_COUNTS, byteCounts)}) {
        const bool given = std::ranges::find(tags, added.tag, &TagSpec::tag) != tags.end();
        if (!given && added.count != 0) tags.push_back(added);
    }
    std::ranges::stable_sort(tags, {}, &TagSpec::tag);
    Writer entries{out.bigEndian, {}};
    for (const TagSpec& tag : tags) {
        entries.Elements(ShortTag(0, {tag.tag, tag.type}).value, 2);
        entries.Long(tag.count);
        const bool isInline = tag.value.size() <= 4;
        if (!isInline) entries.Long(out.AlignedPosition());
        (isInline ? entries : out).Elements(tag.value, UnitWidth(tag.type));
        if (isInline) entries.Elements(Bytes(4 - tag.value.size()), 1);
    }
    Writer link{out.bigEndian, {}};
    link.Long(out.AlignedPosition());
    std::ranges::copy(link.file, &out.file[linkFromBefore]);
    out.Elements(ShortTag(0, {static_cast<uint16_t>(tags.size())}).value, 2);
    out.Elements(entries.file, 1);
    out.Long(0);
    return static_cast<uint32_t>(out.file.size()) - 4;
}

// A folder of this process alone.
struct TemporaryFolder {
    std::string path = (std::filesystem::temp_directory_path() / "vellim-XXXXXX").string();
    TemporaryFolder() {
        if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("no temporary folder");
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path, ignored); }
    std::error_code ignored;
};

}  // namespace

TagSpec ShortTag(uint16_t tag, const std::vector<uint16_t>& values) {
    return TagOf(tag, TIFF_TYPE_SHORT, values);
}
TagSpec LongTag(uint16_t tag, const std::vector<uint32_t>& values) {
    return TagOf(tag, TIFF_TYPE_LONG, values);
}
TagSpec RationalTag(uint16_t tag, uint32_t numerator, uint32_t denominator) {
    return {tag, TIFF_TYPE_RATIONAL, 1, LongTag(tag, {numerator, denominator}).value};
}
TagSpec AsciiTag(uint16_t tag, std::string_view text) {
    const std::string ended = std::string(text) + '\0';
    return TagOf(tag, TIFF_TYPE_ASCII, Bytes(ended.begin(), ended.end()));
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
        ShortTag(TIFF_TAG_SAMPLES_PER_PIXEL, {samples})};
    if (rowsPerStrip != 0) tags.push_back(LongTag(TIFF_TAG_ROWS_PER_STRIP, {rowsPerStrip}));
    return {std::move(tags), std::move(strips)};
}

Bytes BuildTiff(const std::vector<ImageSpec>& images, bool bigEndian) {
    Writer out{bigEndian, Bytes(2, bigEndian ? uint8_t{'M'} : uint8_t{'I'})};
    out.Elements({42, 0, 0, 0, 0, 0}, 2);  // the version, and a link to come
    uint32_t link = 4;
    for (const ImageSpec& image : images)
        link = WriteImage(out, image, link);
    return out.file;
}

GlobalHandle BlockOf(const Bytes& bytes) {
    const GlobalHandle block = GlobalAlloc(GHND, static_cast<uint32_t>(bytes.size()));
    std::ranges::copy(bytes, LockedBlock(block).As<uint8_t>());
    return block;
}

std::string FileOf(const Bytes& bytes, std::string_view name) {
    static const TemporaryFolder folder;
    std::string path = (std::filesystem::path(folder.path) / name).string();
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
    if (!file.flush()) throw std::runtime_error("can't write " + path);
    return path;
}

}  // namespace vellim::test
