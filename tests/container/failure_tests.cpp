#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>

#include "container/sizes.h"
#include "vellim/failures.h"
#include "vellim/files.h"
#include "vellim/platform.h"

namespace vellim::test {
namespace {

std::string shownBox;

int32_t NoteMessageBox(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    shownBox = std::to_string(owner) + "|" + text + "|" + caption + "|" + std::to_string(style);
    return IDOK;
}

TEST(FailureCode, TakesOnlyCodesThatExist) {
    SetTiffError(TIFF_NOT_CALS);
    for (const int32_t code : {21, -1, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(SetTiffError(code), TIFF_NOT_CALS);
        EXPECT_EQ(TiffError(), TIFF_NOT_CALS);
    }
    EXPECT_EQ(SetTiffError(20), TIFF_NOT_CALS);
    EXPECT_EQ(SetTiffError(0), 20);
    EXPECT_EQ(TiffError(), 0);
}

TEST(FailureCode, IsEachThreadsOwn) {
    SetTiffError(TIFF_NOT_TIFF);
    int32_t elsewhere = -1;
    std::thread([&] {
        elsewhere = TiffError();
        SetTiffError(TIFF_BAD_TAG);
    }).join();
    EXPECT_EQ(elsewhere, TIFF_SUCCESS);
    EXPECT_EQ(TiffError(), TIFF_NOT_TIFF);
}

TEST(FailureMessages, AreCopiedOrShown) {
    std::array<char, TIFF_MESSAGE_BYTES> buffer;
    EXPECT_EQ(TiffErrorString(buffer.data(), TIFF_IO_ERROR), buffer.data());
    EXPECT_STREQ(buffer.data(), "General I/O error in reading or writting.");
    EXPECT_STREQ(TiffErrorString(buffer.data(), 20), "Unexpected End of Facsimile Block (EOFB)");
    SetTiffError(TIFF_TOO_FEW_COLORS);
    EXPECT_STREQ(TiffErrorString(buffer.data(), 99), "Too few color info.");
    EXPECT_STREQ(TiffErrorString(buffer.data(), -1), "Too few color info.");

    const DesktopDriver driver = {.MessageBox = NoteMessageBox, .ShowCursor = nullptr};
    SetDesktopDriver(&driver);
    EXPECT_EQ(TiffErrorString(nullptr, TIFF_SUCCESS), nullptr);
    SetDesktopDriver(nullptr);
    EXPECT_EQ(shownBox, "0|Operation was successful.|TIFF error|48");
}

TEST(Version, IsCutToTheBuffer) {
    const std::string version = std::string("Version 6.14") + '\0', untouched(16, '#');
    for (const int32_t size : {-1, 0, 4, 12, 13, 16}) {
        std::string buffer = untouched;
        GetTiffVersion(buffer.data(), size);
        const auto copied = static_cast<size_t>(std::clamp(size, 0, 13));
        EXPECT_EQ(buffer, version.substr(0, copied) + untouched.substr(copied)) << size;
    }
    GetTiffVersion(nullptr, 16);
}

TEST(EntryPoint, KnowsFourReasons) {
    for (uint32_t reason = 0; reason <= 3; reason++)
        EXPECT_EQ(DllMain(0, reason, nullptr), 1);
    EXPECT_EQ(DllMain(0, 4, nullptr), 0);
}

TEST(Sizes, AreCheckedBeforeTheyAreNarrowed) {
    EXPECT_EQ(PackedRowBytes(9, 1), 2U);
    EXPECT_EQ(PackedRowBytes(0, 24), 0U);
    EXPECT_EQ(PackedRowBytes(INT32_MAX, 8), static_cast<uint32_t>(INT32_MAX));
    EXPECT_EQ(PackedRowBytes(int64_t{INT32_MAX} + 1, 8), std::nullopt);
    EXPECT_EQ(PackedRowBytes(-1, 8), std::nullopt);
    EXPECT_EQ(PackedRowBytes(INT64_MAX, 24), std::nullopt);
    EXPECT_EQ(PackedRowBytes(INT64_MAX, 1), std::nullopt);
    EXPECT_EQ(StoredRowBytes(1, 1), 4U);
    EXPECT_EQ(StoredRowBytes(33, 1), 8U);
    EXPECT_EQ(StoredRowBytes(INT32_MAX, 8), std::nullopt) << "rounding up passes 31 bits";
    EXPECT_EQ(CheckedSize(65536, 65535, 65535), UINT32_MAX);
    EXPECT_EQ(CheckedSize(65536, 65535, 65536), std::nullopt);
    EXPECT_EQ(CheckedSize(-1, -1), std::nullopt);
    EXPECT_EQ(CheckedSize(1, 1, -2), std::nullopt);
    EXPECT_EQ(CheckedSize(INT64_MAX, 2), std::nullopt);
}

TEST(SizeLimits, AreKeptByAZero) {
    uint32_t pixels = 0, lines = 0;
    GetTiffSizeLimits(&pixels, &lines);
    EXPECT_TRUE(WithinSizeLimits(1048576, 16777216));
    EXPECT_FALSE(WithinSizeLimits(1048577, 1) || WithinSizeLimits(1, 16777217));
    EXPECT_FALSE(WithinSizeLimits(-1, 1) || WithinSizeLimits(1, -1));
    SetTiffSizeLimits(100, 0);
    EXPECT_FALSE(WithinSizeLimits(101, 1));
    EXPECT_TRUE(WithinSizeLimits(100, 16777216));
    SetTiffSizeLimits(pixels, lines);
}

}  // namespace
}  // namespace vellim::test
