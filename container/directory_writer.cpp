// A directory goes behind the image data that it describes: first the values that entries can't
// hold, then the entries, then a link of 0. All of that is put together in memory and written in
// one piece. Only then is the link before it, the chain's last or the header's, pointed at the new
// directory: whatever fails earlier leaves bytes behind the end that nothing leads to.

#include "container/directory_writer.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

#include "container/chain_end.h"
#include "container/directory_layout.h"
#include "container/failure.h"
#include "container/file_stream.h"
#include "container/sizes.h"
#include "vellim/edit.h"

namespace vellim {
namespace {

constexpr uint16_t kTiffNumber = 42;
constexpr uint32_t kNumberOffset = 2;
constexpr uint32_t kFirstLinkOffset = 4;

bool WriteBytes(StreamHandle stream, void* bytes, uint32_t count) {
    return LongWrite(stream, TIFF_TYPE_BYTE, count, bytes, TIFF_LITTLE_ENDIAN,
                     TIFF_FILL_MSB_FIRST) != 0;
}

// What a file says of itself counts for more than what its handle was told. What doesn't begin with
// a header isn't written to.
bool TakeStoredByteOrder(TiffFile& file, StreamHandle stream) {
    uint16_t mark = 0;
    constexpr int32_t markBytes = sizeof mark;
    if (mSeek(stream, 0, 0) != 0 || mRead(stream, &mark, markBytes) != markBytes) return false;
    if (mark != TIFF_LITTLE_ENDIAN && mark != TIFF_BIG_ENDIAN) return false;
    file.ByteOrder = mark;
    return true;
}

// A file with less than its header could never be opened again.
bool BeginFile(TiffFile& file, StreamHandle stream, uint32_t firstDirectory) {
    if (WriteNewHeader(stream, file.ByteOrder, firstDirectory)) return true;
    if (!file.IsMemory()) DeleteFileA(file.PathName);
    return Fail(TIFF_IO_ERROR, false);
}

// Values and directory in one block, as they will stand at `start` in the file.
struct LaidOut {
    OwnedBlock Bytes;
    uint32_t Size = 0;
    uint32_t DirectoryAt = 0;  // from the block's start
    uint32_t Entries = 0;
};

std::optional<uint32_t> ValueAreaBytes(const TagBuffer& tags, const ListedTag* list,
                                       uint32_t count) {
    uint64_t bytes = 0;
    for (uint32_t i = 0; i < count; i++)
        bytes += TagToStoreOf(*tags.RecordAt(list[i].Place)).AreaBytes();
    return CheckedSize(1, static_cast<int64_t>(bytes));
}

// Nothing, with the code in `failure`, without memory or when the file would grow beyond 31 bits.
std::optional<LaidOut> LayOut(const TagBuffer& tags, uint32_t start, uint16_t byteOrder,
                              uint32_t& failure) {
    failure = TIFF_NO_MEMORY;
    uint32_t count = 0;
    const OwnedBlock listBlock = SortedTagList(tags, count);
    const LockedBlock list(listBlock.Get());
    if (!list) return std::nullopt;
    const auto* listed = list.As<ListedTag>();
    const auto areaBytes = ValueAreaBytes(tags, listed, count);
    if (!areaBytes) return std::nullopt;
    const auto size = CheckedSize(1, *areaBytes, DirectoryBytes(count));
    if (!size) return std::nullopt;
    if (int64_t{start} + *size > std::numeric_limits<int32_t>::max()) {
        failure = TIFF_IO_ERROR;
        return std::nullopt;
    }

    LaidOut out{.Bytes = OwnedBlock(GlobalAlloc(GHND, *size)),
                .Size = *size,
                .DirectoryAt = *areaBytes,
                .Entries = count};
    const LockedBlock block(out.Bytes.Get());
    if (!block) return std::nullopt;
    auto* bytes = block.As<uint8_t>();
    PutShort(bytes + out.DirectoryAt, static_cast<uint16_t>(count), byteOrder);
    uint8_t* entry = bytes + out.DirectoryAt + kEntryCountBytes;
    uint32_t valueAt = 0;
    for (uint32_t i = 0; i < count; i++, entry += kEntryBytes) {
        const TagToStore tag = TagToStoreOf(*tags.RecordAt(listed[i].Place));
        PutEntry(entry, tag, start + valueAt, byteOrder);
        if (!tag.IsInline()) PutValue(bytes + valueAt, tag, byteOrder);
        valueAt += tag.AreaBytes();
    }
    return out;
}

bool LinkTiffDirectory(TiffFile& file, int32_t image, StreamHandle stream, uint32_t directoryOffset,
                       uint32_t entries) {
    if (!WriteLink(stream, file.TailLinkOffset, directoryOffset, file.ByteOrder)) return false;
    file.Images[image].DirectoryOffset = directoryOffset;
    file.TailLinkOffset = directoryOffset + DirectoryBytes(entries) - kLinkBytes;
    file.OpenStyle = kWrittenStyle;
    return true;
}

}  // namespace

bool WriteNewHeader(StreamHandle stream, uint16_t byteOrder, uint32_t firstDirectory) {
    std::array<uint8_t, kHeaderBytes> header{};
    PutShort(header.data(), byteOrder, TIFF_LITTLE_ENDIAN);
    PutShort(header.data() + kNumberOffset, kTiffNumber, byteOrder);
    PutLong(header.data() + kFirstLinkOffset, firstDirectory, byteOrder);
    return WriteBytes(stream, header.data(), kHeaderBytes);
}

// A block in memory is its application's, which may well want a chain replaced.
bool WriteTiffHeader(TiffFile& file, StreamHandle stream, uint32_t firstDirectory) {
    if ((file.OpenStyle & kCreateBit) != 0) return BeginFile(file, stream, firstDirectory);
    if (!TakeStoredByteOrder(file, stream)) return Fail(TIFF_IO_ERROR, false);
    if (!file.IsMemory() && !FindChainEnd(file, stream)) return false;
    return mSeek(stream, 0, 2) >= 0 || Fail(TIFF_IO_ERROR, false);
}

OwnedBlock SortedTagList(const TagBuffer& tags, uint32_t& count) {
    const uint32_t most = tags.Head().TagCount;
    OwnedBlock block(GlobalAlloc(GHND, most * uint32_t{sizeof(ListedTag)}));
    const LockedBlock locked(block.Get());
    if (!locked) return Fail(TIFF_NO_MEMORY, OwnedBlock());
    auto* list = locked.As<ListedTag>();
    count = 0;
    for (auto record = tags.RecordAt(0); record && count < most;
         record = tags.RecordAt(record->Place + record->Head.RecordSize))
        list[count++] = {.Tag = record->Head.Tag, .Place = record->Place};
    std::sort(list, list + count, [](const ListedTag& a, const ListedTag& b) {
        return a.Tag != b.Tag ? a.Tag < b.Tag : a.Place < b.Place;
    });
    for (uint32_t i = 1; i < count; i++)
        if (list[i].Tag == list[i - 1].Tag) list[i].Place = list[i - 1].Place;
    return block;
}

bool CanBeStored(const TagBuffer& tags) {
    for (auto record = tags.RecordAt(0); record;
         record = tags.RecordAt(record->Place + record->Head.RecordSize))
        if (record->ValueBytes > kLongestStoredValue) return false;
    return true;
}

bool WriteLink(StreamHandle stream, uint32_t linkOffset, uint32_t link, uint16_t byteOrder) {
    if (mSeek(stream, static_cast<int32_t>(linkOffset), 0) < 0) return Fail(TIFF_IO_ERROR, false);
    return LongWrite(stream, TIFF_TYPE_LONG, 1, &link, byteOrder, TIFF_FILL_MSB_FIRST) != 0;
}

uint32_t WriteImageDirectory(TiffFileHandle file, int32_t image, StreamHandle stream) {
    const TiffFileAccess access(file);
    const TagBuffer tags(TagBufferOf(file, image));
    if (!access || !tags) return TIFF_NO_MEMORY;
    if (!CanBeStored(tags)) return TIFF_BAD_TAG;
    const int32_t start = mSeek(stream, 0, 2);
    if (start < 0) return TIFF_IO_ERROR;
    uint32_t failure = 0;
    const auto out = LayOut(tags, static_cast<uint32_t>(start), access->ByteOrder, failure);
    if (!out) return failure;
    {
        const LockedBlock bytes(out->Bytes.Get());
        if (!bytes) return TIFF_NO_MEMORY;
        if (!WriteBytes(stream, bytes.As<void>(), out->Size)) return TIFF_IO_ERROR;
    }
    const uint32_t directoryOffset = static_cast<uint32_t>(start) + out->DirectoryAt;
    const bool linked = LinkTiffDirectory(*access, image, stream, directoryOffset, out->Entries);
    return linked ? TIFF_SUCCESS : TIFF_IO_ERROR;
}

}  // namespace vellim

using namespace vellim;

// A file that still has its header to come would be made without one, so it is refused.
int32_t WriteTiffImageDirectory(TiffFileHandle file, int32_t image) {
    const TiffFileAccess access(file);
    if (!access || access->IsMemory() || (access->OpenStyle & kCreateBit) != 0)
        return TIFF_IO_ERROR;
    const TagBuffer tags(TagBufferOf(file, image));
    if (!tags) return TIFF_NO_MEMORY;
    if (!CanBeStored(tags)) return TIFF_BAD_TAG;
    const FileStream stream(file, FileUse::Write);
    if (!stream || !WriteTiffHeader(*access, stream.Get(), 0)) return TIFF_IO_ERROR;
    return static_cast<int32_t>(WriteImageDirectory(file, image, stream.Get()));
}
