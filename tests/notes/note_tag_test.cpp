// Notes in the tags of an image: the value that is stored, and what is read of values good and bad.
#include "notes/note_tag.h"

#include <gtest/gtest.h>

#include <limits>

#include "notes_support.h"
#include "vellim/files.h"
#include "vellim/tags.h"

namespace vellim::test {
namespace {

using namespace std::string_literals;

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

std::string ValueOf(TiffFileHandle file, uint32_t tag) {
    GlobalHandle value = 0;
    GetTiffImageInfoBuffer(file, 0, tag, &value, nullptr, nullptr);
    const OwnedBlock owned(value);
    return TextOf(value);
}

TEST(NoteTag, HoldsOneNoteByteForByte) {
    const auto live = Live();
    {
        const TiffFileHandle file = OpenTiffInMemory(0, 0, T_CREAT);
        DefineTiffImage(file);
        const OwnedBlock text = BlockOf("Hi\r\n\0"s), other = BlockOf("a,b\0rest"s);
        const OwnedBlock large = BlockOf(std::string(70'000, 'x'));
        NoteRecord note = {0, 7, text.Get(), 10, 20, 110, 36, 4711};
        EXPECT_NE(AddNoteTagToTiff(file, 0, &note), 0);
        EXPECT_EQ(ValueOf(file, NOTE_TAG), "~,1,O,10,20,110,36,5,Hi\r\n\0"s);
        note.Text = large.Get();
        EXPECT_NE(AddNoteTagToTiff(file, 0, &note), 0);
        const std::string head = "~,1,O,10,20,110,36,4464,", cut(1024 - head.size(), 'x');
        EXPECT_EQ(ValueOf(file, NOTE_TAG), head + cut + '\0') << "the size in 16 bits";
        note.Opaque = 0, note.Text = other.Get();
        EXPECT_NE(AddNoteTagToTiff(file, 0, &note), 0);
        EXPECT_EQ(ValueOf(file, NOTE_TAG), "~,1,T,10,20,110,36,8,a,b\0"s);
        EXPECT_EQ(ValueOf(file, TIFF_ALL_TAGS).size(), 4U) << "one tag";

        NoteRecord read = {0, 1, 0, -1, -1, -1, -1, 4711};
        EXPECT_EQ(GetNoteTagFromTiff(file, 0, &read), 1);
        const OwnedBlock owned(read.Text);
        EXPECT_EQ(TextOf(read.Text), "a,b\0\0\0\0\0"s) << "as large as the block was";
        EXPECT_TRUE(read.StoreInHeader == 1 && read.Opaque == 0 && read.Dib == 4711);
        EXPECT_EQ(BoxOf(read), (Box{10, 20, 110, 36}));

        NoteRecord bad = {1, 1, 0, 1, 2, 3, 4, 0};
        EXPECT_EQ(AddNoteTagToTiff(file, 0, &bad), 0) << "without a text";
        EXPECT_EQ(AddNoteTagToTiff(0, 0, &note) + AddNoteTagToTiff(file, 5, &note) +
                      AddNoteTagToTiff(file, 0, nullptr) + GetNoteTagFromTiff(0, 0, &read) +
                      GetNoteTagFromTiff(file, ~0U, &read) + GetNoteTagFromTiff(file, 0, nullptr),
                  0);
        CloseTiffFile(file);
    }
    EXPECT_EQ(Live(), live);
}

TEST(NoteTag, IsReadWhateverItHolds) {
    const struct {
        std::string value, text;  // no text: no note
        int32_t opaque = 0;
        Box box{};
    } cases[] = {
        {"workstation", ""},
        {"", ""},
        {"~", ""},
        {"~,1,O,", ""},
        {"~,1,O,1,2,3,4,5", ""},
        {"~,1,O,1,2,3\0,4,5,text"s, ""},
        {"~;9:O;1,2,3,4,3,ab", "ab\0"s, 1, {1, 2, 3, 4}},
        {"~,1,o,1,2,3,4,3,ab\0"s, "ab\0"s, 0, {1, 2, 3, 4}},
        {"~,1,O,,,,,6,a,\r\nb", "a,\r\nb\0"s, 1},
        {"~,1,T,1,2,3,4,2,cut", "c\0"s, 0, {1, 2, 3, 4}},
        {"~,1,T,1,2,3,4,0,cut", "\0"s, 0, {1, 2, 3, 4}},
        {"~,1,T,1,2,3,4,65538,cut", "c\0"s, 0, {1, 2, 3, 4}},
        {"~,1,T,1,2,3,4,3,", "\0\0\0"s, 0, {1, 2, 3, 4}},
        {"~,1,T,2147483647,2147483648,99999999999999999999,-5,1,",
         "\0"s,
         0,
         {kMost, kMost, kMost, -25}},
    };
    for (const auto& c : cases) {
        const bool isNote = !c.text.empty();
        NoteRecord note = {9, 9, 99, -1, -2, -3, -4, 5};
        EXPECT_EQ(ParseNoteTagText(c.value, &note), isNote ? 1 : 0) << c.value;
        EXPECT_EQ(BoxOf(note), (isNote ? c.box : Box{-1, -2, -3, -4})) << c.value;
        EXPECT_EQ(note.StoreInHeader, isNote ? 1 : 9);
        EXPECT_EQ(note.Opaque, isNote ? c.opaque : 9);
        EXPECT_EQ(note.Text == 99, !isNote);
        const OwnedBlock owned(isNote ? note.Text : 0);
        EXPECT_EQ(TextOf(owned.Get()), c.text) << c.value;
    }
}

}  // namespace
}  // namespace vellim::test
