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

namespace vellim {
namespace {

using test::Bytes;
using test::ImageSpec;

std::vector<std::string> messages;
CursorHandle shownCursor = 0;
CursorHandle cursorAtMessage = 0;

int32_t TakeMessage(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    messages.push_back(std::string(caption) + ": " + text);
    if (owner != 0 || style != (MB_TASKMODAL | MB_ICONEXCLAMATION)) messages.emplace_back("style");
    cursorAtMessage = shownCursor;
    SetTiffError(TIFF_NOT_CALS);  // as a desktop that uses the library itself would
    return IDOK;
}
void TakeCursor(CursorHandle cursor) {
    shownCursor = cursor;
}

class LoadDib : public testing::Test {
  protected:
    void SetUp() override {
        messages.clear();
        const DesktopDriver driver = {TakeMessage, TakeCursor};
        SetDesktopDriver(&driver);
        GetTiffSizeLimits(&linePixels_, &pictureLines_);
        SetCursor(arrow_);
    }
    void TearDown() override {
        EXPECT_EQ(SetCursor(0), arrow_) << "the wait cursor stayed";
        EXPECT_EQ(LiveGlobalBlocks(), blocks_) << "something was kept";
        SetDesktopDriver(nullptr);
        SetTiffSizeLimits(linePixels_, pictureLines_);
    }
    CursorHandle arrow_ = LoadCursorA(0, IDC_ARROW);

  private:
    uint32_t blocks_ = LiveGlobalBlocks();
    uint32_t linePixels_ = 0;
    uint32_t pictureLines_ = 0;
};

// Uncompressed lines of bytes that tell their place.
Bytes Lines(uint32_t lineBytes, uint32_t lines) {
    Bytes bytes(size_t{lineBytes} * lines);
    for (size_t i = 0; i < bytes.size(); i++)
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 251 + 1);
    return bytes;
}

std::string FileOf(const ImageSpec& image) {
    return test::FileOf(test::BuildTiff({image}), "image.tif");
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
        const uint16_t photometric = c.samples == 3 ? 2 : 1;
        const std::string path = FileOf(
            test::SimpleImage(c.width, height, c.bits, c.samples, 1, photometric, height, {lines}));
        const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), 0, 0));
        ASSERT_TRUE(dib) << TiffError();
        EXPECT_EQ(TiffError(), 0);
        const uint32_t bitsOffset = 40 + 4 * c.colors;
        ASSERT_EQ(GlobalSize(dib.Get()), bitsOffset + height * c.storedBytes);

        if (c.samples == 3)
            for (size_t i = 0; i < lines.size(); i += 3)
                std::swap(lines[i], lines[i + 2]);
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

// Of lines that are due, `given` come, and the others stay zero.
TEST_F(LoadDib, DataThatEndsTooSoonIsKeptWithOneWarning) {
    struct Case {
        uint16_t compression;
        uint32_t height, given;
        Bytes strip;
        int32_t code;
        const char* message;
    };
    const Bytes group4 = {0xE0, 0x02, 0x00, 0x20};  // V0 for three lines, EOFB
    const Case cases[] = {{1, 5000, 20, Lines(1, 20), TIFF_UNEXPECTED_END,
                           "TIFF warning: Unexpected end of file in reading data."},
                          {4, 9, 3, group4, TIFF_UNEXPECTED_EOFB,
                           "TIFF warning: Unexpected End of Facsimile Block (EOFB)"}};
    constexpr uint32_t kFileBytes = 1000;  // what follows a strip in the file counts as pixels too
    for (const Case& c : cases) {
        messages.clear();
        const std::string path =
            FileOf(test::SimpleImage(8, c.height, 1, 1, c.compression, 1, c.height, {c.strip}));
        const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), 0, 0));
        ASSERT_TRUE(dib);
        EXPECT_EQ(TiffError(), c.code);
        EXPECT_EQ(messages, std::vector<std::string>{c.message});
        EXPECT_EQ(cursorAtMessage, LoadCursorA(0, IDC_WAIT));
        const LockedBlock block(dib.Get());
        for (uint32_t i = 0; i < c.height; i++) {
            if (c.compression == 1 && i >= c.given && i < kFileBytes) continue;
            const uint8_t line = block.As<const uint8_t>()[48 + (c.height - 1 - i) * 4];
            ASSERT_EQ(line, i < c.given && c.compression == 1 ? c.strip[i] : 0) << "line " << i;
        }
    }
}

TEST_F(LoadDib, EveryOtherFailureGivesNothingAndItsCode) {
    const auto image = [](uint32_t width, uint32_t height, uint16_t bits, uint16_t compression) {
        return test::SimpleImage(width, height, bits, 1, compression, 1, 4, {Lines(2, 4)});
    };
    struct Case {
        ImageSpec image;
        int32_t code;
    };
    const Case cases[] = {
        {image(16, 4, 1, 1), TIFF_SUCCESS},
        {image(16, 4, 1, 999), TIFF_UNKNOWN_COMPRESSION},
        {image(8, 4, 2, 1), TIFF_BAD_COLOR_FORMAT},
        {image(0x7FFFFFFF, 4, 1, 1), TIFF_NO_MEMORY},       // above the limits
        {image(16, 0x7FFFFFFF, 1, 1), TIFF_NO_MEMORY},      // the same
        {image(16, 0xFFFFFFFF, 1, 1), TIFF_NO_MEMORY},      // negative
        {image(1000000, 16000000, 8, 1), TIFF_NO_MEMORY}};  // more than 32 bits count
    std::vector<ImageSpec> images;
    for (const Case& c : cases)
        images.push_back(c.image);
    const std::string path = test::FileOf(test::BuildTiff(images), "images.tif");
    const auto codeOf = [](const char* file, int32_t index, int32_t showInfo) {
        SetTiffError(TIFF_NOT_CALS);
        const OwnedBlock dib(LoadTiffIntoDIB(file, index, showInfo));
        const int32_t code = TiffError();
        EXPECT_EQ(static_cast<bool>(dib), code == TIFF_SUCCESS);
        return code;
    };
    for (size_t i = 0; i < images.size(); i++)
        EXPECT_EQ(codeOf(path.c_str(), static_cast<int32_t>(i), 0), cases[i].code) << i;
    EXPECT_EQ(codeOf(path.c_str(), static_cast<int32_t>(images.size()), 0), TIFF_BAD_INDEX);
    EXPECT_EQ(codeOf(path.c_str(), -1, 0), TIFF_BAD_INDEX);
    EXPECT_EQ(codeOf((path + ".missing").c_str(), 0, 0), TIFF_IO_ERROR);
    EXPECT_EQ(LoadTiffIntoDIB(nullptr, 0, 0), 0U);
    EXPECT_EQ(codeOf(path.c_str(), 0, 1), TIFF_NO_MEMORY);  // no dialog can be run
    SetTiffSizeLimits(15, 4);
    EXPECT_EQ(codeOf(path.c_str(), 0, 0), TIFF_NO_MEMORY);
    SetTiffSizeLimits(16, 4);
    EXPECT_EQ(codeOf(path.c_str(), 0, 0), TIFF_SUCCESS);
    EXPECT_TRUE(messages.empty());
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
            Bytes line = Lines(c.lineBytes, 1);
            Bytes stored = line;
            for (size_t i = 0; color && i + 3 <= stored.size(); i += 3)
                std::swap(stored[i], stored[i + 2]);
            Bytes area(2 * kMargin + kHeight * kStride, 0xEE);
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
}  // namespace vellim
