// Tags of stored images and of new ones.

#include <gtest/gtest.h>

#include <numeric>

#include "container/opened_tiff.h"
#include "container/tag_buffer.h"
#include "container/tiff_file.h"
#include "vellim/failures.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim::test {
namespace {

constexpr uint16_t kPrivateTag = 40000;

struct Answer {
    int32_t result = -1;
    uint32_t type = 0, count = 0;
    Bytes value;
};

Answer Ask(TiffFileHandle file, uint32_t tag) {
    Answer answer;
    GlobalHandle block = 0;
    answer.result = GetTiffImageInfoBuffer(file, 0, tag, &block, &answer.type, &answer.count);
    const OwnedBlock owned(block);
    const LockedBlock locked(block);
    if (locked) answer.value.assign(locked.As<uint8_t>(), locked.As<uint8_t>() + locked.Size());
    return answer;
}

std::vector<uint32_t> AllTags(TiffFileHandle file) {
    const Answer answer = Ask(file, TIFF_ALL_TAGS);
    EXPECT_EQ(answer.type, uint32_t{TIFF_TYPE_LONG});
    EXPECT_EQ(answer.value.size(), 4 * answer.count);
    std::vector<uint32_t> tags;
    for (size_t i = 0; i < answer.value.size(); i += 4)
        tags.push_back(answer.value[i] + 256U * answer.value[i + 1]);
    return tags;
}

int32_t Define(TiffFileHandle file, const TagSpec& tag) {
    return DefineTiffImageInfoBuffer(file, 0, tag.tag, tag.value.data(), tag.type, tag.count);
}

TagSpec BytesTag(uint16_t tag, uint16_t type, size_t count) {
    TagSpec spec = {tag, type, static_cast<uint32_t>(count), Bytes(count)};
    std::iota(spec.value.begin(), spec.value.end(), uint8_t{1});
    return spec;
}

TEST(StoredTags, ComeInHostOrderWhateverTheFilesOrder) {
    const std::vector<TagSpec> tags = {
        ShortTag(256, {0x1234}),       ShortTag(257, {0x1234, 0x5678}),
        ShortTag(258, {1, 2, 3}),      LongTag(259, {0x12345678}),
        LongTag(260, {1, 0x12345678}), RationalTag(282, 204, 7),
        AsciiTag(269, "abc"),          AsciiTag(270, "a text that doesn't fit the entry"),
        BytesTag(300, 1, 3),           BytesTag(301, 7, 4),
        BytesTag(302, 1, 5000),        BytesTag(kPrivateTag, 99, 32767),
        {kPrivateTag + 1, 4, 0, {}},   {kPrivateTag + 2, 5, 0, {}},
    };
    for (const bool bigEndian : {false, true}) {
        for (const Storage storage : {Storage::kDisk, Storage::kMemory}) {
            const OpenedTiff tiff(BuildTiff({{tags, {}}}, bigEndian), storage);
            ASSERT_EQ(GetTiffImage(tiff.Handle(), 0), 1);
            for (const TagSpec& tag : tags) {
                const Answer answer = Ask(tiff.Handle(), tag.tag);
                EXPECT_EQ(answer.result, 1) << tag.tag;
                EXPECT_EQ(answer.type, tag.type) << tag.tag;
                EXPECT_EQ(answer.count, tag.count) << tag.tag;
                EXPECT_EQ(answer.value, tag.value) << tag.tag;
            }
            EXPECT_EQ(AllTags(tiff.Handle()),
                      (std::vector<uint32_t>{256, 257, 258, 259, 260, 269, 270, 282, 300, 301, 302,
                                             40000, 40001, 40002}));
        }
    }
}

TEST(StoredTags, AreLoadedOnceAndAgainAfterADrop) {
    const OpenedTiff tiff(BuildTiff({{{ShortTag(256, {5})}, {}}, {{ShortTag(256, {6})}, {}}}));
    ASSERT_EQ(GetTiffImage(tiff.Handle(), 0), 1);
    EXPECT_EQ(DefineTiffImageInfo(tiff.Handle(), 0, kPrivateTag, TIFF_TYPE_SHORT, 1), 1);
    EXPECT_EQ(TiffError(), TIFF_TAG_NOT_FOUND) << "the search for an old record leaves its code";
    EXPECT_EQ(GetTiffImage(tiff.Handle(), 0), 1);
    EXPECT_EQ(AllTags(tiff.Handle()).size(), 2U) << "loading again lost the tag";

    EXPECT_EQ(DropTiffImage(tiff.Handle(), 0), 1);
    EXPECT_EQ(IsTiffImageRegistered(tiff.Handle(), 0), 0);
    EXPECT_EQ(DropTiffImage(tiff.Handle(), 0), 0) << "a failure code is set";
    SetTiffError(TIFF_SUCCESS);
    EXPECT_EQ(DropTiffImage(tiff.Handle(), 0), 1);
    EXPECT_EQ(Ask(tiff.Handle(), 256).result, 0);
    EXPECT_EQ(TiffError(), TIFF_SUCCESS) << "a query on an image not in memory set a code";
    EXPECT_EQ(DefineTiffImage(tiff.Handle()), 1) << "a place that held tags isn't free";
    EXPECT_EQ(tiff.ImageCount(), 3);
    EXPECT_EQ(GetTiffImage(tiff.Handle(), 0), 1);
    EXPECT_EQ(AllTags(tiff.Handle()), (std::vector<uint32_t>{256}));
}

// The block of a memory TIFF is changed behind the back of its open handle. The directory holds
// one LONG tag with three elements; its entry begins 2 bytes into the directory.
TEST(StoredTags, OfADirectoryThatChangedAreTakenAsTheyAreNow) {
    const Bytes bytes = BuildTiff({{{LongTag(256, {7, 8, 9})}, {Bytes(4000, 1)}}});
    const size_t directory = bytes[4] + 256U * bytes[5];
    const struct {
        uint8_t countLow, countHigh, offsetByte3;
        int32_t result, code;
    } cases[] = {
        {3, 0, 0, 1, TIFF_SUCCESS},     {1, 0, 0, 1, TIFF_SUCCESS},
        {7, 0, 0, 1, TIFF_SUCCESS},     {200, 0, 0, 0, TIFF_IO_ERROR},
        {0, 0x20, 0, 0, TIFF_BAD_TAG},  {0xFF, 0x1F, 0, 0, TIFF_IO_ERROR},
        {3, 0, 0x80, 0, TIFF_IO_ERROR}, {3, 0, 0x7F, 0, TIFF_IO_ERROR},
    };
    for (const auto& c : cases) {
        const OpenedTiff tiff(bytes);
        {
            const LockedBlock locked(tiff.Block());
            auto* entry = locked.As<uint8_t>() + directory + 2;
            entry[4] = c.countLow;
            entry[5] = c.countHigh;
            entry[11] = c.offsetByte3;
        }
        EXPECT_EQ(GetTiffImage(tiff.Handle(), 0), c.result) << int{c.countLow};
        EXPECT_EQ(TiffError(), c.code) << int{c.countLow};
        EXPECT_EQ(IsTiffImageRegistered(tiff.Handle(), 0), c.result);
        EXPECT_EQ(Ask(tiff.Handle(), 256).count, c.result == 1 ? c.countLow : 0);
    }
}

TEST(FirstElement, IsStoredByItsType) {
    const struct {
        TagSpec tag;
        uint32_t first, second;
    } cases[] = {
        {BytesTag(1, TIFF_TYPE_BYTE, 2), 0xEEEEEE01, 0xEEEEEEEE},
        {ShortTag(2, {0x1234, 5}), 0x1234, 0xEEEEEEEE},
        {LongTag(3, {0x12345678, 5}), 0x12345678, 0xEEEEEEEE},
        {RationalTag(4, 204, 7), 204, 7},
        {AsciiTag(5, "text"), 0xEEEEEEEE, 0xEEEEEEEE},
        {BytesTag(6, 7, 4), 0xEEEEEEEE, 0xEEEEEEEE},
        {{7, TIFF_TYPE_BYTE, 0, {}}, 0xEEEEEEEE, 0xEEEEEEEE},
        {{8, TIFF_TYPE_SHORT, 0, {}}, 0xEEEEEEEE, 0xEEEEEEEE},
        {{9, TIFF_TYPE_RATIONAL, 0, {}}, 0xEEEEEEEE, 0xEEEEEEEE},
    };
    const NewImage image;
    ASSERT_EQ(DefineTiffImage(image.Handle()), 0);
    for (const auto& c : cases) {
        ASSERT_EQ(Define(image.Handle(), c.tag), 1);
        uint32_t value[2] = {0xEEEEEEEE, 0xEEEEEEEE};
        EXPECT_EQ(GetTiffImageInfo(image.Handle(), 0, c.tag.tag, value), 1) << c.tag.tag;
        EXPECT_EQ(value[0], c.first) << c.tag.tag;
        EXPECT_EQ(value[1], c.second) << c.tag.tag;
        EXPECT_EQ(GetTiffImageInfo(image.Handle(), 0, c.tag.tag, nullptr), 1);
    }
    for (const uint32_t tag : {10U, 0x10002U}) {
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(GetTiffImageInfo(image.Handle(), 0, tag, nullptr), 0);
        EXPECT_EQ(TiffError(), TIFF_TAG_NOT_FOUND);
    }
}

TEST(DefinedTags, ReplaceTheirOldValueAtTheEndOfTheList) {
    const NewImage image;
    ASSERT_EQ(DefineTiffImage(image.Handle()), 0);
    EXPECT_EQ(Ask(image.Handle(), TIFF_ALL_TAGS).count, 0U);
    for (const TagSpec& tag : {ShortTag(300, {1}), BytesTag(100, 1, 3000), LongTag(200, {2})})
        ASSERT_EQ(Define(image.Handle(), tag), 1);
    ASSERT_EQ(Define(image.Handle(), AsciiTag(300, "longer than before")), 1);
    ASSERT_EQ(DefineTiffImageInfo(image.Handle(), 0, 100, TIFF_TYPE_SHORT, 0x10005), 1);
    EXPECT_EQ(AllTags(image.Handle()), (std::vector<uint32_t>{200, 300, 100}));
    EXPECT_EQ(Ask(image.Handle(), 200).value, LongTag(200, {2}).value);
    EXPECT_EQ(Ask(image.Handle(), 300).value, AsciiTag(300, "longer than before").value);
    EXPECT_EQ(Ask(image.Handle(), 100).value, ShortTag(100, {5}).value);

    EXPECT_TRUE(RemoveTiffTag(image.Handle(), 0, 300));
    EXPECT_FALSE(RemoveTiffTag(image.Handle(), 0, 300));
    EXPECT_EQ(AllTags(image.Handle()), (std::vector<uint32_t>{200, 100}));
    EXPECT_EQ(GetTiffImageInfoBuffer(image.Handle(), 0, 0, nullptr, nullptr, nullptr), 1);
}

TEST(DefinedTags, GrowTheirBufferByWhatIsMissing) {
    const NewImage image;
    ASSERT_EQ(DefineTiffImage(image.Handle()), 0);
    const auto blockSize = [&] { return GlobalSize(TagBufferOf(image.Handle(), 0)); };
    EXPECT_EQ(blockSize(), 111U);
    ASSERT_EQ(Define(image.Handle(), BytesTag(1, 1, 90)), 1);
    EXPECT_EQ(blockSize(), 111U) << "a record of exactly the capacity fits";
    ASSERT_EQ(Define(image.Handle(), BytesTag(2, 1, 1)), 1);
    EXPECT_EQ(blockSize(), 100U + 11 + 11);
    for (uint16_t tag = 3; tag < 300; tag++)
        ASSERT_EQ(Define(image.Handle(), BytesTag(tag, 1, tag)), 1);
    for (uint16_t tag = 3; tag < 300; tag++)
        ASSERT_EQ(Ask(image.Handle(), tag).value, BytesTag(tag, 1, tag).value);
}

TEST(DefinedTags, ThatCannotBeHeldLeaveTheOldOnes) {
    const NewImage image;
    ASSERT_EQ(DefineTiffImage(image.Handle()), 0);
    const Bytes bytes(70000, 0x5A);
    ASSERT_EQ(DefineTiffImageInfoBuffer(image.Handle(), 0, 300, bytes.data(), 1, 65525), 1);
    const struct {
        uint32_t tag;
        const void* value;
        uint32_t type, count;
        int32_t code;
    } cases[] = {
        {300, bytes.data(), 1, 65526, TIFF_BAD_TAG},
        {300, bytes.data(), 5, 8191, TIFF_BAD_TAG},
        {300, bytes.data(), 4, 0x40000001, TIFF_BAD_TAG},
        {300, bytes.data(), 0x10003, 1, TIFF_BAD_TAG},
        {0x1012C, bytes.data(), 3, 1, TIFF_BAD_TAG},
        {300, nullptr, 1, 1, TIFF_SUCCESS},
    };
    for (const auto& c : cases) {
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(DefineTiffImageInfoBuffer(image.Handle(), 0, c.tag, c.value, c.type, c.count), 0);
        EXPECT_EQ(TiffError(), c.code) << c.count;
        EXPECT_EQ(Ask(image.Handle(), 300).count, 65525U) << c.count;
    }
    EXPECT_EQ(DefineTiffImageInfoBuffer(image.Handle(), 0, 301, nullptr, 1, 0), 1);
}

TEST(NewImages, TakeTheFirstFreeOfAThousandPlaces) {
    const NewImage image;
    for (int32_t expected = 0; expected < TIFF_MAX_IMAGES; expected++)
        ASSERT_EQ(DefineTiffImage(image.Handle()), expected);
    EXPECT_EQ(DefineTiffImage(image.Handle()), -1);
    EXPECT_EQ(TiffError(), TIFF_NO_MEMORY);

    const OpenedTiff stored(BuildTiff({{{ShortTag(256, {5})}, {}}, {{ShortTag(256, {6})}, {}}}));
    EXPECT_EQ(GetTiffImage(stored.Handle(), 0), 1);
    EXPECT_EQ(DefineTiffImage(stored.Handle()), 1) << "a stored image that isn't loaded gives way";
    EXPECT_EQ(DefineTiffImage(stored.Handle()), 2);
    EXPECT_EQ(stored.ImageCount(), 4);
}

TEST(NewImages, GoWithTheirFile) {
    const TiffFileHandle file = OpenTiffFile("never-written.tif", T_CREAT);
    EXPECT_EQ(DefineTiffImage(file) + DefineTiffImage(file), 1);
    const GlobalHandle tags = TagBufferOf(file, 1);
    EXPECT_EQ(GlobalSize(tags), 111U);
    EXPECT_EQ(CloseTiffFile(file), 1);
    EXPECT_EQ(GlobalSize(tags), 0U) << "the tags outlive their file";
}

TEST(ImageIndex, OutsideTheTableIsCode3InEveryCall) {
    const OpenedTiff tiff(BuildTiff({{{ShortTag(256, {5})}, {}}}));
    const TiffFileHandle file = tiff.Handle();
    const auto failsWithCode3 = [](int32_t result) {
        return result == 0 && SetTiffError(TIFF_SUCCESS) == TIFF_BAD_INDEX;
    };
    for (const int32_t image : {-1, 1000, INT32_MAX, INT32_MIN}) {
        EXPECT_TRUE(failsWithCode3(GetTiffImage(file, image)));
        EXPECT_TRUE(failsWithCode3(DropTiffImage(file, image)));
        EXPECT_TRUE(failsWithCode3(GetTiffImageInfo(file, image, 256, nullptr)));
        EXPECT_TRUE(
            failsWithCode3(GetTiffImageInfoBuffer(file, image, 0, nullptr, nullptr, nullptr)));
        EXPECT_TRUE(failsWithCode3(DefineTiffImageInfo(file, image, 256, 3, 1)));
    }
    EXPECT_TRUE(failsWithCode3(GetTiffImage(file, 1))) << "behind the last image";
}

}  // namespace
}  // namespace vellim::test
