// Stored files edited, and images copied between files.
#include <gtest/gtest.h>

#include <filesystem>

#include "container/opened_tiff.h"
#include "container/streams.h"
#include "platform/files/file_replacement.h"
#include "support/stored_tiff.h"
#include "vellim/edit.h"
#include "vellim/failures.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

// Everything but where the strips lie.
void ExpectSameImage(const Bytes& a, Directory imageA, const Bytes& b, Directory imageB) {
    EXPECT_EQ(Strips(a, imageA), Strips(b, imageB));
    imageA.erase(273);
    imageB.erase(273);
    EXPECT_EQ(imageA.size(), imageB.size());
    for (const auto& [number, tag] : imageA)
        EXPECT_TRUE(tag.type == imageB[number].type && tag.value == imageB[number].value) << number;
}

TagSpec Plain(uint16_t tag, uint16_t type, uint32_t count, size_t bytes) {
    return {tag, type, count, Counted(bytes, static_cast<uint8_t>(tag + 1))};
}

// Three images with strips out of order and apart, and values of every width.
Bytes Various(bool bigEndian) {
    std::vector<ImageSpec> images;
    for (uint16_t i = 0; i < 3; i++)
        images.push_back(
            {{ShortTag(258, {8, 8, i}), RationalTag(282, 300, i), AsciiTag(305, "some software"),
              ShortTag(279, {2, 3, 4}), Plain(40000, 8, 1, 2), Plain(40001, 8, 3, 6),
              Plain(40002, 10, 1, 8), Plain(40003, 11, 1, 4), Plain(40004, 12, 3, 24),
              Plain(40005, 13, 5, 20), Plain(40006, 7, 5, 5), Plain(40007, 12, 30000, 240000),
              LongTag(273, {20, 9U + i, 15})},
             {Counted(16)}});
    return BuildTiff(images, bigEndian);
}

int32_t Add(const std::string& path, int32_t image, const TagSpec& tag) {
    return AddTiffTagToImage(path.c_str(), image, tag.tag, tag.type, tag.value.data(), tag.count);
}

int32_t Copy(const std::string& from, int32_t image, const std::string& to, int32_t mode) {
    return CopyTiffImageInFile(from.c_str(), image, to.c_str(), mode);
}

TEST(EditedFile, IsLaidOutDirectoryFirst) {
    const Bytes old = BuildTiff(
        {{{ShortTag(256, {5}), ShortTag(279, {3}), AsciiTag(305, "abcde")}, {{161, 162, 163}}}},
        true);
    const std::string path = FileOf(old, "edit.tif");
    ASSERT_EQ(Add(path, 0, {40000, 8, 3, {1, 0, 0xFE, 0xFF, 3, 0}}), 1);
    EXPECT_EQ(ReadFile(path), (Bytes{'I',  'I',  42,  0,   8,   0, 0, 0, 5,    0,           //
                                     0,    1,    3,   0,   1,   0, 0, 0, 5,    0,    0, 0,  // 256
                                     0x11, 1,    4,   0,   1,   0, 0, 0, 86,   0,    0, 0,  // 273
                                     0x17, 1,    3,   0,   1,   0, 0, 0, 3,    0,    0, 0,  // 279
                                     0x31, 1,    2,   0,   6,   0, 0, 0, 74,   0,    0, 0,  // 305
                                     0x40, 0x9C, 8,   0,   3,   0, 0, 0, 80,   0,    0, 0,  // 40000
                                     0,    0,    0,   0,                                    //
                                     'a',  'b',  'c', 'd', 'e', 0, 1, 0, 0xFE, 0xFF, 3, 0,  //
                                     161,  162,  163}));
}

