// Scaled DIBs against a plain model: each pixel for itself, with a division.
#include "notes/dib_scaling.h"

#include <gtest/gtest.h>

#include <limits>

#include "platform/memory/memory_blocks.h"
#include "support/dib_maker.h"
#include "support/test_files.h"

namespace vellim::test {
namespace {

using Pixels = std::vector<uint32_t>;

OwnedBlock Scale(GlobalHandle dib, const DibScaling& scaling) {
    const LockedBlock block(dib);
    const auto whole = ReadWholeDib(block);
    return OwnedBlock(whole ? ScaleDib(*whole, scaling) : 0);
}

// The pixel, or row, that number j of the new ones comes from.
int64_t SourceOf(int64_t j, int64_t from, int64_t to) {
    return (4 * to + j * 8 * from) / (8 * to);
}

// The bytes of a row, counted from the highest.
Bytes RowOf(const Bytes& dib, int64_t y) {
    BITMAPINFOHEADER header;
    std::memcpy(&header, dib.data(), sizeof header);
    const int64_t stride = (int64_t{header.biBitCount} * header.biWidth + 31) / 32 * 4;
    const auto row = dib.begin() + static_cast<int64_t>(DibBitsOffset(&header)) +
                     (header.biHeight - 1 - y) * stride;
    return {row, row + stride};
}

Pixels Unpacked(const Bytes& row, uint32_t bits) {
    Pixels pixels;
    for (size_t at = 0; at + bits <= row.size() * 8; at += bits) {
        uint32_t pixel = 0;
        for (size_t bit = at; bit < at + bits; bit++)
            pixel = pixel << 1U | (row[bit / 8] >> (7 - bit % 8) & 1U);
        pixels.push_back(pixel);
    }
    return pixels;
}

// Of `pixels` that are asked for, `avail` being there, from within a byte or not.
int64_t BytesRead(int64_t bits, int64_t pixels, int64_t avail) {
    if (bits >= 8) return bits / 8 * std::min(pixels, avail);
    return pixels > avail ? avail * bits / 8 + 1 : (pixels * bits + 7) / 8 + 1;
}

Pixels ScaledRow(const Bytes& dib, uint32_t bits, int64_t imageWidth, const DibScaling& s,
                 int64_t y) {
    Bytes row = RowOf(dib, y);
    const int64_t start = int64_t{s.x} * bits / 8;
    const auto end = static_cast<size_t>(start + BytesRead(bits, s.width, imageWidth - s.x));
    if (end < row.size()) row.resize(end);
    Pixels from = Unpacked(row, bits), to;
    from.resize(static_cast<size_t>(imageWidth) + 99);
    for (int64_t j = 0; j < s.toWidth; j++) {
        const int64_t k = SourceOf(j, s.width, s.toWidth);
        to.push_back(k < s.width ? from[static_cast<size_t>(s.x + k)] : 0);
    }
    return to;
}

TEST(DibScaling, TakesTheNearestPixel) {
    const uint32_t blocks = LiveGlobalBlocks();
    constexpr int32_t imageHeight = 5;
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24})
        for (const int32_t imageWidth : {13, 31})
            for (const int32_t x : {0, 1, 3, 7, 8, 12})
                for (const int32_t width : {1, 3, 8, 13, 20, 41})
                    for (const int32_t toWidth : {1, 3, 8, 13, 20, 33})
                        for (const auto& [y, height, toHeight] :
                             {std::array{0, 5, 5}, {2, 3, 8}, {4, 4, 3}, {0, 5, 2}}) {
                            const DibScaling s = {x, y, width, height, toWidth, toHeight};
                            const OwnedBlock dib = MakeDib(imageWidth, imageHeight, bits);
                            const Bytes from = BytesOf(dib.Get()),
                                        to = BytesOf(Scale(dib.Get(), s).Get());
                            ASSERT_FALSE(to.empty());
                            for (int64_t i = 0; i < toHeight; i++) {
                                const int64_t down = SourceOf(i, height, toHeight);
                                Pixels expected;
                                if (down < height && y + down < imageHeight)
                                    expected = ScaledRow(from, bits, imageWidth, s, y + down);
                                const Pixels row = Unpacked(RowOf(to, i), bits);
                                expected.resize(row.size());
                                ASSERT_EQ(row, expected)
                                    << bits << " bits, row " << i << ": " << width << " of "
                                    << imageWidth << " from " << x << " to " << toWidth;
                            }
                            const auto head = static_cast<ptrdiff_t>(DibBitsOffset(from.data()));
                            EXPECT_TRUE(std::equal(from.begin() + 12, from.begin() + head,
                                                   to.begin() + 12));
                        }
    EXPECT_EQ(LiveGlobalBlocks(), blocks);
}

