// Tags of stored images and of new ones.
#include <gtest/gtest.h>

#include <cstring>
#include <numeric>

#include "container/opened_tiff.h"
#include "container/tag_buffer.h"
#include "vellim/failures.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim::test {
namespace {

constexpr uint16_t kPrivateTag = 40000;
constexpr uint32_t kUntouched = 0xEEEEEEEE;

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
    std::vector<uint32_t> tags(answer.value.size() / 4);
    std::memcpy(tags.data(), answer.value.data(), 4 * tags.size());
    EXPECT_EQ(tags.size(), answer.count);
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
        LongTag(260, {1, 0x12345678}), AsciiTag(269, "abc"),
        AsciiTag(270, "long enough"),  RationalTag(282, 204, 7),
        BytesTag(300, 1, 3),           BytesTag(301, 7, 4),
        BytesTag(302, 1, 5000),        BytesTag(kPrivateTag, 99, 32767),
        {kPrivateTag + 1, 4, 0, {}},   {kPrivateTag + 2, 5, 0, {}},
    };
    for (const bool bigEndian : {false, true}) {
        for (const Storage storage : {Storage::kDisk, Storage::kMemory}) {
            const OpenedTiff tiff(BuildTiff({{tags, {}}}, bigEndian), storage);
            ASSERT_EQ(GetTiffImage(tiff.Handle(), 0), 1);
            std::vector<uint32_t> inOrder;
            for (const TagSpec& tag : tags) {
                const Answer answer = Ask(tiff.Handle(), tag.tag);
                EXPECT_TRUE(answer.result == 1 && answer.type == tag.type) << tag.tag;
                EXPECT_TRUE(answer.count == tag.count && answer.value == tag.value) << tag.tag;
                inOrder.push_back(tag.tag);
            }
            EXPECT_EQ(AllTags(tiff.Handle()), inOrder);
        }
    }
}

TEST(StoredTags, AreLoadedOnceAndAgainAfterADrop) {
    const OpenedTiff tiff(BuildTiff({{{ShortTag(256, {5})}, {}}, {{ShortTag(256, {6})}, {}}}));
    const TiffFileHandle file = tiff.Handle();
    ASSERT_EQ(GetTiffImage(file, 0), 1);
    EXPECT_EQ(DefineTiffImageInfo(file, 0, kPrivateTag, TIFF_TYPE_SHORT, 1), 1);
    EXPECT_EQ(TiffError(), TIFF_TAG_NOT_FOUND) << "the search for an old record leaves its code";
    EXPECT_EQ(GetTiffImage(file, 0), 1);
    EXPECT_EQ(AllTags(file).size(), 2U) << "loading again lost the tag";

    EXPECT_EQ(DropTiffImage(file, 0), 1);
    EXPECT_EQ(DropTiffImage(file, 0), 0) << "a failure code is set";
    SetTiffError(TIFF_SUCCESS);
    EXPECT_EQ(DropTiffImage(file, 0), 1);
    EXPECT_EQ(Ask(file, 256).result + GetTiffImageInfo(file, 0, 0, nullptr), 0);
    EXPECT_EQ(TiffError(), TIFF_SUCCESS) << "a query on an image not in memory set a code";
    EXPECT_EQ(DefineTiffImage(file), 1) << "a place that held tags isn't free, one never loaded is";
    EXPECT_EQ(tiff.ImageCount(), 3);
    EXPECT_EQ(GetTiffImage(file, 0), 1);
    EXPECT_EQ(AllTags(file), (std::vector<uint32_t>{256}));
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
        auto* entry = LockedBlock(tiff.Block()).As<uint8_t>() + directory + 2;
        entry[4] = c.countLow;
        entry[5] = c.countHigh;
        entry[11] = c.offsetByte3;
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
        {BytesTag(1, TIFF_TYPE_BYTE, 2), 0xEEEEEE01, kUntouched},
        {ShortTag(2, {0x1234, 5}), 0x1234, kUntouched},
        {LongTag(3, {0x12345678, 5}), 0x12345678, kUntouched},
        {RationalTag(4, 204, 7), 204, 7},
        {AsciiTag(5, "text"), kUntouched, kUntouched},
        {BytesTag(6, 7, 4), kUntouched, kUntouched},
        {{7, TIFF_TYPE_SHORT, 0, {}}, kUntouched, kUntouched},
        {{8, TIFF_TYPE_RATIONAL, 0, {}}, kUntouched, kUntouched},
        {{TIFF_ALL_TAGS, 0, 0, {}}, 1, kUntouched},
    };
    const OpenedTiff tiff;
    uint32_t value[2] = {kUntouched, kUntouched};
    ASSERT_EQ(DefineTiffImage(tiff.Handle()), 0);
    EXPECT_EQ(GetTiffImageInfo(tiff.Handle(), 0, TIFF_ALL_TAGS, value), 1);
    EXPECT_EQ(value[0], kUntouched) << "there are no tags yet";
    for (const auto& c : cases) {
        value[0] = value[1] = kUntouched;
        ASSERT_TRUE(c.tag.tag == TIFF_ALL_TAGS || Define(tiff.Handle(), c.tag) == 1);
        EXPECT_EQ(GetTiffImageInfo(tiff.Handle(), 0, c.tag.tag, value), 1) << c.tag.tag;
        EXPECT_EQ(std::pair(value[0], value[1]), std::pair(c.first, c.second)) << c.tag.tag;
        EXPECT_EQ(GetTiffImageInfo(tiff.Handle(), 0, c.tag.tag, nullptr), 1);
    }
    for (const uint32_t tag : {10U, 0x10002U}) {
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(GetTiffImageInfo(tiff.Handle(), 0, tag, nullptr), 0);
        EXPECT_EQ(TiffError(), TIFF_TAG_NOT_FOUND);
    }
}