TEST(EditedFile, HasAllElseAsItWas) {
    for (const bool bigEndian : {false, true}) {
        const Bytes old = Various(bigEndian);
        const std::string path = FileOf(old, "edit.tif");
        std::vector<Directory> expected = Directories(old);
        const TagSpec added = Plain(40003, 12, 2, 16);
        ASSERT_EQ(Add(path, 1, added), 1) << "replaces the FLOAT";
        ASSERT_EQ(DeleteTiffTagOfImage(path.c_str(), 2, 305), 1);
        ASSERT_EQ(DeleteTiffTagOfImage(path.c_str(), 0, 999), 1) << "was never there";
        expected[1][40003] = added;
        expected[2].erase(305);
        const Bytes now = ReadFile(path);
        EXPECT_EQ(now[0], 'I');
        const std::vector<Directory> images = Directories(now);
        ASSERT_EQ(images.size(), 3U);
        for (size_t i = 0; i < 3; i++) {
            ExpectSameImage(old, expected[i], now, images[i]);
            const TagSpec& offsets = images[i].at(273);
            EXPECT_EQ(Element(offsets, 1), Element(offsets, 0) + 2);
            EXPECT_EQ(Element(offsets, 2), Element(offsets, 1) + 3);
        }
    }
}

TEST(CopiedImage, HasAllAsItWas) {
    for (const bool fromBig : {false, true})
        for (const bool toBig : {false, true}) {
            const Bytes source = Various(fromBig), before = Various(toBig);
            const std::string from = FileOf(source, "from.tif"), to = FileOf(before, "to.tif");
            ASSERT_EQ(Copy(from, 2, to, T_APPEND) + Copy(to, 3, to, T_APPEND), 2);
            const Bytes now = ReadFile(to);
            const std::vector<Directory> images = Directories(now);
            ASSERT_EQ(images.size(), 5U);
            ExpectSameImage(source, Directories(source)[2], now, images[3]);
            ExpectSameImage(source, Directories(source)[2], now, images[4]);
            ExpectSameImage(before, Directories(before)[0], now, images[0]);
        }
}

TEST(ShortOffsets, BecomeLongOnesWhereTheyMust) {
    size_t bytes = 60000;
    const auto lastOffset = [&] {
        const ImageSpec large{{ShortTag(273, {8}), LongTag(279, {static_cast<uint32_t>(bytes)})},
                              {Bytes(bytes, 9)}};
        const Bytes old =
            BuildTiff({large, {{ShortTag(273, {9, 8, 10}), ShortTag(279, {4, 5, 6})}, {}}});
        const std::string path = FileOf(old, "edit.tif");
        EXPECT_EQ(DeleteTiffTagOfImage(path.c_str(), 0, 999), 1);
        const Bytes now = ReadFile(path);
        const Directory image = Directories(now).at(1);
        EXPECT_EQ(Strips(now, image), Strips(old, Directories(old)[1]));
        EXPECT_EQ(Directories(now)[0].at(273).type, TIFF_TYPE_SHORT);
        return std::pair(image.at(273).type, Element(image.at(273), 2));
    };
    bytes += 65535 - lastOffset().second;
    EXPECT_EQ(lastOffset(), (std::pair<uint16_t, uint64_t>(TIFF_TYPE_SHORT, 65535)));
    bytes++;
    EXPECT_EQ(lastOffset(), (std::pair<uint16_t, uint64_t>(TIFF_TYPE_LONG, 65536 + 6)));
}

TEST(JpegTables, LieBehindTheTiles) {
    Bytes data = Counted(300, 0);  // at 8: tiles, then tables, all with something between them
    for (const size_t table : {100U, 200U})
        std::fill_n(&data[table], 16, uint8_t{0});
    data[103] = 2;
    data[110] = 3;
    const ImageSpec jpeg{{ShortTag(259, {6}), LongTag(324, {20, 10}), LongTag(325, {5, 4}),
                          LongTag(519, {40, 30}), LongTag(520, {108}), ShortTag(521, {208, 108})},
                         {}};
    const Bytes old = BuildTiff({{{ShortTag(262, {1})}, {data}}, jpeg}, true);
    const std::string path = FileOf(old, "jpeg.tif");
    ASSERT_EQ(Add(path, 1, ShortTag(262, {6})), 1);
    const Bytes now = ReadFile(path);
    const Directory before = Directories(old)[1], after = Directories(now)[1];
    uint64_t at = Element(after.at(324), 0);
    const std::map<uint16_t, std::vector<uint64_t>> sizes = {
        {324, {5, 4}}, {519, {64, 64}}, {520, {21}}, {521, {16, 21}}};
    for (const auto& [tag, bytes] : sizes)
        for (size_t i = 0; i < bytes.size(); at += bytes[i++]) {
            EXPECT_EQ(Element(after.at(tag), i), at) << tag;
            EXPECT_EQ(Piece(now, at, bytes[i]), Piece(old, Element(before.at(tag), i), bytes[i]));
        }
    EXPECT_EQ(at, now.size());
}