TEST(DibScaling, StepsAsWorkedOutByHand) {
    const OwnedBlock dib = MakeDib(8, 1, 8), wide = MakeDib(100'000, 1, 1);
    for (uint8_t i = 0; i < 8; i++)
        LockedBlock(dib.Get()).As<uint8_t>()[40 + 1024 + i] = static_cast<uint8_t>(10 + i);
    const auto row = [](const OwnedBlock& from, const DibScaling& scaling, uint32_t bits) {
        return Unpacked(RowOf(BytesOf(Scale(from.Get(), scaling).Get()), 0), bits);
    };
    EXPECT_EQ(row(dib, {0, 0, 3, 1, 8, 1}, 8), (Pixels{10, 10, 11, 11, 12, 12, 12, 0}));
    EXPECT_EQ(row(dib, {0, 0, 8, 1, 3, 1}, 8), (Pixels{10, 13, 15, 0}));
    // Numbers whose products take more than 32 bits.
    const Pixels all = Unpacked(RowOf(BytesOf(wide.Get()), 0), 1);
    const Pixels half = row(wide, {0, 0, 100'000, 1, 50'000, 1}, 1);
    for (size_t j = 0; j < 50'000; j++)
        ASSERT_EQ(half[j], all[2 * j]) << j;
    Bytes bytes = {0x12, 0x34, 0x56};
    ShiftRowLeft(bytes, 3, bytes);
    EXPECT_EQ(bytes, (Bytes{0x91, 0xA2, 0xB0}));
}

TEST(DibScaling, RefusesWhatMakesNoSense) {
    constexpr int32_t most = std::numeric_limits<int32_t>::max();
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 24}) {
        const OwnedBlock dib = MakeDib(13, 5, bits);
        for (const DibScaling& bad : {DibScaling{0, 0, 0, 5, 13, 5},
                                      {0, 0, 13, -1, 13, 5},
                                      {0, 0, 13, 5, 0, 5},
                                      {0, 0, 13, 5, 13, -5},
                                      {-1, 0, 13, 5, 13, 5},
                                      {0, -1, 13, 5, 13, 5},
                                      {13, 0, 1, 1, 1, 1},
                                      {0, 5, 1, 1, 1, 1},
                                      {0, 0, 13, 5, most, most}})
            EXPECT_FALSE(Scale(dib.Get(), bad));
        EXPECT_TRUE(Scale(dib.Get(), {12, 4, most, most, 3, 3}));
        GlobalReAlloc(dib.Get(), GlobalSize(dib.Get()) - 1, 0);
        EXPECT_FALSE(Scale(dib.Get(), {0, 0, 1, 1, 1, 1})) << "ends before its last row does";
    }
    const auto refuses = [](auto member, auto value) {
        const OwnedBlock dib = MakeDib(3, 3, 24);
        LockedBlock(dib.Get()).As<BITMAPINFOHEADER>()->*member = value;
        return !Scale(dib.Get(), {0, 0, 1, 1, 1, 1});
    };
    EXPECT_TRUE(refuses(&BITMAPINFOHEADER::biSize, 12U) && refuses(&BITMAPINFOHEADER::biWidth, 0) &&
                refuses(&BITMAPINFOHEADER::biHeight, -3) &&
                refuses(&BITMAPINFOHEADER::biBitCount, uint16_t{32}) &&
                refuses(&BITMAPINFOHEADER::biClrUsed, ~0U));
}

}  // namespace
}  // namespace vellim::test
