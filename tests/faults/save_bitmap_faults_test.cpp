// Saving device bitmaps when a call fails, and when the process is killed: a TIFF file keeps its
// images and has the new one or not, a bare file is the old one or the new one.
#include <gtest/gtest.h>

#include "faults/whatever_fails.h"
#include "platform/graphics/graphics_guards.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

int32_t TakeMessage(WindowHandle /*owner*/, const char* /*text*/, const char* /*caption*/,
                    uint32_t /*style*/) {
    return IDOK;
}
constexpr DesktopDriver kSilent = {TakeMessage, nullptr, nullptr};

class SavedBitmap : public testing::Test {
  protected:
    SavedBitmap() { SetDesktopDriver(&kSilent); }
    ~SavedBitmap() override { SetDesktopDriver(nullptr); }

    OwnedObject bitmap_{CreateBitmap(4000, 200, 1, 1, Noise().data())};

  private:
    // So much that it doesn't fit a single write.
    static Bytes Noise() {
        Bytes noise(size_t{500} * 200);
        for (size_t i = 0; i < noise.size(); i++)
            noise[i] = static_cast<uint8_t>(i * i >> 3U ^ i * 89);
        return noise;
    }
};

TEST_F(SavedBitmap, KeepsTheImagesThatWereThere) {
    const Bytes old = BuildTiff({SimpleImage(80, 200, 8, 1, 1, 1, 200, {Bytes(16000, 7)})}, true);
    const std::string path = FileOf(old, "saved.tif");
    const auto prepare = [&] { FileOf(old, "saved.tif"); };
    const auto save = [&] {
        return SaveBitmapInTiffFile(path.c_str(), bitmap_.Get(), TIFF_SAVE_PACKBITS, 0);
    };
    WhateverFails(20, prepare, save, [&](const Fault& fault, int32_t result) {
        const int32_t images = GetNumberOfImagesInTiffFile(path.c_str());
        EXPECT_TRUE(result < 0 ? images == 1 || images == 2 : images == 1 + result) << fault;
        Bytes now = ReadFile(path);
        now.resize(std::min(now.size(), old.size()));
        EXPECT_TRUE(images == 2 || now == old) << fault;
    });
}

TEST_F(SavedBitmap, TakesTheOldFilesPlaceAsAWhole) {
    const Bytes old(70000, 'o');
    const std::string path = FileOf(old, "bare.g4"), other = NewPath("other.g4");
    ASSERT_EQ(SaveBitmapInCcittFile(other.c_str(), bitmap_.Get(), CCITT_FILE_GROUP4), 1);
    const Bytes whole = ReadFile(other);
    const auto prepare = [&] { FileOf(old, "bare.g4"); };
    const auto save = [&] {
        return SaveBitmapInCcittFile(path.c_str(), bitmap_.Get(), CCITT_FILE_GROUP4);
    };
    WhateverFails(5, prepare, save, [&](const Fault& fault, int32_t result) {
        const Bytes now = ReadFile(path);
        EXPECT_TRUE((result != 1 && now == old) || (result != 0 && now == whole)) << fault;
    });
}

}  // namespace
}  // namespace vellim::test