TEST(RefusedEdit, LeavesTheOldFile) {
    const Bytes sound = Various(false), none = BuildTiff({{{ShortTag(256, {1})}, {}}});
    const Bytes unequal = BuildTiff({{{ShortTag(279, {1, 1})}, {{1}}}});
    const TagSpec tag = ShortTag(300, {1});
    const struct {
        Bytes old;
        int32_t image;
        TagSpec tag;
        int32_t code;
        bool began;
    } cases[] = {{{}, 0, tag, TIFF_NO_MEMORY, false},
                 {{'I', 'I', 43, 0}, 0, tag, TIFF_NO_MEMORY, false},
                 {sound, 3, tag, TIFF_BAD_INDEX, false},
                 {sound, -1, tag, TIFF_BAD_INDEX, false},
                 {sound, 0, Plain(300, 3, 16384, 32768), TIFF_BAD_TAG, false},
                 {sound, 0, Plain(300, 12, 32768, 262144), TIFF_BAD_TAG, false},
                 {none, 0, tag, TIFF_TAG_NOT_FOUND, true},
                 {unequal, 0, tag, TIFF_TAG_NOT_FOUND, true}};  // of the search for an old tag
    for (const auto& c : cases) {
        const std::string path = FileOf(c.old, "refused.tif"), temporary = NewPath("refused.~~~");
        EXPECT_EQ(Add(path, c.image, c.tag), 0);
        EXPECT_EQ(TiffError(), c.code);
        EXPECT_EQ(ReadFile(path), c.old);
        EXPECT_EQ(fs::exists(temporary), c.began) << c.code;
    }
    const std::string path = FileOf(sound, "taken.tif"), temporary = NewPath("taken.~~~");
    const OpenStream first(CreateReplacement(path.c_str(), temporary.c_str()));
    for (const std::string& other : {path, std::string("no-such.tif"), std::string()}) {
        EXPECT_EQ(DeleteTiffTagOfImage(other.c_str(), 0, 258), 0);
        EXPECT_EQ(SetTiffError(TIFF_SUCCESS), TIFF_IO_ERROR);
    }
    EXPECT_EQ(ReadFile(path), sound);
}

TEST(EditedFile, KeepsItsNameModeAndLinks) {
    const Bytes old = Various(false);
    const std::string original = FileOf(old, "original.tif");
    const fs::path folder = NewFolder("names");
    fs::create_directory_symlink(folder, folder / "again");
    for (const char* name : {"page.tif", "page.~~~", "page"}) {
        const fs::path page = folder / name;
        fs::copy_file(original, page);
        fs::permissions(page, fs::perms{0640});
        fs::create_symlink(std::string("again/") + name, folder / "link.tiff");
        ASSERT_EQ(DeleteTiffTagOfImage((folder / "link.tiff").c_str(), 0, 305), 1) << name;
        EXPECT_TRUE(fs::is_symlink(folder / "link.tiff"));
        EXPECT_EQ(Directories(ReadFile(page))[0].count(305), 0U) << name;
        EXPECT_EQ(fs::status(page).permissions(), fs::perms{0640});
        fs::remove(folder / "link.tiff");
        fs::remove(page);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1) << name;
    }
}

