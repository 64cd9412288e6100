#include "support/tiff_builder.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "vellim/tags.h"

namespace vellim::test {
namespace {

constexpr uint16_t kShort = 3, kLong = 4, kRational = 5, kAscii = 2;

// TIFF 6.0, section 2, has the widths of the types 1 to 12.
size_t UnitWidth(uint16_t type) {
    constexpr std::array<size_t, 13> kWidths = {1, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8};
    return type < kWidths.size() ? kWidths[type] : 1;
}

Bytes LittleEndian(uint32_t value, size_t width) {
    Bytes bytes;
    for (size_t i = 0; i < width; i++)
        bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
    return bytes;
}

void Append(Bytes& to, const Bytes& bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

// Writes a file front to back, in one byte order.
class Writer {
  public:
    explicit Writer(bool bigEndian) : bigEndian_(bigEndian) {}

    void Number(uint32_t value, size_t width) { Elements(LittleEndian(value, width), width); }

    // `bytes` as little-endian units of `width`, in the file's order.
    void Elements(Bytes bytes, size_t width) {
        if (bigEndian_) {
            for (size_t at = 0; at + width <= bytes.size(); at += width)
                std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                             bytes.begin() + static_cast<std::ptrdiff_t>(at + width));
        }
        Append(file_, bytes);
    }

    void Patch(uint32_t at, uint32_t value) {
        Writer number(bigEndian_);
        number.Number(value, 4);
        std::copy(number.file_.begin(), number.file_.end(), file_.begin() + at);
    }

    void AlignToWord() {
        if (file_.size() % 2 != 0) file_.push_back(0);
    }

    [[nodiscard]] uint32_t Position() const { return static_cast<uint32_t>(file_.size()); }
    Bytes Take() { return std::move(file_); }

  private:
    bool bigEndian_;
    Bytes file_;
};

bool Has(const std::vector<TagSpec>& tags, uint16_t tag) {
    return std::any_of(tags.begin(), tags.end(), [&](const TagSpec& t) { return t.tag == tag; });
}

// The image's tags with those of its strips, sorted. A strip tag that the test gave itself stays.
std::vector<TagSpec> AllTags(const ImageSpec& image, const std::vector<uint32_t>& stripOffsets) {
    std::vector<TagSpec> tags = image.tags;
    if (!image.strips.empty()) {
        std::vector<uint32_t> byteCounts;
        for (const Bytes& strip : image.strips)
            byteCounts.push_back(static_cast<uint32_t>(strip.size()));
        if (!Has(tags, TIFF_TAG_STRIP_OFFSETS))
            tags.push_back(LongTag(TIFF_TAG_STRIP_OFFSETS, stripOffsets));
        if (!Has(tags, TIFF_TAG_STRIP_BYTE_COUNTS))
            tags.push_back(LongTag(TIFF_TAG_STRIP_BYTE_COUNTS, byteCounts));
    }
    std::stable_sort(tags.begin(), tags.end(),
                     [](const TagSpec& a, const TagSpec& b) { return a.tag < b.tag; });
    return tags;
}

// Strips, values, directory; gives the place of the directory's link.
uint32_t WriteImage(Writer& out, const ImageSpec& image, uint32_t linkFromBefore) {
    std::vector<uint32_t> stripOffsets;
    for (const Bytes& strip : image.strips) {
        stripOffsets.push_back(out.Position());
        out.Elements(strip, 1);
    }
    const std::vector<TagSpec> tags = AllTags(image, stripOffsets);

    std::vector<uint32_t> valueOffsets;
    for (const TagSpec& tag : tags) {
        out.AlignToWord();
        valueOffsets.push_back(out.Position());
        if (tag.value.size() > 4) out.Elements(tag.value, UnitWidth(tag.type));
    }
    out.AlignToWord();
    out.Patch(linkFromBefore, out.Position());
    out.Number(static_cast<uint32_t>(tags.size()), 2);
    for (size_t i = 0; i < tags.size(); i++) {
        out.Number(tags[i].tag, 2);
        out.Number(tags[i].type, 2);
        out.Number(tags[i].count, 4);
        if (tags[i].value.size() > 4) {
            out.Number(valueOffsets[i], 4);
            continue;
        }
        out.Elements(tags[i].value, UnitWidth(tags[i].type));
        out.Elements(Bytes(4 - tags[i].value.size()), 1);
    }
    out.Number(0, 4);
    return out.Position() - 4;
}

// A folder of this process alone.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vellim-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

}  // namespace

TagSpec ShortTag(uint16_t tag, std::vector<uint16_t> values) {
    TagSpec spec = {tag, kShort, static_cast<uint32_t>(values.size()), {}};
    for (const uint16_t value : values)
        Append(spec.value, LittleEndian(value, 2));
    return spec;
}

TagSpec LongTag(uint16_t tag, std::vector<uint32_t> values) {
    TagSpec spec = {tag, kLong, static_cast<uint32_t>(values.size()), {}};
    for (const uint32_t value : values)
        Append(spec.value, LittleEndian(value, 4));
    return spec;
}

TagSpec RationalTag(uint16_t tag, uint32_t numerator, uint32_t denominator) {
    TagSpec spec = LongTag(tag, {numerator, denominator});
    spec.type = kRational;
    spec.count = 1;
    return spec;
}

TagSpec AsciiTag(uint16_t tag, std::string_view text) {
    TagSpec spec = {tag, kAscii, static_cast<uint32_t>(text.size() + 1), {}};
    spec.value.assign(text.begin(), text.end());
    spec.value.push_back(0);
    return spec;
}

ImageSpec SimpleImage(uint32_t width, uint32_t height, uint16_t bits, uint16_t samples,
                      uint16_t compression, uint16_t photometric, uint32_t rowsPerStrip,
                      std::vector<Bytes> strips) {
    ImageSpec image;
    image.tags = {
        LongTag(TIFF_TAG_IMAGE_WIDTH, {width}),
        LongTag(TIFF_TAG_IMAGE_LENGTH, {height}),
        ShortTag(TIFF_TAG_BITS_PER_SAMPLE, std::vector<uint16_t>(samples, bits)),
        ShortTag(TIFF_TAG_COMPRESSION, {compression}),
        ShortTag(TIFF_TAG_PHOTOMETRIC, {photometric}),
        ShortTag(TIFF_TAG_SAMPLES_PER_PIXEL, {samples}),
    };
    if (rowsPerStrip != 0) image.tags.push_back(LongTag(TIFF_TAG_ROWS_PER_STRIP, {rowsPerStrip}));
    image.strips = std::move(strips);
    return image;
}

Bytes BuildTiff(const std::vector<ImageSpec>& images, bool bigEndian) {
    Writer out(bigEndian);
    const uint8_t mark = bigEndian ? 'M' : 'I';
    out.Elements({mark, mark}, 1);
    out.Number(42, 2);
    out.Number(0, 4);
    uint32_t link = 4;
    for (const ImageSpec& image : images)
        link = WriteImage(out, image, link);
    return out.Take();
}

GlobalHandle BlockOf(const Bytes& bytes) {
    const GlobalHandle block = GlobalAlloc(GHND, static_cast<uint32_t>(bytes.size()));
    void* to = GlobalLock(block);
    if (to == nullptr) throw std::runtime_error("no memory block");
    if (!bytes.empty()) std::memcpy(to, bytes.data(), bytes.size());
    GlobalUnlock(block);
    return block;
}

std::string FileOf(const Bytes& bytes, std::string_view name) {
    static const TemporaryFolder folder;
    const std::filesystem::path path = folder.Path() / name;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (const uint8_t byte : bytes)
        file.put(static_cast<char>(byte));
    file.close();
    if (!file) throw std::runtime_error("can't write " + path.string());
    return path.string();
}

}  // namespace vellim::test
