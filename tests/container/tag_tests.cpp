// Tags of stored images and of new ones.
#include <gtest/gtest.h>

#include <cstring>

#include "container/opened_tiff.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::test {
namespace {

constexpr uint32_t kUntouched = 0xEEEEEEEE;

std::vector<uint32_t> AllTags(TiffFileHandle file) {
    const Asked answer = Ask(file, TIFF_ALL_TAGS);
    std::vector<uint32_t> tags(answer.value.size() / 4);
    std::memcpy(tags.data(), answer.value.data(), 4 * tags.size());
    return tags;
}

TagSpec BytesTag(uint16_t tag, uint16_t type, uint32_t count) {
    return {tag, type, count, Counted(count)};
}

TEST(StoredTags, ComeInHostOrderWhateverTheFilesOrder) {
    const std::vector<TagSpec> tags = {ShortTag(256, {0x1234}),       ShortTag(258, {1, 2, 3}),
                                       LongTag(260, {1, 0x12345678}), AsciiTag(269, "abc"),
                                       RationalTag(282, 204, 7),      BytesTag(300, 1, 3),
                                       BytesTag(40000, 99, 32767),    {40001, 4, 0, {}}};
    for (const bool bigEndian : {false, true}) {
        const OpenedTiff tiff(BuildTiff({{tags, {}}}, bigEndian),
                              bigEndian ? Storage::kMemory : Storage::kDisk);
        ASSERT_EQ(GetTiffImage(tiff.Handle(), 0), 1);
        EXPECT_EQ(AllTags(tiff.Handle()).size(), tags.size());
        for (const TagSpec& tag : tags) {
            const Asked answer = Ask(tiff.Handle(), tag.tag);
            EXPECT_TRUE(answer.result == 1 && answer.type == tag.type) << tag.tag;
            EXPECT_TRUE(answer.count == tag.count && answer.value == tag.value) << tag.tag;
        }
    }
}

TEST(StoredTags, AreLoadedOnceAndAgainAfterADrop) {
    const OpenedTiff tiff(BuildTiff({{{ShortTag(256, {5})}, {}}, {{ShortTag(256, {6})}, {}}}));
    const TiffFileHandle file = tiff.Handle();
    ASSERT_EQ(GetTiffImage(file, 0), 1);
    EXPECT_EQ(DefineTiffImageInfo(file, 0, 40000, TIFF_TYPE_SHORT, 1), 1);
    EXPECT_EQ(TiffError(), TIFF_TAG_NOT_FOUND) << "the search for an old record leaves its code";
    EXPECT_EQ(GetTiffImage(file, 0), 1);
    EXPECT_EQ(AllTags(file).size(), 2U) << "loading again lost the tag";

    EXPECT_EQ(DropTiffImage(file, 0), 1);
    EXPECT_EQ(DropTiffImage(file, 0), 0) << "a failure code is set";
    SetTiffError(TIFF_SUCCESS);
    EXPECT_EQ(Ask(file, 256).result + GetTiffImageInfo(file, 0, 0, nullptr) + TiffError(), 0);
    EXPECT_EQ(DefineTiffImage(file), 1) << "a place that held tags isn't free, one never loaded is";
    EXPECT_EQ(GetTiffImage(file, 0), 1);
    EXPECT_EQ(AllTags(file), (std::vector<uint32_t>{256}));
}

TEST(StoredTags, OfADirectoryThatChangedAreTakenAsTheyAreNow) {
    const Bytes bytes = BuildTiff({{{LongTag(256, {7, 8, 9})}, {Bytes(4000, 1)}}});
    const OpenedTiff tiff(bytes);  // whose only entry is changed behind the back of its handle
    LockedBlock(tiff.Block()).As<uint8_t>()[bytes[4] + 256U * bytes[5] + 7] = 0x20;
    EXPECT_EQ(GetTiffImage(tiff.Handle(), 0), 0);
    EXPECT_EQ(TiffError(), TIFF_BAD_TAG) << "more elements than a buffer holds";
}

TEST(FirstElement, IsStoredByItsType) {
    struct Case {
        TagSpec tag;
        uint32_t first, second;
    };
    const OpenedTiff tiff;
    ASSERT_EQ(DefineTiffImage(tiff.Handle()), 0);
    for (const Case& c : {Case{BytesTag(1, TIFF_TYPE_BYTE, 2), 0xEEEEEE01, kUntouched},
                          {ShortTag(2, {0x1234, 5}), 0x1234, kUntouched},
                          {RationalTag(4, 204, 7), 204, 7}}) {
        uint32_t value[2] = {kUntouched, kUntouched};
        ASSERT_EQ(Define(tiff.Handle(), 0, c.tag), 1);
        EXPECT_EQ(GetTiffImageInfo(tiff.Handle(), 0, c.tag.tag, value), 1) << c.tag.tag;
        EXPECT_EQ(std::pair(value[0], value[1]), std::pair(c.first, c.second)) << c.tag.tag;
    }
    EXPECT_EQ(GetTiffImageInfo(tiff.Handle(), 0, 0x10002, nullptr), 0);
    EXPECT_EQ(TiffError(), TIFF_TAG_NOT_FOUND);
}

TEST(DefinedTags, ReplaceTheirOldValueAtTheEndOfTheList) {
    const OpenedTiff tiff;
    const TiffFileHandle file = tiff.Handle();
    ASSERT_EQ(DefineTiffImage(file), 0);
    for (const TagSpec& tag : {ShortTag(300, {1}), BytesTag(100, 1, 3000), LongTag(200, {2}),
                               AsciiTag(300, "longer than before")})
        ASSERT_EQ(Define(file, 0, tag), 1);
    ASSERT_EQ(DefineTiffImageInfo(file, 0, 100, TIFF_TYPE_SHORT, 0x10005), 1);
    EXPECT_EQ(AllTags(file), (std::vector<uint32_t>{200, 300, 100}));
    EXPECT_EQ(Ask(file, 100).value, (Bytes{5, 0}));
}

TEST(DefinedTags, ThatCannotBeHeldLeaveTheOldOnes) {
    const OpenedTiff tiff;
    ASSERT_EQ(DefineTiffImage(tiff.Handle()), 0);
    const Bytes bytes(70000, 0x5A);
    const auto define = [&](uint32_t tag, uint32_t type, uint32_t count) {
        return DefineTiffImageInfoBuffer(tiff.Handle(), 0, tag, bytes.data(), type, count);
    };
    ASSERT_EQ(define(300, 1, 65525), 1);
    EXPECT_EQ(define(300, 0x10003, 1), 0);
    EXPECT_EQ(TiffError(), TIFF_BAD_TAG);
    EXPECT_EQ(define(300, 1, 65526) + define(300, 4, 0x40000001), 0);
    EXPECT_EQ(TiffError(), TIFF_NO_MEMORY);
    EXPECT_EQ(Ask(tiff.Handle(), 300).count, 65525U);
}

TEST(ImageIndex, IsOneOfAThousandPlaces) {
    const OpenedTiff tiff;
    for (const int32_t image : {-1, 1000, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(GetTiffImage(tiff.Handle(), image), 0) << image;
        EXPECT_EQ(SetTiffError(TIFF_SUCCESS), TIFF_BAD_INDEX) << image;
    }
    for (int32_t expected = 0; expected < TIFF_MAX_IMAGES; expected++)
        ASSERT_EQ(DefineTiffImage(tiff.Handle()), expected);
    EXPECT_EQ(DefineTiffImage(tiff.Handle()), -1);
    EXPECT_EQ(TiffError(), TIFF_NO_MEMORY);
}

}  // namespace
}  // namespace vellim::test
