// Loading a stored image as a DIB: where each line lands, what survives data that ends too soon,
// and what every way out leaves behind.
#include "vellim/load.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/guards.h"
#include "platform/memory_blocks.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

std::vector<std::string> messages;
CursorHandle shownCursor = 0;

int32_t TakeMessage(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    messages.push_back(std::string(caption) + ": " + text);
    EXPECT_EQ(owner, 0U);
    EXPECT_EQ(style, uint32_t{MB_TASKMODAL | MB_ICONEXCLAMATION});
    EXPECT_EQ(shownCursor, LoadCursorA(0, IDC_WAIT));
    SetTiffError(TIFF_NOT_CALS);  // as a desktop that uses the library itself would
    return IDOK;
}

class LoadDib : public testing::Test {
  protected:
    void SetUp() override {
        messages.clear();
        const DesktopDriver driver = {TakeMessage, [](CursorHandle shown) { shownCursor = shown; }};
        SetDesktopDriver(&driver);
        SetCursor(arrow_);
    }
    void TearDown() override {
        EXPECT_EQ(SetCursor(0), arrow_) << "the wait cursor stayed";
        EXPECT_EQ(LiveGlobalBlocks(), blocks_) << "something was kept";
        SetDesktopDriver(nullptr);
    }

  private:
    CursorHandle arrow_ = LoadCursorA(0, IDC_ARROW);
    uint32_t blocks_ = LiveGlobalBlocks();
};

// Uncompressed lines of bytes that tell their place.
Bytes Lines(uint32_t lineBytes, uint32_t lines) {
    Bytes bytes(size_t{lineBytes} * lines);
    for (size_t i = 0; i < bytes.size(); i++)
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 251 + 1);
    return bytes;
}

Bytes RedAndBlueExchanged(Bytes bytes) {
    for (size_t i = 0; i + 3 <= bytes.size(); i += 3)
        std::swap(bytes[i], bytes[i + 2]);
    return bytes;
}

TEST_F(LoadDib, LinesLieBottomUpWithZeroPadding) {
    struct Case {
        uint32_t width;
        uint16_t bits, samples;
        uint32_t lineBytes, storedBytes, colors;
    };
    const uint32_t height = 100;
    for (const Case& c :
         {Case{1728, 1, 1, 216, 216, 2}, Case{1729, 1, 1, 217, 220, 2}, Case{9, 4, 1, 5, 8, 16},
          Case{5, 8, 1, 5, 8, 256}, Case{3, 8, 3, 9, 12, 0}}) {
        SCOPED_TRACE(testing::Message() << c.width << " pixels of " << c.bits << " bits");
        Bytes lines = Lines(c.lineBytes, height);
        const std::string path = FileOf(
            BuildTiff({SimpleImage(c.width, height, c.bits, c.samples, 1, 1, height, {lines})}),
            "image.tif");
        const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), 0, 0));
        ASSERT_TRUE(dib) << TiffError();
        EXPECT_EQ(TiffError(), 0);
        const uint32_t bitsOffset = 40 + 4 * c.colors;
        ASSERT_EQ(GlobalSize(dib.Get()), bitsOffset + height * c.storedBytes);
        if (c.samples == 3) lines = RedAndBlueExchanged(lines);
        Bytes expected;
        for (uint32_t line = height; line-- > 0;) {
            const uint8_t* first = &lines[size_t{line} * c.lineBytes];
            expected.insert(expected.end(), first, first + c.lineBytes);
            expected.resize(size_t{height - line} * c.storedBytes);
        }
        const auto* block = static_cast<const uint8_t*>(GlobalLock(dib.Get()));
        BITMAPINFOHEADER header;
        std::memcpy(&header, block, sizeof header);
        EXPECT_EQ(header.biSizeImage, height * c.storedBytes);
        EXPECT_EQ(header.biClrUsed, c.colors);
        EXPECT_EQ(Bytes(block + bitsOffset, block + GlobalSize(dib.Get())), expected);
        EXPECT_EQ(GlobalUnlock(dib.Get()), 0) << "was handed over locked";
    }
    EXPECT_TRUE(messages.empty());
}

