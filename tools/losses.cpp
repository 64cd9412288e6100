// Losses are told from the tags, and from the links of the chain (TIFF 6.0, section 2), which are
// read here because the library takes in no more than TIFF_MAX_IMAGES of them.
#include "losses.h"

#include <algorithm>
#include <array>

#include "messages.h"
#include "stored_directory.h"
#include "tag_names.h"
#include "tag_rules.h"
#include "tag_values.h"
#include "vellim/codec.h"
#include "vellim/files.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kBitsOfAByte = 8;
constexpr uint32_t kFreeOffsets = 288;
constexpr uint32_t kFreeByteCounts = 289;

// Values of Compression (TIFF 6.0, sections 8 to 11 and 22; supplements) whose data is a sequence
// of bytes, whatever the byte order of the file. All others hold samples of 16 bits and more in it.
constexpr auto kByteOriented = std::to_array<uint32_t>(
    {2, 3, 4, 6, 7, 9, 10, 32771, 34661, 34676, 34677, 34712, 50001, 50002});

bool Has(TiffFileHandle file, int32_t image, uint32_t tag) {
    return GetTiffImageInfo(file, image, tag, nullptr) != 0;
}

uint32_t CountOf(TiffFileHandle file, int32_t image, uint32_t tag) {
    uint32_t count = 0;
    GetTiffImageInfoBuffer(file, image, tag, nullptr, nullptr, &count);
    return count;
}

uint32_t TypeOf(TiffFileHandle file, int32_t image, uint32_t tag) {
    uint32_t type = 0;
    GetTiffImageInfoBuffer(file, image, tag, nullptr, &type, nullptr);
    return type;
}

bool IsOldJpeg(TiffFileHandle file, int32_t image) {
    return ReadNumber(file, image, TIFF_TAG_COMPRESSION).value_or(1) == TIFF_KEY_JPEG;
}

bool IsJpegTable(uint32_t tag) {
    return tag >= TIFF_TAG_JPEG_Q_TABLES && tag <= TIFF_TAG_JPEG_AC_TABLES;
}

// A single sample of 24 bits is three bytes, as the library itself writes them.
bool SamplesFollowByteOrder(TiffFileHandle file, int32_t image) {
    const uint32_t compression = ReadNumber(file, image, TIFF_TAG_COMPRESSION).value_or(1);
    const uint32_t bits = ReadNumber(file, image, TIFF_TAG_BITS_PER_SAMPLE).value_or(1);
    const bool wide =
        bits == 2 * kBitsOfAByte || bits == 4 * kBitsOfAByte || bits == 8 * kBitsOfAByte;
    return wide && std::find(kByteOriented.begin(), kByteOriented.end(), compression) ==
                       kByteOriented.end();
}

bool LeadsToDirectory(uint32_t tag, uint32_t type) {
    const bool oldJpeg = tag == 513 || tag == 514 || IsJpegTable(tag);
    return type == kFieldDirectory || (RuleOf(tag).role == TagRole::PointsIntoFile && !oldJpeg);
}

bool StaysBehind(TiffFileHandle file, int32_t image, uint32_t tag, bool oldJpeg) {
    if (TypeOf(file, image, tag) == kFieldDirectory) return true;
    switch (tag) {
        case kFreeOffsets:  // nothing lies there
        case kFreeByteCounts:
            return false;
        case TIFF_TAG_STRIP_OFFSETS:
        case TIFF_TAG_STRIP_BYTE_COUNTS:
            return oldJpeg;
        case TIFF_TAG_TILE_OFFSETS:
        case TIFF_TAG_TILE_BYTE_COUNTS:
            return !oldJpeg;
        default:
            return RuleOf(tag).role == TagRole::PointsIntoFile && !(oldJpeg && IsJpegTable(tag));
    }
}