TEST(CopyThatWouldLoseSomething, IsRefused) {
    const Bytes old = Various(false);
    const std::string path = FileOf(old, "path.tif"), link = NewPath("link.tif");
    fs::create_hard_link(path, link);
    EXPECT_EQ(Copy(path, 0, link, T_CREAT), 0) << "would empty its own source";
    const OpenedTiff memory(old);
    const TiffFileHandle stale = OpenTiffFile(path.c_str(), T_APPEND);
    EXPECT_EQ(CopyTiffImage(stale, 0, memory.Handle()) + CopyTiffImage(memory.Handle(), 0, stale),
              0);
    EXPECT_EQ(TiffError(), TIFF_IO_ERROR);
    EXPECT_EQ(memory.ImageCount() + NumberOfTiffImages(stale, TIFF_ALL_IMAGES), 6);
    EXPECT_EQ(ReadFile(path), old);
    EXPECT_EQ(Copy(path, 0, path, T_APPEND), 1);
    EXPECT_EQ(CopyTiffImage(stale, 1, stale), 1) << "knows nothing of the fourth image";
    EXPECT_EQ(GetNumberOfImagesInTiffFile(path.c_str()), 5);

    ASSERT_EQ(DeleteTiffTagOfImage(path.c_str(), 0, 305), 1);
    const Bytes edited = ReadFile(path);
    EXPECT_EQ(GetTiffImage(stale, 2) + CopyTiffImage(stale, 3, stale), 0) << "another file by now";
    EXPECT_EQ(WriteTiffImageDirectory(stale, DefineTiffImage(stale)), TIFF_IO_ERROR);
    EXPECT_EQ(ReadFile(path), edited);
    CloseTiffFile(stale);

    const StreamHandle writer = OpenFile(path.c_str(), nullptr, OF_READWRITE | OF_SHARE_DENY_WRITE);
    EXPECT_EQ(DeleteTiffTagOfImage(path.c_str(), 0, 305) + Copy(path, 0, path, T_APPEND), 0)
        << "the file is being written to";
    EXPECT_EQ(ReadFile(path), edited);
    mClose(writer);
    const std::string good = FileOf(old, "good.tif");
    EXPECT_EQ(Copy(FileOf(BuildTiff({{{ShortTag(256, {1})}, {}}}), "bad.tif"), 0, good, T_CREAT),
              0);
    EXPECT_EQ(ReadFile(good), old) << "emptied for an image that can't be copied";
}

// Byte counts that reach beyond the file's end, and strips that share their bytes.
TEST(LyingStrips, CostWhatIsThere) {
    const Bytes data = Counted(8);
    const std::string to = FileOf({}, "copy.tif");
    const auto copy = [&](const std::vector<uint32_t>& offsets, const std::vector<uint32_t>& counts,
                          size_t filler) {
        const Bytes file = BuildTiff({{{ShortTag(256, {1})}, {data, Bytes(filler)}},
                                      {{LongTag(273, offsets), LongTag(279, counts)}, {}}});
        return Copy(FileOf(file, "from.tif"), 1, to, T_CREAT);
    };
    const auto piece = [&](size_t index, uint64_t bytes) {
        const Bytes now = ReadFile(to);
        return Piece(now, Element(Directories(now)[0].at(273), index), bytes);
    };
    EXPECT_EQ(copy({8, 1000}, {UINT32_MAX, 7}, 0), 1);
    EXPECT_EQ(piece(0, 8), data);
    EXPECT_LT(ReadFile(to).size(), 300U);
    EXPECT_EQ(copy({60, 9}, {10000, 5}, 0), 1);
    EXPECT_EQ(piece(1, 5), Piece(data, 1, 5)) << "behind a strip that is cut short";
    const std::vector<uint32_t> eight(4000, 8), all(4000, 10000);
    EXPECT_EQ(copy(eight, eight, 0), 1) << "blank strips are shared in earnest";
    EXPECT_EQ(piece(3999, 8), data);
    EXPECT_EQ(copy(eight, all, 10000), 0);
    EXPECT_EQ(TiffError(), TIFF_IO_ERROR);
}

TEST(EditedFile, PassesAnIndependentReader) {
    const ImageSpec grey = SimpleImage(9, 4, 8, 1, 1, 1, 2, {Bytes(18, 7), Bytes(18, 99)});
    const std::string path = FileOf(BuildTiff({grey, grey, grey}, true), "judged.tif");
    const std::string to = FileOf({}, "copied.tif");
    ASSERT_EQ(Add(path, 1, AsciiTag(305, "edited")), 1);
    ASSERT_EQ(Copy(path, 1, to, T_CREAT) + Copy(path, 2, to, T_APPEND), 2);
    EXPECT_EQ(Shell("tiffinfo -d " + path + " " + to + " >/dev/null"), "");
    const std::string part = NewPath("part.tif"), whole = NewPath("whole.tif");
    EXPECT_EQ(Shell("tiffcp " + path + ",1,2 " + part + "; tiffcp " + to + " " + whole + "; cmp " +
                    part + " " + whole),
              "");
}

}  // namespace
}  // namespace vellim::test
