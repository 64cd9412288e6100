// A TIFF file of any bytes: opening, walking its images, their tags and what the tags mean.
#include <algorithm>
#include <array>
#include <vector>

#include "fuzz/checks.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {

namespace {

// A chain that loops has as many images as there are places, all alike.
constexpr int32_t kMaxImages = 24;

std::vector<uint32_t> TagNumbers(TiffFileHandle file, int32_t image) {
    GlobalHandle list = 0;
    uint32_t type = 0;
    uint32_t count = 0;
    const int32_t listed = GetTiffImageInfoBuffer(file, image, TIFF_ALL_TAGS, &list, &type, &count);
    RequireTold(listed, TiffError());
    const OwnedBlock owned(list);
    if (listed == 0) return {};
    const LockedBlock locked(list);
    Require(locked.Size() == count * sizeof(uint32_t), "the list is as long as its count");
    const auto* numbers = locked.As<uint32_t>();
    return {numbers, numbers + count};
}

void ReadTag(TiffFileHandle file, int32_t image, uint32_t tag) {
    std::array<uint32_t, 2> first{};
    Require(tag == 0 || GetTiffImageInfo(file, image, tag, first.data()) == 1,
            "a listed tag is there");
    GlobalHandle value = 0;
    uint32_t type = 0;
    uint32_t count = 0;
    if (GetTiffImageInfoBuffer(file, image, tag, &value, &type, &count) != 1) return;
    const OwnedBlock owned(value);
    const uint64_t bytes = GlobalSize(value);
    Require(bytes % (count == 0 ? 1 : count) == 0, "a value is a whole number of elements");
}

void AskAll(TiffFileHandle file, int32_t image) {
    TiffDimensions dimensions{};
    const int32_t code = GetTiffDimensions(file, image, &dimensions);
    Require(code == 0 || code == TIFF_TAG_MISSING || code == TIFF_BAD_COLOR_FORMAT,
            "dimensions fail by their own codes");
    const OwnedBlock header(GetTiffRGBQuad(file, image));
    if (header) {
        Require(code == 0, "no colours without dimensions");
        Require(GlobalSize(header.Get()) ==
                    sizeof(TiffDimensions) + dimensions.biClrUsed * sizeof(RGBQUAD),
                "header and table fill their block");
    }
    GetTiffRowsPerStrip(file, image);
    GetTiffStripCount(file, image);
    uint32_t dpi = 0;
    GetTiffImageDPI(file, image, &dpi);
}

// Tags can be replaced and added whatever the stored ones are. Of a tag that is stored twice the
// other one comes to light.
void Redefine(TiffFileHandle file, int32_t image, std::vector<uint32_t> stored) {
    constexpr uint32_t kDpi = 0x00C800CC;
    std::array<uint8_t, 300> text{};
    if (DefineTiffImageInfo(file, image, TIFF_TAG_RESOLUTION_UNIT, TIFF_TYPE_SHORT, 2) != 1) return;
    Require(DefineTiffImageInfoBuffer(file, image, TIFF_TAG_IMAGE_DESCRIPTION, text.data(),
                                      TIFF_TYPE_ASCII, text.size()) == 1,
            "a text is stored");
    Require(SetTiffImageDPI(file, image, kDpi) == 0, "a resolution is stored");
    uint32_t dpi = 0;
    GetTiffImageDPI(file, image, &dpi);
    std::sort(stored.begin(), stored.end());
    const bool twice = std::adjacent_find(stored.begin(), stored.end()) != stored.end();
    Require(dpi == kDpi || twice, "a resolution is read back");
}

void WalkImage(TiffFileHandle file, int32_t image) {
    const int32_t loaded = GetTiffImage(file, image);
    RequireTold(loaded, TiffError());
    Require(IsTiffImageRegistered(file, image) == loaded, "a loaded image is registered");
    if (loaded == 0) return;
    const std::vector<uint32_t> tags = TagNumbers(file, image);
    for (const uint32_t tag : tags)
        ReadTag(file, image, tag);
    AskAll(file, image);
    Redefine(file, image, tags);
    AskAll(file, image);
    Require(DropTiffImage(file, image) == 1, "a loaded image is dropped");
}

}  // namespace

}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    const BlockBalance balance;
    const vellim::OwnedBlock block(vellim::test::BlockOf({data, data + size}));
    const TiffFileHandle file = OpenTiffInMemory(block.Get(), static_cast<int32_t>(size), T_READ);
    if (file == 0) {
        Require(TiffError() != TIFF_SUCCESS, "a refusal has a code");
        return 0;
    }
    TiffFileInfo info{};
    Require(GetTiffFileInfo(file, &info) == 1, "an open file tells of itself");
    const int32_t count = NumberOfTiffImages(file, TIFF_ALL_IMAGES);
    Require(
        count >= 0 && count <= TIFF_MAX_IMAGES && info.ImageCount == static_cast<uint32_t>(count),
        "the number of images is told alike");
    for (int32_t image = 0; image < count && image < kMaxImages; ++image)
        WalkImage(file, image);
    Require(CloseTiffFile(file) == 1, "an open file is closed");
    return 0;
}