std::string OldJpegObstacle(TiffFileHandle file, int32_t image) {
    for (const uint32_t tag :
         {TIFF_TAG_TILE_OFFSETS, TIFF_TAG_TILE_BYTE_COUNTS, TIFF_TAG_JPEG_Q_TABLES,
          TIFF_TAG_JPEG_DC_TABLES, TIFF_TAG_JPEG_AC_TABLES}) {
        if (!Has(file, image, tag)) {
            return "it is JPEG of the kind of 1992 without " + TagInWords(tag) +
                   ", which can be neither copied nor edited";
        }
    }
    return {};
}

}  // namespace

uint16_t ByteOrderOf(TiffFileHandle file) {
    TiffFileInfo info = {};
    GetTiffFileInfo(file, &info);
    return info.ByteOrder;
}

std::string CarryObstacle(const Document& document, int32_t image, uint16_t order) {
    const TiffFileHandle file = document.File();
    const bool oldJpeg = IsOldJpeg(file, image);
    if (oldJpeg) {
        std::string obstacle = OldJpegObstacle(file, image);
        if (!obstacle.empty()) return obstacle;
    }
    const uint32_t offsets = oldJpeg ? TIFF_TAG_TILE_OFFSETS : TIFF_TAG_STRIP_OFFSETS;
    const uint32_t counts = oldJpeg ? TIFF_TAG_TILE_BYTE_COUNTS : TIFF_TAG_STRIP_BYTE_COUNTS;
    if (!Has(file, image, offsets) && Has(file, image, TIFF_TAG_TILE_OFFSETS)) {
        return "it is stored in tiles, which can be neither copied nor edited";
    }
    if (!Has(file, image, offsets) || !Has(file, image, counts)) {
        return TagInWords(Has(file, image, offsets) ? counts : offsets) +
               " is missing, and without it the image can be neither copied nor edited";
    }
    if (CountOf(file, image, offsets) != CountOf(file, image, counts)) {
        return TagInWords(offsets) + " and " + TagInWords(counts) +
               " disagree on how many pieces the image is stored in";
    }
    if (order != ByteOrderOf(file) && SamplesFollowByteOrder(file, image)) {
        return "its samples are stored in the byte order of its file, and the new file would have "
               "the other";
    }
    return {};
}

std::vector<uint32_t> TagsLeftDangling(TiffFileHandle file, int32_t image) {
    const bool oldJpeg = IsOldJpeg(file, image);
    std::vector<uint32_t> tags = ReadTagNumbers(file, image);
    std::erase_if(tags, [&](uint32_t tag) { return !StaysBehind(file, image, tag, oldJpeg); });
    return tags;
}

std::string DanglingInWords(TiffFileHandle file, int32_t image, uint32_t tag) {
    const bool directory = LeadsToDirectory(tag, TypeOf(file, image, tag));
    return TagInWords(tag) + " points to " + (directory ? "a directory" : "data of its own") +
           ", which would be lost";
}

std::string LeftOutInWords(TiffFileHandle file, int32_t image, uint32_t tag) {
    const bool directory = LeadsToDirectory(tag, TypeOf(file, image, tag));
    return TagInWords(tag) + " was left out, with the " + (directory ? "directory" : "data") +
           " that it pointed to";
}

// A chain that runs in a circle seems to have as many images as the library takes in. It is told
// from a long one by a directory that comes twice.
std::string ImagesOutOfReach(const Document& document) {
    if (document.chainBroken) return BrokenChainMessage(document);
    if (document.imageCount < TIFF_MAX_IMAGES) return {};
    const StoredDirectories links(document.File());
    std::vector<uint32_t> seen;
    uint32_t link = links.First();
    while (link != 0 && seen.size() < TIFF_MAX_IMAGES) {
        const auto before = std::find(seen.begin(), seen.end(), link);
        if (before != seen.end()) {
            return "the chain of images runs in a circle: behind image " +
                   std::to_string(seen.size()) + " comes image " +
                   std::to_string(before - seen.begin() + 1) + " again; vellim pages --pages 1-" +
                   std::to_string(seen.size()) + " makes a sound file of it";
        }
        seen.push_back(link);
        link = links.Next(link);
    }
    if (link == 0) return {};
    return "there are more than " + std::to_string(TIFF_MAX_IMAGES) +
           " images in it; those behind can't be reached";
}

}  // namespace vellim::tool
