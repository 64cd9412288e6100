// The failure code and its messages, the version, the entry point, and sizes.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>

#include "container/entry_point.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "vellim/files.h"

namespace vellim::test {
namespace {

TEST(FailureCode, TakesOnlyCodesThatExistForEachThread) {
    SetTiffError(TIFF_NOT_CALS);
    EXPECT_EQ(SetTiffError(21) + SetTiffError(-1), 2 * TIFF_NOT_CALS);
    std::thread([] { EXPECT_EQ(SetTiffError(20), TIFF_SUCCESS); }).join();
    EXPECT_EQ(SetTiffError(0), TIFF_NOT_CALS);
}

TEST(FailureMessages, AreOfTheCodeAskedForElseOfTheCurrent) {
    char buffer[TIFF_MESSAGE_BYTES];
    StoreFailure(17);
    EXPECT_STREQ(TiffErrorString(buffer, TIFF_IO_ERROR),
                 "General I/O error in reading or writting.");
    EXPECT_STREQ(TiffErrorString(buffer, 99), "Too few color info.");
    StoreFailure(UINT32_MAX);  // as a line function's own result is
    EXPECT_STREQ(TiffErrorString(buffer, 21), "Error during compression or decompression.");
}

TEST(Version, IsCutToTheBuffer) {
    const std::string version = std::string("Version 6.14") + '\0', untouched(16, '#');
    for (const int32_t size : {-1, 4, 16}) {
        std::string buffer = untouched;
        GetTiffVersion(buffer.data(), size);
        const auto copied = static_cast<size_t>(std::clamp(size, 0, 13));
        EXPECT_EQ(buffer, version.substr(0, copied) + untouched.substr(copied)) << size;
    }
}

TEST(EntryPoint, KnowsFourReasons) {
    for (const uint32_t reason : {0U, 1U, 2U, 3U, 4U, UINT32_MAX})
        EXPECT_EQ(DllMain(77, reason, nullptr), reason <= 3 ? 1 : 0) << reason;
}

TEST(Sizes, AreCheckedBeforeTheyAreNarrowed) {
    constexpr int64_t k31 = INT32_MAX;
    EXPECT_EQ(PackedRowBytes(9, 1), 2U);
    EXPECT_EQ(StoredRowBytes(33, 1), 8U);
    EXPECT_EQ(CheckedSize(65536, 65535, 65535), UINT32_MAX);
    for (const auto& none :
         {PackedRowBytes(k31 + 1, 8), PackedRowBytes(-1, 8), PackedRowBytes(INT64_MAX, 24),
          StoredRowBytes(k31, 8), CheckedSize(65536, 65535, 65536), CheckedSize(-1, -1)})
        EXPECT_EQ(none, std::nullopt);
    SetTiffSizeLimits(100, 0);
    EXPECT_TRUE(WithinSizeLimits(100, 1 << 24));
    EXPECT_FALSE(WithinSizeLimits(101, 1) || WithinSizeLimits(1, -1));
    SetTiffSizeLimits(UINT32_MAX, UINT32_MAX);
    EXPECT_FALSE(WithinSizeLimits((1 << 28) + 1, 1) || WithinSizeLimits(1, (1 << 28) + 1));
    SetTiffSizeLimits(1 << 20, 1 << 24);
}

}  // namespace
}  // namespace vellim::test
