// The failure code and its messages, the version, the entry point, and sizes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <thread>

#include "container/entry_point.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "vellim/files.h"
#include "vellim/platform.h"

namespace vellim::test {
namespace {

std::string shownBox;

int32_t NoteMessageBox(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    shownBox = std::to_string(owner) + "|" + text + "|" + caption + "|" + std::to_string(style);
    return IDOK;
}

TEST(FailureCode, TakesOnlyCodesThatExistForEachThread) {
    SetTiffError(TIFF_NOT_CALS);
    for (const int32_t code : {21, -1, INT32_MAX, INT32_MIN})
        EXPECT_EQ(SetTiffError(code), TIFF_NOT_CALS);
    std::thread([] { EXPECT_EQ(SetTiffError(TIFF_BAD_TAG), TIFF_SUCCESS); }).join();
    EXPECT_EQ(SetTiffError(20), TIFF_NOT_CALS);
    EXPECT_EQ(SetTiffError(0), 20);
    EXPECT_EQ(TiffError(), 0);
}

TEST(FailureMessages, AreCopiedOrShown) {
    const struct {
        uint32_t current;
        int32_t asked;
        const char* message;
    } cases[] = {{0, TIFF_IO_ERROR, "General I/O error in reading or writting."},
                 {0, 20, "Unexpected End of Facsimile Block (EOFB)"},
                 {17, 99, "Too few color info."},
                 {17, -1, "Too few color info."},
                 {77, 77, "Error during compression or decompression."},
                 {UINT32_MAX, 21, "Error during compression or decompression."}};
    std::array<char, TIFF_MESSAGE_BYTES> buffer;
    for (const auto& c : cases) {
        StoreFailure(c.current);  // as a line function's own result is
        EXPECT_EQ(TiffErrorString(buffer.data(), c.asked), buffer.data());
        EXPECT_STREQ(buffer.data(), c.message);
    }
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

TEST(EntryPoint, KeepsTheModuleAndAdmitsProcessesByTheSystem) {
    EXPECT_EQ(DllMain(77, kProcessAttach, nullptr), 1);
    for (const uint32_t reason : {0U, 0U, 1U, 2U, 3U, 4U, UINT32_MAX}) {
        const bool known = reason <= 3;
        EXPECT_EQ(DllMain(reason == 1 ? 78 : 5, reason, nullptr), known ? 1 : 0) << reason;
        EXPECT_EQ(ModuleInstance(), reason == 0 ? 77U : 78U) << reason;
    }
    DllMain(0, kProcessAttach, nullptr);
    for (const uint32_t version : {4U, 0x80000004U}) {
        ProcessCalls seen;
        for (const bool again : {false, true}) {
            for (const uint32_t once : {kProcessAttach, kProcessDetach})
                EXPECT_EQ(AdmitsCall(version, once, seen), version == 4 || !again) << once;
            EXPECT_TRUE(AdmitsCall(version, 2, seen) && AdmitsCall(version, 3, seen));
            EXPECT_FALSE(AdmitsCall(version, 4, seen));
        }
    }
}

TEST(Sizes, AreCheckedBeforeTheyAreNarrowed) {
    constexpr int64_t k31 = INT32_MAX;
    EXPECT_EQ(PackedRowBytes(9, 1), 2U);
    EXPECT_EQ(PackedRowBytes(0, 24), 0U);
    EXPECT_EQ(PackedRowBytes(k31, 8), static_cast<uint32_t>(k31));
    EXPECT_EQ(StoredRowBytes(1, 1), 4U);
    EXPECT_EQ(StoredRowBytes(33, 1), 8U);
    EXPECT_EQ(CheckedSize(65536, 65535, 65535), UINT32_MAX);
    for (const auto& none :
         {PackedRowBytes(k31 + 1, 8), PackedRowBytes(-1, 8), PackedRowBytes(INT64_MAX, 24),
          PackedRowBytes(INT64_MAX, 1), StoredRowBytes(k31, 8), CheckedSize(65536, 65535, 65536),
          CheckedSize(-1, -1), CheckedSize(1, 1, -2), CheckedSize(INT64_MAX, 2)})
        EXPECT_EQ(none, std::nullopt);
}

TEST(SizeLimits, AreKeptByAZeroAndCapped) {
    constexpr int32_t pixels = 1 << 20, lines = 1 << 24, cap = 1 << 28;
    EXPECT_TRUE(WithinSizeLimits(pixels, lines));
    EXPECT_FALSE(WithinSizeLimits(pixels + 1, 1) || WithinSizeLimits(1, lines + 1));
    EXPECT_FALSE(WithinSizeLimits(-1, 1) || WithinSizeLimits(1, -1));
    SetTiffSizeLimits(100, 0);
    EXPECT_FALSE(WithinSizeLimits(101, 1));
    EXPECT_TRUE(WithinSizeLimits(100, lines));
    for (const uint32_t huge : {uint32_t{cap} + 1, UINT32_MAX}) {
        SetTiffSizeLimits(huge, huge);
        uint32_t linePixels = 0, pictureLines = 0;
        GetTiffSizeLimits(&linePixels, &pictureLines);
        EXPECT_EQ(std::pair(linePixels, pictureLines), std::pair(uint32_t{cap}, uint32_t{cap}));
        EXPECT_FALSE(WithinSizeLimits(cap + 1, 1) || WithinSizeLimits(1, cap + 1));
    }
    SetTiffSizeLimits(pixels, lines);
}

}  // namespace
}  // namespace vellim::test
