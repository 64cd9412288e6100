// CALS files: the header byte by byte as written and in the many guises that others give it; the
// picture there and back, what damage leaves of it, and what is refused.
#include "vellim/cals.h"

#include <gtest/gtest.h>

#include "platform/memory/memory_blocks.h"
#include "support/dib_maker.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

// A file of the records given, with bars between them, the others blank, and `data` behind.
Bytes CalsFile(std::string_view records, const Bytes& data = {}) {
    Bytes file(CALS_HEADER_BYTES, ' ');
    for (auto record = file.begin(); !records.empty(); record += CALS_RECORD_BYTES) {
        const size_t bytes = std::min(records.find('|'), records.size());
        std::copy_n(records.begin(), bytes, record);
        records.remove_prefix(std::min(bytes + 1, records.size()));
    }
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

TEST(CalsHeader, IsWrittenByteByByte) {
    const std::string text(300, 'x');
    const CalsInfo fax = {1, {90, 270}, {1728, 2200}, 200};
    const CalsInfo odd = {-7, {INT32_MIN, -5}, {INT32_MIN, 7}, 19685};
    const CalsNote note = {"a", "b", nullptr, "d", "e", "", text.c_str()};
    EXPECT_EQ(BytesOf(OwnedBlock(DefineCALSHead(&fax, nullptr)).Get()),
              CalsFile("srcdocid: NONE|dstdocis: NONE|txtfileid: NONE|figid: NONE|scrgph: NONE|"
                       "doccls: NONE|rtype: 1|rorient: 090,270|rpelcnt: 001728,002200|"
                       "rdensty: 0200|notes: NONE",
                       Bytes(200)));
    EXPECT_EQ(BytesOf(OwnedBlock(DefineCALSHead(&odd, &note)).Get()),
              CalsFile("srcdocid: a|dstdocis: b|txtfileid: NONE|figid: d|scrgph: e|doccls: |"
                       "rtype: -7|rorient: -2147483648,-05|rpelcnt: -2147483648,000007|"
                       "rdensty: 19685|notes: " +
                           text.substr(0, 120),
                       Bytes(200)));
}

TEST(CalsHeader, RasterRecordsAreReadInEveryGuise) {
    const struct {
        const char* records;
        CalsInfo info;
        int32_t result = 1;
    } cases[] = {
        {"rdensty: 3||rpelcnt: 5,6|rtype: 1|rtype: 2|rorient: 0,90", {1, {0, 90}, {5, 6}, 3}},
        {"dtype:  1|rorient: 0 90|rpelcnt:  5x\t6|rdensity: 03.", {1, {0, 90}, {5, 6}, 3}},
        {"rtype: +1|rorient: 99999999999999999999,-2147483649|rpelcnt: 5,6|rdensty: 2147483648",
         {1, {INT32_MAX, INT32_MIN}, {5, 6}, INT32_MAX}},
        {"rtype: 1|rorient: +-9,x|rpelcnt: 5,6|rdensty: ", {1, {0, -9}, {5, 6}, 0}},
        {"rtype: 2|rorient: 0,90|rpelcnt: 5,6|rdensty: 3", {2, {0, 90}, {5, 6}, 3}, 0},
        {"rtype: 1|rorient: 0,90|rpelcnt: 5,|rdensty: 3", {1, {0, 90}, {5, 0}, 3}, 0},
        {"rtype: 1|rpelcnt: 5,6|rdensty: 3", {1, {0, 0}, {5, 6}, 3}, 0},
        {"RTYPE: 1| rtype: 1|rorient: 0,90|rpelcnt: 5,6|rdensty: 3", {0, {0, 90}, {5, 6}, 3}, 0},
    };
    for (const auto& c : cases) {
        CalsInfo info = {77, {77, 77}, {77, 77}, 77};
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(ReadCALSInfo(FileOf(CalsFile(c.records), "a.cal").c_str(), &info), c.result);
        EXPECT_EQ(std::memcmp(&info, &c.info, sizeof info), 0) << c.records;
        EXPECT_EQ(TiffError(), c.result == 1 ? TIFF_SUCCESS : TIFF_NOT_CALS) << c.records;
    }
}

TEST(CalsHeader, TextsAreTrimmedAndMissingOnesAreNull) {
    std::string value(120, 'f');
    const Bytes file = CalsFile(
        "|dstdocid: x|srcdocid: a b \r\n\n|doccls: \r|scrgph:  |txtfileid:  t\r|"
        "notes: NONE|figid: " +
        value);
    const std::string path = FileOf(file, "a.cal");
    CalsNote note{};
    const OwnedBlock block(ReadCALSNote(path.c_str(), &note)), head(ReadCALSHead(path.c_str()));
    EXPECT_STREQ(note.srcdocid, "a b \r\n") << "one byte of line ends goes";
    EXPECT_STREQ(note.txtfileid, " t");
    EXPECT_STREQ(note.figid, value.c_str());
    EXPECT_STREQ(note.notes, "NONE");
    EXPECT_TRUE(note.dstdocis == nullptr && note.scrgph == nullptr && note.doccls == nullptr);
    auto* header = LockedBlock(head.Get()).As<char>();
    EXPECT_EQ(FindCALSRecord(header, "doc"), header + 384);
    EXPECT_EQ(FindCALSRecord(header, ""), header + 128);
    EXPECT_EQ(FindCALSRecord(header, value.append(value).c_str()), nullptr);
    EXPECT_EQ(FindCALSRecord(nullptr, "d"), FindCALSRecord(header, nullptr));
    EXPECT_EQ(GlobalUnlock(block.Get()) + GlobalUnlock(head.Get()), 0) << "handed over locked";
}

TEST(CalsHeader, WhatIsNoHeaderIsRefused) {
    Bytes zeroEnded = CalsFile(""), lineEnded = zeroEnded;
    zeroEnded.back() = 0, lineEnded.back() = '\n';
    EXPECT_TRUE(OwnedBlock(ReadCALSHead(FileOf(zeroEnded, "zero.cal").c_str())));
    const std::pair<std::string, int32_t> cases[] = {
        {FileOf(lineEnded, "line.cal"), TIFF_NOT_CALS},
        {FileOf(Bytes(CALS_HEADER_BYTES - 1, ' '), "short.cal"), TIFF_NOT_CALS},
        {NewPath("gone.cal"), TIFF_IO_ERROR},
        {"", TIFF_SUCCESS}};
    for (const auto& [path, code] : cases) {
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(ReadCALSHead(path.c_str()), 0U);
        EXPECT_EQ(TiffError(), code) << path;
    }
    EXPECT_EQ(ReadCALSHead(nullptr) | ReadCALSNote("", nullptr) | DefineCALSHead(nullptr, nullptr),
              0U);
    EXPECT_EQ(ReadCALSInfo("", nullptr), 0);
}

TEST(CalsImage, APictureComesBackWithItsColoursInEitherOrder) {
    const std::string path = NewPath("gone.cal");
    for (const int32_t width : {1, 61, 33280}) {
        const OwnedBlock white = MakeDib(width, 40, 1, false), black = MakeDib(width, 40, 1);
        const LockedBlock bits(black.Get());
        std::for_each(bits.As<uint8_t>() + 48, bits.As<uint8_t>() + bits.Size(),
                      [](uint8_t& byte) { byte ^= 0xFF; });
        bits.As<BITMAPINFOHEADER>()->biClrUsed = 0;
        ASSERT_EQ(SaveDIBInCALSFormat(path.c_str(), black.Get(), nullptr, nullptr, 0), 1);
        const Bytes file = ReadFile(path);
        ASSERT_EQ(SaveDIBInCALSFormat(path.c_str(), white.Get(), nullptr, nullptr, 0), 1);
        EXPECT_EQ(ReadFile(path), file) << width;
        EXPECT_EQ(std::string(&file[896], &file[913]), "rorient: 090,270 ");
        EXPECT_EQ(std::string(&file[1152], &file[1166]), "rdensty: 0300 ");
        Bytes loaded = BytesOf(OwnedBlock(LoadCALSIntoDIB(path.c_str(), 0)).Get());
        ASSERT_GT(loaded.size(), 148U) << TiffError();
        loaded.resize(loaded.size() - 100);
        EXPECT_TRUE(SamePixels(OwnedBlock(BlockOf(loaded)).Get(), white.Get())) << width;
        // One density is all that the file has.
        LockedBlock(white.Get()).As<BITMAPINFOHEADER>()->biYPelsPerMeter = 11811;
        EXPECT_EQ(std::memcmp(loaded.data(), LockedBlock(white.Get()).As<char>(), 48), 0);
    }
}

int warnings = 0;
int32_t Warn(WindowHandle /*owner*/, const char* text, const char* caption, uint32_t /*style*/) {
    char message[TIFF_MESSAGE_BYTES];
    EXPECT_STREQ(text, TiffErrorString(message, -1));
    EXPECT_STREQ(caption, "CALS warning");
    EXPECT_EQ(SetCursor(0), CursorHandle{0}) << "the wait cursor is gone by then";
    return warnings++;
}

// A number of lines that came, black: the others are white. -1: no DIB.
TEST(CalsImage, KeepsWhatCameWithAWarningAndElseGivesACode) {
    const Bytes black = {0x26, 0xA2, 0xFF, 0x80, 0x08, 0x00, 0x80};  // 8 pixels, 5 lines, EOFB
    const struct {
        const char* size;
        Bytes data;
        int32_t code, lines = -1;
    } cases[] = {
        {"8,5", black, 0, 5},
        {"8,9", black, TIFF_UNEXPECTED_EOFB, 5},
        {"8,9", {0x26, 0xA2, 0xFF}, TIFF_UNEXPECTED_END, 2},
        {"8,9", {}, TIFF_IO_ERROR},
        {"8,9", {0x26, 0xA2, 0x81, 0}, TIFF_BAD_CODE},
        {"-8,9", black, TIFF_NO_MEMORY},
        {"1048577,1", black, TIFF_NO_MEMORY},
        {"1048576,16777216", black, TIFF_NO_MEMORY},  // above 32 bits
    };
    const uint32_t blocks = LiveGlobalBlocks();
    const DesktopDriver driver = {Warn, nullptr, nullptr};
    SetDesktopDriver(&driver);
    SetCursor(0);
    for (const auto& c : cases) {
        warnings = 0;
        std::string records = "rtype: 1|rorient: 0,0|rdensty: 99999999|rpelcnt: ";
        const std::string path = FileOf(CalsFile(records.append(c.size), c.data), "a.cal");
        const OwnedBlock dib(LoadCALSIntoDIB(path.c_str(), 0));
        EXPECT_EQ(TiffError(), c.code) << c.size;
        EXPECT_EQ(warnings, c.code != 0 && c.lines >= 0 ? 1 : 0) << c.size;
        const Bytes block = BytesOf(dib.Get());
        ASSERT_EQ(block.empty(), c.lines < 0) << c.size;
        for (size_t row = 0; row < block.size() / 4 - 37 && dib; row++)
            EXPECT_EQ(block[block.size() - 104 - 4 * row],
                      static_cast<int32_t>(row) < c.lines ? 0xFF : 0);
        EXPECT_TRUE(!dib || Number(block, 28, 4) == INT32_MAX) << "pixels a metre";
    }
    SetDesktopDriver(nullptr);
    EXPECT_EQ(LoadCALSIntoDIB(NewPath("gone.cal").c_str(), 1), 0U);
    EXPECT_EQ(TiffError(), TIFF_NO_MEMORY) << "no dialog can be run";
    EXPECT_EQ(LiveGlobalBlocks(), blocks) << "something was kept";
}

TEST(CalsImage, RefusesWithTheFileLeftAlone) {
    using Header = BITMAPINFOHEADER;
    const struct {
        void (*spoil)(Header&);
        int32_t dialog, code;
    } cases[] = {
        {[](Header& h) { h.biWidth = 9; }, 1, TIFF_NO_MEMORY},   // the dialog
        {[](Header& h) { h.biHeight = 1; }, 0, TIFF_NO_MEMORY},  // above the limits
        {[](Header& h) { h.biWidth = 33281; }, 0, TIFF_BAD_CODE},
        {[](Header& h) { h.biHeight++; }, 1, TIFF_UNEXPECTED_END},
        {[](Header& h) { h.biBitCount = 4; }, 1, TIFF_BAD_COLOR_FORMAT},
        {[](Header& h) { h.biSize = 44; }, 0, TIFF_BAD_COLOR_FORMAT},
        {[](Header& h) { h.biPlanes = 2; }, 0, TIFF_BAD_COLOR_FORMAT},
        {[](Header& h) { h.biHeight = -1; }, 0, TIFF_BAD_COLOR_FORMAT},
        {[](Header& h) { h.biWidth = 0; }, 0, TIFF_BAD_COLOR_FORMAT},
        {[](Header& h) { h.biClrUsed = 1; }, 0, TIFF_BAD_COLOR_FORMAT},
    };
    const std::string path = FileOf({'o', 'l', 'd'}, "old.cal");
    const auto refuse = [](const char* to, GlobalHandle dib, int32_t dialog, int32_t code) {
        EXPECT_EQ(SaveDIBInCALSFormat(to, dib, nullptr, nullptr, dialog), 0);
        EXPECT_EQ(TiffError(), code);
    };
    for (const auto& c : cases) {
        const OwnedBlock dib = MakeDib(1'048'577, 2, 1);
        c.spoil(*LockedBlock(dib.Get()).As<Header>());
        refuse(path.c_str(), dib.Get(), c.dialog, c.code);
        EXPECT_EQ(ReadText(path), "old") << &c - cases;
    }
    refuse(path.c_str(), 12345, 0, TIFF_NO_MEMORY);
    for (const char* bad : {static_cast<const char*>(nullptr), "/", "/dev/full"})
        refuse(bad, MakeDib(9, 9, 1).Get(), 0, TIFF_IO_ERROR);
}

TEST(CalsLines, NothingIsTouchedOutsideTheRows) {
    for (const uint32_t lineNumber : {2U, 3U, 0xFFFFFFFFU}) {
        Bytes line(40, 0x11), area(99, 0xEE), stored = area, filled = line;
        CalsLineContext context{&area[20], 3, 40, 12, 1};
        if (lineNumber == 2) std::fill_n(&stored[20], 12, 0x11);
        if (lineNumber == 2) std::fill_n(filled.begin(), 12, 0xEE);
        for (const auto data : {reinterpret_cast<uintptr_t>(&context), uintptr_t{0}})
            for (const auto callback : {DllFlushCALSLineDIB, DllFillCALSLineDIB})
                EXPECT_EQ(callback(line.data(), lineNumber, data), 0U);
        EXPECT_TRUE(area == stored && line == filled) << "line " << lineNumber;
    }
}

}  // namespace
}  // namespace vellim::test