TEST(DefinedTags, ReplaceTheirOldValueAtTheEndOfTheList) {
    const OpenedTiff tiff;
    const TiffFileHandle file = tiff.Handle();
    ASSERT_EQ(DefineTiffImage(file), 0);
    const TagSpec defined[] = {ShortTag(300, {1}), BytesTag(100, 1, 3000), LongTag(200, {2}),
                               AsciiTag(300, "longer than before")};
    for (const TagSpec& tag : defined)
        ASSERT_EQ(Define(file, tag), 1);
    ASSERT_EQ(DefineTiffImageInfo(file, 0, 100, TIFF_TYPE_SHORT, 0x10005), 1);
    EXPECT_EQ(AllTags(file), (std::vector<uint32_t>{200, 300, 100}));
    for (const TagSpec& tag : {defined[2], defined[3], ShortTag(100, {5})})
        EXPECT_EQ(Ask(file, tag.tag).value, tag.value);
    EXPECT_TRUE(RemoveTiffTag(file, 0, 300));
    EXPECT_FALSE(RemoveTiffTag(file, 0, 300));
    EXPECT_EQ(AllTags(file), (std::vector<uint32_t>{200, 100}));
    EXPECT_EQ(GetTiffImageInfoBuffer(file, 0, 0, nullptr, nullptr, nullptr), 1);

    // A buffer grows by what is missing, and goes with its file.
    ASSERT_EQ(DefineTiffImage(file), 1);
    const GlobalHandle tags = TagBufferOf(file, 1);
    const Bytes bytes(90);
    for (const auto& [count, size] : {std::pair{0U, 111U}, {80U, 111U}, {1U, 100U + 11 + 11}}) {
        EXPECT_EQ(DefineTiffImageInfoBuffer(file, 1, 1 + count, bytes.data(), 1, count), 1);
        EXPECT_EQ(GlobalSize(tags), size) << count;
    }
    CloseTiffFile(file);
    EXPECT_EQ(GlobalSize(tags), 0U) << "the tags outlive their file";
}

TEST(DefinedTags, ThatCannotBeHeldLeaveTheOldOnes) {
    const OpenedTiff tiff;
    ASSERT_EQ(DefineTiffImage(tiff.Handle()), 0);
    const Bytes bytes(70000, 0x5A);
    ASSERT_EQ(DefineTiffImageInfoBuffer(tiff.Handle(), 0, 300, bytes.data(), 1, 65525), 1);
    struct Case {
        uint32_t tag, type, count;
    };
    for (const Case& c : {Case{300, 1, 65526}, Case{300, 5, 8191}, Case{300, 0x10003, 1},
                          Case{0x1012C, 3, 1}, Case{300, 4, 0x40000001}}) {
        EXPECT_EQ(DefineTiffImageInfoBuffer(tiff.Handle(), 0, c.tag, bytes.data(), c.type, c.count),
                  0);
        EXPECT_EQ(SetTiffError(TIFF_SUCCESS), TIFF_BAD_TAG) << c.count;
    }
    EXPECT_EQ(DefineTiffImageInfoBuffer(tiff.Handle(), 0, 300, nullptr, 1, 1), 0);
    EXPECT_EQ(Ask(tiff.Handle(), 300).count, 65525U);
    EXPECT_EQ(DefineTiffImageInfoBuffer(tiff.Handle(), 0, 301, nullptr, 1, 0), 1);
}

TEST(ImageIndex, IsOneOfAThousandPlaces) {
    const OpenedTiff tiff;
    const TiffFileHandle file = tiff.Handle();
    const auto code = [](int32_t result) { return result == 0 ? SetTiffError(0) : -1; };
    EXPECT_EQ(code(GetTiffImage(file, 0)), TIFF_BAD_INDEX) << "behind the last image";
    using Call = int32_t (*)(TiffFileHandle, int32_t);
    const Call calls[] = {
        GetTiffImage,
        DropTiffImage,
        IsTiffImageRegistered,
        [](TiffFileHandle f, int32_t i) { return GetTiffImageInfo(f, i, 256, nullptr); },
        [](TiffFileHandle f, int32_t i) {
            return GetTiffImageInfoBuffer(f, i, 0, nullptr, nullptr, nullptr);
        },
        [](TiffFileHandle f, int32_t i) { return DefineTiffImageInfo(f, i, 256, 3, 1); }};
    for (const int32_t image : {-1, 1000, INT32_MAX, INT32_MIN})
        for (const Call call : calls)
            EXPECT_EQ(code(call(file, image)), TIFF_BAD_INDEX) << image;
    for (int32_t expected = 0; expected < TIFF_MAX_IMAGES; expected++)
        ASSERT_EQ(DefineTiffImage(file), expected);
    EXPECT_EQ(DefineTiffImage(file), -1);
    EXPECT_EQ(TiffError(), TIFF_NO_MEMORY);
}

}  // namespace
}  // namespace vellim::test
