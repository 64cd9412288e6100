#include "fuzz/strip_tiff.h"

#include "container/streams.h"
#include "fuzz/checks.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {

namespace {

constexpr uint32_t kHeaderBytes = 8;
constexpr uint32_t kEntryBytes = 12;

// Numbers in the file's byte order.
class Writer {
  public:
    explicit Writer(bool bigEndian) : bigEndian_(bigEndian) {}

    void Number(uint32_t value, uint32_t width) {
        for (uint32_t i = 0; i < width; ++i) {
            const uint32_t shift = 8 * (bigEndian_ ? width - 1 - i : i);
            bytes_.push_back(static_cast<uint8_t>(value >> shift));
        }
    }
    void Short(uint32_t value) { Number(value, 2); }
    void Long(uint32_t value) { Number(value, 4); }
    void Entry(uint16_t tag, uint32_t value) {
        Short(tag);
        Short(TIFF_TYPE_LONG);
        Long(1);
        Long(value);
    }

    std::vector<uint8_t>& Bytes() { return bytes_; }

  private:
    bool bigEndian_;
    std::vector<uint8_t> bytes_;
};

// The strip offsets stand behind the directory when there are several, the data behind them.
std::vector<uint8_t> Build(const StripTiff& image, const Layout& layout) {
    const uint32_t entries = image.optionTag == 0 ? 8 : 9;
    const auto strips = static_cast<uint32_t>(image.stripOffsets.size());
    const uint32_t offsetsStart = kHeaderBytes + 2 + entries * kEntryBytes + 4;
    const uint32_t dataStart = offsetsStart + (strips > 1 ? 4 * strips : 0);

    Writer file(layout.bigEndian);
    file.Short(layout.bigEndian ? TIFF_BIG_ENDIAN : TIFF_LITTLE_ENDIAN);
    file.Short(42);
    file.Long(kHeaderBytes);
    file.Short(entries);
    file.Entry(TIFF_TAG_IMAGE_WIDTH, image.width);
    file.Entry(TIFF_TAG_IMAGE_LENGTH, image.height);
    file.Entry(TIFF_TAG_BITS_PER_SAMPLE, image.bitsPerSample);
    file.Entry(TIFF_TAG_COMPRESSION, image.compression);
    file.Entry(TIFF_TAG_FILL_ORDER, layout.lsbFirst ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST);
    file.Short(TIFF_TAG_STRIP_OFFSETS);
    file.Short(TIFF_TYPE_LONG);
    file.Long(strips);
    file.Long(strips == 1 ? dataStart + image.stripOffsets[0] : offsetsStart);
    file.Entry(TIFF_TAG_SAMPLES_PER_PIXEL, image.samplesPerPixel);
    file.Entry(TIFF_TAG_ROWS_PER_STRIP, image.rowsPerStrip);
    if (image.optionTag != 0) file.Entry(image.optionTag, image.option);
    file.Long(0);
    if (strips > 1)
        for (const uint32_t offset : image.stripOffsets)
            file.Long(dataStart + offset);

    std::vector<uint8_t>& bytes = file.Bytes();
    Require(bytes.size() == dataStart, "the data starts where the directory says");
    bytes.insert(bytes.end(), image.data.begin(), image.data.end());
    if (layout.lsbFirst) ReverseBits(bytes.data() + dataStart, image.data.size());
    return bytes;
}

}  // namespace

Outcome DecodeStripTiff(const StripTiff& image, const Layout& layout, Hands hands,
                        uint32_t digestFrom) {
    const std::vector<uint8_t> bytes = Build(image, layout);
    const OwnedBlock block = BlockOf(bytes);
    const TiffFileHandle file =
        OpenTiffInMemory(block.Get(), static_cast<int32_t>(bytes.size()), T_READ);
    Require(file != 0 && GetTiffImage(file, 0) == 1, "a well-formed directory is read");

    const bool sensible = image.width > 0 && image.height > 0;
    const Expected expected = {image.RowBytes(), 0, sensible ? int64_t{image.height} : -1,
                               digestFrom};
    const Outcome outcome =
        Run(expected, hands, [&](uintptr_t callbackData, LineCallback callback) {
            return DecodeTiffImage(file, 0, 0, 0, callbackData, callback);
        });
    CloseTiffFile(file);
    return outcome;
}

void CutIntoStrips(StripTiff& image) {
    const uint32_t rows = image.rowsPerStrip == 0 ? image.height : image.rowsPerStrip;
    const uint64_t strips = rows == 0 ? 1 : (uint64_t{image.height} + rows - 1) / rows;
    const uint64_t count = strips == 0 ? 1 : strips;
    for (uint64_t strip = 0; strip < count; ++strip)
        image.stripOffsets.push_back(static_cast<uint32_t>(image.data.size() * strip / count));
}

}  // namespace vellim::fuzz
