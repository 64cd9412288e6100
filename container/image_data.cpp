// Counts and offsets may lie. A piece that reaches beyond the file's end is no failure: what is
// there is copied, and as long as nothing lies behind it its neighbours' offsets are counted as if
// it were whole. Where something does, the room that the missing bytes would have taken is left
// out, so that each piece stands where its offset says.

#include "container/image_data.h"

#include <algorithm>
#include <limits>

#include "container/failure.h"
#include "container/jpeg_tables.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr uint32_t kCompressionJpeg = 6;
constexpr uint32_t kTransferBytes = 1U << 18U;
constexpr uint32_t kLastPosition = std::numeric_limits<int32_t>::max();
// Offsets of missing bytes would soon lie where no offset may.
constexpr uint64_t kMostClaimed = kLastPosition / 2;

// The numbers of an array of SHORT or of LONG.
class Numbers {
  public:
    explicit Numbers(const TagRecord& record)
        : value_(record.Value), isShort_(record.Head.Type == TIFF_TYPE_SHORT) {
        const uint32_t width = isShort_ ? sizeof(uint16_t) : sizeof(uint32_t);
        sound_ = record.ValueBytes == uint64_t{record.Head.Count} * width;
    }
    explicit operator bool() const { return sound_; }
    [[nodiscard]] uint32_t At(uint32_t index) const {
        uint32_t number = 0;
        const uint32_t width = isShort_ ? sizeof(uint16_t) : sizeof(uint32_t);
        std::memcpy(&number, value_ + size_t{index} * width, width);
        return number;
    }

  private:
    const uint8_t* value_;
    bool isShort_;
    bool sound_;
};

uint32_t PresentBytes(uint32_t from, uint32_t claimed, uint64_t streamBytes) {
    if (from >= streamBytes) return 0;
    return static_cast<uint32_t>(std::min<uint64_t>(claimed, streamBytes - from));
}

std::span<const Piece> PiecesOf(const PieceTable& table) {
    return {LockedBlock(table.Pieces.Get()).As<const Piece>(), table.Count};
}

struct Stretch {
    uint64_t From;
    uint64_t Bytes;
};

bool CopyStretch(const Stretch& stretch, StreamHandle from, StreamHandle to,
                 std::span<uint8_t> room) {
    if (stretch.Bytes == 0) return true;
    if (mSeek(from, static_cast<int32_t>(stretch.From), 0) < 0) return Fail(TIFF_IO_ERROR, false);
    for (uint64_t left = stretch.Bytes; left > 0;) {
        const auto wanted = static_cast<int32_t>(std::min<uint64_t>(left, room.size()));
        // Nothing where there was something means that the file is being changed meanwhile.
        const int32_t got = mRead(from, room.data(), wanted);
        if (got <= 0 || mWrite(to, room.data(), got) != got) return Fail(TIFF_IO_ERROR, false);
        left -= static_cast<uint64_t>(got);
    }
    return true;
}

}  // namespace

// `claimed(i)` gives the bytes of piece i.
bool ImageData::AddTable(const TagRecord& offsets, uint64_t streamBytes, auto claimed) {
    const Numbers from(offsets);
    if (!from) return Fail(TIFF_BAD_TAG, false);
    PieceTable& table = tables_[count_++];
    table.Tag = offsets.Head.Tag;
    table.Type = offsets.Head.Type;
    table.Count = offsets.Head.Count;
    table.Pieces.Reset(GlobalAlloc(GHND, table.Count * uint32_t{sizeof(Piece)}));
    table.Offsets.Reset(GlobalAlloc(GHND, table.Count * uint32_t{sizeof(uint32_t)}));
    const LockedBlock block(table.Pieces.Get());
    if (!block || !table.Offsets) return Fail(TIFF_NO_MEMORY, false);
    auto* pieces = block.As<Piece>();
    for (uint32_t i = 0; i < table.Count; i++) {
        Piece& piece = pieces[i];
        piece.From = from.At(i);
        if (piece.From > kLastPosition) return Fail(TIFF_IO_ERROR, false);
        piece.Claimed = claimed(i);
        piece.Present = PresentBytes(piece.From, piece.Claimed, streamBytes);
    }
    return true;
}

void ImageData::Measure() {
    uint64_t claimed = 0;
    for (const PieceTable& table : Tables())
        for (const Piece& piece : PiecesOf(table)) {
            const bool misplaced = piece.Present > 0 && claimed != bytes_;
            if (misplaced || claimed > kMostClaimed) closedUp_ = true;
            claimed += piece.Claimed;
            bytes_ += piece.Present;
        }
    uint64_t at = 0;
    for (uint32_t i = 0; i < count_; i++)
        for (const Piece& piece : PiecesOf(tables_[i])) {
            tables_[i].LastAt = at;
            at += closedUp_ ? piece.Present : piece.Claimed;
        }
}

