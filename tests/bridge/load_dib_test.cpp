// Loading a stored image as a DIB: where lines land, what survives damage, what is left behind.
#include "vellim/load.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/guards.h"
#include "platform/memory/memory_blocks.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

std::string message;

int32_t TakeMessage(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    message += std::string(caption) + ": " + text;
    EXPECT_EQ(owner | style, uint32_t{MB_TASKMODAL | MB_ICONEXCLAMATION});
    SetTiffError(TIFF_NOT_CALS);  // as a desktop that uses the library itself would
    return IDOK;
}

// Uncompressed lines of bytes that tell their place.
Bytes Lines(uint32_t lineBytes, uint32_t lines) {
    Bytes bytes(size_t{lineBytes} * lines);
    for (size_t i = 0; i < bytes.size(); i++)
        bytes[i] = static_cast<uint8_t>(i * 7 + i / 251 + 1);
    return bytes;
}

TEST(LoadDib, LinesLieBottomUpWithZeroPadding) {
    struct Case {
        uint16_t width, bits, samples;
        uint32_t lineBytes, storedBytes, bitsOffset;
    };
    const uint32_t height = 100;
    for (const Case& c : {Case{1729, 1, 1, 217, 220, 48}, Case{3, 8, 3, 9, 12, 40}}) {
        Bytes lines = Lines(c.lineBytes, height);
        const auto image = SimpleImage(c.width, height, c.bits, c.samples, 1, 1, height, {lines});
        const std::string path = FileOf(BuildTiff({image}), "image.tif");
        const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), 0, 0));
        ASSERT_TRUE(dib) << TiffError();
        for (size_t i = 0; c.samples == 3 && i < lines.size(); i += 3)
            std::swap(lines[i], lines[i + 2]);
        Bytes expected(size_t{height} * c.storedBytes);
        for (uint32_t line = 0; line < height; line++)
            std::copy_n(&lines[size_t{line} * c.lineBytes], c.lineBytes,
                        &expected[size_t{height - 1 - line} * c.storedBytes]);
        const auto* block = static_cast<const uint8_t*>(GlobalLock(dib.Get()));
        EXPECT_EQ(Bytes(block + c.bitsOffset, block + GlobalSize(dib.Get())), expected);
        EXPECT_EQ(GlobalUnlock(dib.Get()), 0) << "was handed over locked";
    }
}

// A result of -1 in `kept`: no DIB. Otherwise the lines from there on are zero.
TEST(LoadDib, KeepsWhatCameWithAWarningAndElseGivesACode) {
    const Bytes raw = Lines(2, 4), group4 = {0xE0, 0x02, 0x00, 0x20};  // V0 three times, EOFB
    const struct {
        uint32_t width, height;
        uint16_t bits, compression;
        int32_t code, kept;
        std::string message = {};
    } cases[] = {{16, 4, 1, 1, TIFF_SUCCESS, 4},
                 {8, 5000, 1, 1, TIFF_UNEXPECTED_END, 4000,  // the file has no more
                  "TIFF warning: Unexpected end of file in reading data."},
                 {8, 9, 1, 4, TIFF_UNEXPECTED_EOFB, 3,
                  "TIFF warning: Unexpected End of Facsimile Block (EOFB)"},
                 {8, 4, 2, 1, TIFF_BAD_COLOR_FORMAT, -1},
                 {16, 0xFFFFFFFF, 1, 1, TIFF_NO_MEMORY, -1},      // negative
                 {1000000, 16000000, 8, 1, TIFF_NO_MEMORY, -1}};  // above 32 bits
    std::vector<ImageSpec> images;
    for (const auto& c : cases)
        images.push_back(SimpleImage(c.width, c.height, c.bits, 1, c.compression, 1, c.height,
                                     {c.compression == 4 ? group4 : raw}));
    const std::string path = FileOf(BuildTiff(images), "images.tif");
    const uint32_t blocks = LiveGlobalBlocks();
    const CursorHandle arrow = LoadCursorA(0, IDC_ARROW);
    const DesktopDriver driver = {TakeMessage, nullptr, nullptr};
    SetDesktopDriver(&driver);
    SetCursor(arrow);
    for (int32_t i = 0; const auto& c : cases) {
        message.clear();
        const OwnedBlock dib(LoadTiffIntoDIB(path.c_str(), i++, 0));
        EXPECT_EQ(TiffError(), c.code) << i;
        EXPECT_EQ(bool{dib}, c.kept >= 0) << i;
        EXPECT_EQ(message, c.message) << i;
        if (!dib) continue;
        const LockedBlock block(dib.Get());
        for (auto line = static_cast<uint32_t>(c.kept); line < c.height; line++)
            ASSERT_EQ(block.As<uint8_t>()[48 + 4 * (c.height - 1 - line)], 0) << i << ", " << line;
    }
    EXPECT_EQ(LoadTiffIntoDIB(path.c_str(), 0, 1), 0U);
    EXPECT_EQ(TiffError(), TIFF_NO_MEMORY) << "no dialog can be run";
    EXPECT_EQ(LiveGlobalBlocks(), blocks) << "something was kept";
    EXPECT_EQ(SetCursor(0), arrow) << "the wait cursor stayed";
    SetDesktopDriver(nullptr);
}

TEST(DibLines, NothingIsWrittenOutsideTheRows) {
    constexpr uint32_t kHeight = 3, kStride = 12, kMargin = 64;
    for (const uint32_t lineNumber : {2U, 3U, 0xFFFFFFFFU}) {
        Bytes line(40, 0x11), area(2 * kMargin + kHeight * kStride, 0xEE), expected = area;
        if (lineNumber == 2) std::copy_n(line.begin(), kStride, &expected[kMargin]);
        LoadLineContext context{};
        context.Bits = &area[kMargin], context.Height = kHeight;
        context.LineBytes = 40, context.StrideOrUsage = kStride;
        const auto data = reinterpret_cast<uintptr_t>(&context);
        EXPECT_EQ(DllFlushTiffLineDIB(line.data(), lineNumber, data), 0U);
        EXPECT_EQ(DllFlushTiffLine24DIB(line.data(), lineNumber, data), 0U);
        EXPECT_EQ(area, expected) << "line " << lineNumber;
    }
}

}  // namespace
}  // namespace vellim::test
