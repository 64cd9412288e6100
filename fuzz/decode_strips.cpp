// The byte-oriented decoders on images in strips: one target for LZW, with and without
// differencing, one for PackBits and uncompressed data, as FUZZ_COMPRESSION says.
//
// Input: a byte of settings (bits 0 and 1: depth; bit 2: Predictor 2, or uncompressed), width (two
// bytes, low byte first), height (a byte), rows a strip (a byte), data. The same image stored in
// the other byte order and the other FillOrder must come out alike.
#include <algorithm>
#include <array>

#include "container/streams.h"
#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "fuzz/lines.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {

namespace {

constexpr uint16_t kUncompressed = 1;
constexpr bool kLzw = FUZZ_COMPRESSION == 5;

struct Picture {
    uint16_t bits, samples;
    bool option;  // bit 2 of the settings
    uint32_t width, height, rowsPerStrip;
    test::Bytes data;  // cut into strips of even length
};

Picture ReadPicture(Input& input) {
    constexpr std::array<std::array<uint16_t, 2>, 4> kDepths = {{{1, 1}, {4, 1}, {8, 1}, {8, 3}}};
    const uint8_t choice = input.Byte();
    const auto [bits, samples] = kDepths[choice & 3U];
    Picture picture{bits, samples, (choice & 4U) != 0, input.Word(), 0, 0, {}};
    picture.height = input.Byte();
    picture.rowsPerStrip = input.Byte();
    picture.data = input.Rest();
    return picture;
}

// The data ends the file, so that what a decoder finds behind the last strip doesn't depend on how
// the directory is written.
test::Bytes Build(const Picture& picture, bool bigEndian, bool lsbFirst) {
    const uint16_t compression = !kLzw && picture.option ? kUncompressed : FUZZ_COMPRESSION;
    test::ImageSpec image = test::SimpleImage(picture.width, picture.height, picture.bits,
                                              picture.samples, compression, 1, 0, {});
    const uint16_t order = lsbFirst ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST;
    image.tags.push_back(test::ShortTag(TIFF_TAG_FILL_ORDER, {order}));
    image.tags.push_back(test::LongTag(TIFF_TAG_ROWS_PER_STRIP, {picture.rowsPerStrip}));
    if (kLzw && picture.option) image.tags.push_back(test::ShortTag(TIFF_TAG_PREDICTOR, {2}));

    const uint32_t rows = picture.rowsPerStrip == 0 ? picture.height : picture.rowsPerStrip;
    const uint32_t strips = rows == 0 ? 1 : std::max(1U, (picture.height + rows - 1) / rows);
    std::vector<uint32_t> offsets(strips);
    image.tags.push_back(test::LongTag(TIFF_TAG_STRIP_OFFSETS, offsets));
    const size_t dataStart = test::BuildTiff({image}).size();
    for (size_t strip = 0; strip < strips; ++strip)
        offsets[strip] = static_cast<uint32_t>(dataStart + picture.data.size() * strip / strips);
    image.tags.back() = test::LongTag(TIFF_TAG_STRIP_OFFSETS, offsets);
    test::Bytes file = test::BuildTiff({image}, bigEndian);
    file.insert(file.end(), picture.data.begin(), picture.data.end());
    if (lsbFirst) ReverseBits(file.data() + dataStart, picture.data.size());
    return file;
}

Outcome DecodePicture(const Picture& picture, bool mirrored, Hands hands) {
    const test::Bytes bytes = Build(picture, mirrored, mirrored);
    const OwnedBlock block(test::BlockOf(bytes));
    const TiffFileHandle file =
        OpenTiffInMemory(block.Get(), static_cast<int32_t>(bytes.size()), T_READ);
    Require(file != 0 && GetTiffImage(file, 0) == 1, "a well-formed directory is read");

    const bool sensible = picture.width > 0 && picture.height > 0;
    const Expected expected = {(picture.width * picture.bits * picture.samples + 7) / 8, 0,
                               sensible ? int64_t{picture.height} : -1};
    const Outcome outcome =
        Run(expected, hands, [&](uintptr_t callbackData, LineCallback callback) {
            return DecodeTiffImage(file, 0, 0, 0, callbackData, callback);
        });
    CloseTiffFile(file);
    return outcome;
}

}  // namespace

}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    const BlockBalance balance;
    Input input(data, size);
    const Picture picture = ReadPicture(input);
    const Outcome plain = DecodePicture(picture, false, Hands::Off);
    const Outcome other = DecodePicture(picture, true, kLzw ? Hands::Off : Hands::Scribbling);
    Require(plain == other, "the layout of the file doesn't change the picture");
    return 0;
}