// A result of -1 in `kept`: no DIB. Otherwise the lines from there on are zero.
TEST_F(LoadDib, KeepsWhatCameWithAWarningAndElseGivesACode) {
    const auto image = [](uint32_t width, uint32_t height, uint16_t bits, uint16_t compression,
                          const Bytes& strip) {
        return SimpleImage(width, height, bits, 1, compression, 1, height, {strip});
    };
    const Bytes raw = Lines(2, 4), group4 = {0xE0, 0x02, 0x00, 0x20};  // V0 three times, EOFB
    const struct {
        ImageSpec image;
        int32_t code, kept;
    } cases[] = {{image(16, 4, 1, 1, raw), TIFF_SUCCESS, 4},
                 {image(8, 5000, 1, 1, raw), TIFF_UNEXPECTED_END, 4000},  // the file has no more
                 {image(8, 9, 1, 4, group4), TIFF_UNEXPECTED_EOFB, 3},
                 {image(16, 4, 1, 999, raw), TIFF_UNKNOWN_COMPRESSION, -1},
                 {image(8, 4, 2, 1, raw), TIFF_BAD_COLOR_FORMAT, -1},
                 {image(0x7FFFFFFF, 4, 1, 1, raw), TIFF_NO_MEMORY, -1},       // above the limits
                 {image(16, 0xFFFFFFFF, 1, 1, raw), TIFF_NO_MEMORY, -1},      // negative
                 {image(1000000, 16000000, 8, 1, raw), TIFF_NO_MEMORY, -1}};  // above 32 bits
    std::vector<ImageSpec> images;
    for (const auto& c : cases)
        images.push_back(c.image);
    const std::string path = FileOf(BuildTiff(images), "images.tif");
    const auto codeOf = [&](int32_t index, int32_t showInfo) {
        SetTiffError(TIFF_NOT_CALS);
        const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), index, showInfo));
        return dib ? -1 : TiffError();
    };
    for (int32_t i = 0; i < std::ssize(cases); i++) {
        const auto& c = cases[i];
        messages.clear();
        const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), i, 0));
        EXPECT_EQ(TiffError(), c.code) << i;
        EXPECT_EQ(bool{dib}, c.kept >= 0) << i;
        EXPECT_EQ(messages.size(), c.kept >= 0 && c.code != 0 ? 1U : 0U) << i;
        const LockedBlock block(dib.Get());
        if (!dib) continue;
        const auto height = block.As<BITMAPINFOHEADER>()->biHeight;
        for (int32_t line = c.kept; line < height; line++)
            ASSERT_EQ(block.As<uint8_t>()[48 + 4 * (height - 1 - line)], 0) << i << ", " << line;
        if (c.code != TIFF_UNEXPECTED_END) continue;
        EXPECT_EQ(messages[0], "TIFF warning: Unexpected end of file in reading data.");
        EXPECT_EQ(block.As<uint8_t>()[48 + 4 * (height - 1)], raw[0]) << "the first line";
    }
    EXPECT_EQ(codeOf(static_cast<int32_t>(images.size()), 0), TIFF_BAD_INDEX);
    EXPECT_EQ(codeOf(-1, 0), TIFF_BAD_INDEX);
    EXPECT_EQ(codeOf(0, 1), TIFF_NO_MEMORY) << "no dialog can be run";
    EXPECT_EQ(LoadTiffIntoDIB(nullptr, 0, 0), 0U);
}

TEST(DibLines, NothingIsWrittenOutsideTheRows) {
    constexpr uint32_t kHeight = 3, kStride = 12, kMargin = 64;
    struct Case {
        uint32_t lineNumber, lineBytes, row, written;
    };
    for (const Case& c : {Case{0, 10, 2, 10}, Case{2, 9, 0, 9}, Case{0, 40, 2, 12},
                          Case{3, 9, 0, 0}, Case{0xFFFFFFFF, 9, 0, 0}}) {
        for (const bool color : {false, true}) {
            SCOPED_TRACE(testing::Message() << "line " << c.lineNumber << ", " << c.lineBytes);
            Bytes line = Lines(c.lineBytes, 1), area(2 * kMargin + kHeight * kStride, 0xEE);
            const Bytes stored = color ? RedAndBlueExchanged(line) : line;
            Bytes expected = area;
            std::memcpy(&expected[kMargin + c.row * kStride], stored.data(), c.written);
            LoadLineContext context{};
            context.Bits = &area[kMargin];
            context.Height = kHeight;
            context.LineBytes = c.lineBytes;
            context.StrideOrUsage = kStride;
            const auto data = reinterpret_cast<uintptr_t>(&context);
            const auto flush = color ? DllFlushTiffLine24DIB : DllFlushTiffLineDIB;
            EXPECT_EQ(flush(line.data(), c.lineNumber, data), 0U);
            EXPECT_EQ(flush(nullptr, 0, data) + flush(line.data(), 0, 0), 0U);
            EXPECT_EQ(area, expected);
        }
    }
}

}  // namespace
}  // namespace vellim::test
