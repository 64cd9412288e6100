// Streams in memory and on disk, and counted runs of elements on them.
#include <gtest/gtest.h>

#include "container/streams.h"
#include "support/test_files.h"
#include "vellim/failures.h"

namespace vellim::test {
namespace {

TEST(MemoryStreams, TakeTheFirstFreeOfTwentyNineHandles) {
    for (StreamHandle expected = -2; expected >= -30; expected--)
        EXPECT_EQ(mOpen(0, 0), expected);
    EXPECT_EQ(mClose(-17) + mClose(-5) + mOpen(0, 0) + mOpen(0, 0) + mOpen(0, 0), -5 - 17 - 1);
    for (StreamHandle handle = -2; handle >= -30; handle--)
        mClose(handle);
}

TEST(MemoryStreams, SeekWithinTheirSize) {
    const OwnedBlock block(BlockOf(Counted(10)));
    constexpr int32_t kBefore = 4;
    const struct {
        int32_t offset, origin, result;
    } cases[] = {
        {11, 0, -1}, {-1, 0, -1}, {6, 1, 10},  {7, 1, -1},         {INT32_MAX, 1, -1},
        {3, 2, 7},   {11, 2, -1}, {-2, 2, 12}, {INT32_MIN, 2, -1}, {9, -1, kBefore},
    };
    for (const auto& c : cases) {
        const OpenStream stream(mOpen(block.Get(), 10));
        ASSERT_EQ(mSeek(stream.Get(), kBefore, 0), kBefore);
        EXPECT_EQ(mSeek(stream.Get(), c.offset, c.origin), c.result) << c.offset << c.origin;
        EXPECT_EQ(mTell(stream.Get()), c.result == -1 ? kBefore : c.result);
    }
}

TEST(MemoryStreams, GrowByExactlyWhatIsWritten) {
    const OpenStream stream(mOpen(0, 0));
    const Bytes bytes = Counted(10);
    EXPECT_EQ(mWrite(stream.Get(), bytes.data(), 10), 10);
    EXPECT_EQ(mSeek(stream.Get(), 2, 0) + mWrite(stream.Get(), bytes.data(), 3), 5);
    EXPECT_EQ(mSeek(stream.Get(), -2, 2) + mWrite(stream.Get(), bytes.data(), 1), 13);
    const OwnedBlock block(mBlock(stream.Get()));
    EXPECT_EQ(BytesOf(block.Get()), (Bytes{1, 2, 1, 2, 3, 6, 7, 8, 9, 10, 0, 0, 1}));
}

TEST(MemoryStreams, NeverLeaveTheirBlock) {
    OwnedBlock block(BlockOf(Counted(10)));
    Bytes to(20);
    const OpenStream smaller(mOpen(block.Get(), 6)), larger(mOpen(block.Get(), 1000));
    EXPECT_EQ(mRead(smaller.Get(), to.data(), 20), 6) << "read beyond the stream's size";
    EXPECT_EQ(mRead(larger.Get(), to.data(), 20), 10) << "read beyond the block";
    EXPECT_EQ(mSeek(larger.Get(), 500, 0), 500);
    EXPECT_EQ(mRead(larger.Get(), to.data(), 4) - mWrite(larger.Get(), to.data(), 4), 1);
    EXPECT_EQ(mSeek(smaller.Get(), 6 - INT32_MAX, 2), INT32_MAX);
    EXPECT_EQ(mWrite(smaller.Get(), to.data(), 2), -1) << "passed 31 bits";
    EXPECT_EQ(mSeek(smaller.Get(), 0, 2), 6);
    block.Reset();
    EXPECT_EQ(mWrite(smaller.Get(), to.data(), 2), -1) << "grew a block that is gone";
    for (const StreamHandle handle : {0, -1, -30, -31, INT32_MIN, INT32_MAX})
        EXPECT_EQ(mSize(handle) + mSeek(handle, 0, 0) + mRead(handle, to.data(), 1), -3) << handle;
}

TEST(ElementStreams, PutElementsIntoAndOutOfTheFilesOrder) {
    constexpr int32_t kMM = TIFF_BIG_ENDIAN;
    Bytes many = Counted(80002), swapped = many;  // more than two transfers
    for (size_t i = 0; i < many.size(); i += 2)
        std::swap(swapped[i], swapped[i + 1]);
    const struct {
        int32_t type;
        uint32_t count;
        int32_t byteOrder, fillOrder;
        Bytes host, stored;
    } cases[] = {
        {TIFF_TYPE_BYTE, 3, kMM, 2, {1, 2, 0xF0}, {0x80, 0x40, 0x0F}},
        {TIFF_TYPE_SHORT, 2, TIFF_LITTLE_ENDIAN, 1, {1, 2, 3, 4}, {1, 2, 3, 4}},
        {TIFF_TYPE_SHORT, 40001, kMM, 1, many, swapped},
        {TIFF_TYPE_LONG, 1, kMM, 2, {1, 2, 3, 4}, {0x20, 0xC0, 0x40, 0x80}},
        {TIFF_TYPE_OFFSET, 1, kMM, 1, {1, 2, 3, 4}, {4, 3, 2, 1}},
        {TIFF_TYPE_RATIONAL, 1, kMM, 1, {1, 2, 3, 4, 5, 6, 7, 8}, {4, 3, 2, 1, 8, 7, 6, 5}},
    };
    for (const auto& c : cases) {
        const OwnedBlock block(BlockOf(c.stored));
        const OpenStream in(mOpen(block.Get(), static_cast<int32_t>(c.stored.size())));
        Bytes read(c.host.size()), given = c.host;
        EXPECT_EQ(LongRead(in.Get(), c.type, c.count, read.data(), c.byteOrder, c.fillOrder), 1);
        EXPECT_EQ(read, c.host) << "type " << c.type;
        const OpenStream out(mOpen(0, 0));
        EXPECT_EQ(LongWrite(out.Get(), c.type, c.count, given.data(), c.byteOrder, c.fillOrder), 1);
        const OwnedBlock written(mBlock(out.Get()));
        EXPECT_EQ(BytesOf(written.Get()), c.stored) << "type " << c.type;
        EXPECT_EQ(given, c.host) << "the caller's buffer was changed";
    }
}

TEST(ElementStreams, FailWithAnInputOutputCodeWhenBytesAreMissing) {
    uint32_t numbers[3] = {};
    const OwnedBlock block(BlockOf(Counted(11)));
    const OpenStream stream(mOpen(block.Get(), 11));
    EXPECT_EQ(LongRead(stream.Get(), 4, UINT32_MAX, numbers, 0, 0), 0);
    EXPECT_EQ(LongRead(stream.Get(), TIFF_TYPE_LONG, 3, numbers, 0, 0), 0);
    EXPECT_EQ(SetTiffError(TIFF_SUCCESS), TIFF_IO_ERROR);
    EXPECT_EQ(LongWrite(-31, 4, 3, numbers, TIFF_BIG_ENDIAN, 0), 0);
}

}  // namespace
}  // namespace vellim::test