std::optional<ImageData> ImageData::Find(const ImageSource& source, const TagBuffer& tags) {
    const auto compression = tags.Find(TIFF_TAG_COMPRESSION);
    const auto number = compression ? FirstElement(*compression) : std::nullopt;
    const bool jpeg = number && number->Number == kCompressionJpeg;
    const auto offsets = tags.Find(jpeg ? TIFF_TAG_TILE_OFFSETS : TIFF_TAG_STRIP_OFFSETS);
    const auto byteCounts =
        tags.Find(jpeg ? TIFF_TAG_TILE_BYTE_COUNTS : TIFF_TAG_STRIP_BYTE_COUNTS);
    if (!offsets || !byteCounts) return std::nullopt;
    if (offsets->Head.Count != byteCounts->Head.Count) {
        if (TiffError() == TIFF_SUCCESS) SetTiffError(TIFF_BAD_TAG);
        return std::nullopt;
    }
    const Numbers counts(*byteCounts);
    if (!counts) return Fail(TIFF_BAD_TAG, std::nullopt);

    ImageData data;
    const auto byteCount = [&](uint32_t i) { return counts.At(i); };
    if (!data.AddTable(*offsets, source.StreamBytes, byteCount)) return std::nullopt;
    if (jpeg) {
        StreamWindow window(source.Stream);
        for (const uint32_t tag :
             {TIFF_TAG_JPEG_Q_TABLES, TIFF_TAG_JPEG_DC_TABLES, TIFF_TAG_JPEG_AC_TABLES}) {
            const auto tables = tags.Find(tag);
            if (!tables) return std::nullopt;
            const Numbers from(*tables);
            const auto bytes = [&](uint32_t i) { return JpegTableBytes(window, tag, from.At(i)); };
            if (!data.AddTable(*tables, source.StreamBytes, bytes)) return std::nullopt;
            if (tables->Head.Count == 0) return Fail(TIFF_TAG_MISSING, std::nullopt);
        }
    }
    data.Measure();
    return data;
}

bool ImageData::WidenOffsets(uint64_t start) {
    bool changed = false;
    for (uint32_t i = 0; i < count_; i++) {
        PieceTable& table = tables_[i];
        if (table.Type != TIFF_TYPE_SHORT || start + table.LastAt <= UINT16_MAX) continue;
        table.Type = TIFF_TYPE_LONG;
        changed = true;
    }
    return changed;
}

void ImageData::Place(uint32_t start) {
    uint64_t at = start;
    for (const PieceTable& table : Tables()) {
        const LockedBlock offsets(table.Offsets.Get());
        auto* to = offsets.As<uint8_t>();
        const uint32_t width = TiffTypeSize(table.Type);
        for (const Piece& piece : PiecesOf(table)) {
            std::memcpy(to, &at, width);  // the low bytes, as the host has them
            to += width;
            at += closedUp_ ? piece.Present : piece.Claimed;
        }
    }
}

TagToStore ImageData::Relocated(const TagToStore& tag) const {
    const auto table = std::ranges::find(Tables(), uint32_t{tag.Tag}, &PieceTable::Tag);
    if (table == Tables().end()) return tag;
    TagToStore relocated = tag;
    relocated.Type = static_cast<uint16_t>(table->Type);
    relocated.Value = LockedBlock(table->Offsets.Get()).As<uint8_t>();
    relocated.ValueBytes = table->Count * TiffTypeSize(table->Type);
    relocated.SwapUnit = SwapUnitOf(table->Type);
    return relocated;
}

// Neighbours in the source are taken as one, so that a page of many strips costs what a page of
// one does.
bool ImageData::Copy(StreamHandle from, StreamHandle to) const {
    if (bytes_ == 0) return true;
    const auto roomBytes = static_cast<uint32_t>(std::min<uint64_t>(bytes_, kTransferBytes));
    const OwnedBlock roomBlock(GlobalAlloc(GHND, roomBytes));
    const LockedBlock room(roomBlock.Get());
    if (!room) return Fail(TIFF_NO_MEMORY, false);
    const std::span<uint8_t> roomSpan(room.As<uint8_t>(), roomBytes);

    Stretch stretch{};
    for (const PieceTable& table : Tables())
        for (const Piece& piece : PiecesOf(table)) {
            if (piece.Present == 0) continue;
            if (piece.From != stretch.From + stretch.Bytes) {
                if (!CopyStretch(stretch, from, to, roomSpan)) return false;
                stretch = {.From = piece.From, .Bytes = 0};
            }
            stretch.Bytes += piece.Present;
        }
    return CopyStretch(stretch, from, to, roomSpan);
}

}  // namespace vellim
