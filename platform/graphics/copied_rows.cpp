#include "platform/graphics/copied_rows.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vellim {
namespace {

constexpr uint32_t kByteBits = 8;

}  // namespace

void CopiedRows::ClipColumns() {
    const Axis& columns = shape_.columns;
    const int64_t offset = columns.to - columns.from;
    left_ = static_cast<int32_t>(std::clamp<int64_t>(offset, shape_.left, shape_.right));
    right_ =
        static_cast<int32_t>(std::clamp<int64_t>(offset + columns.sourceSize, left_, shape_.right));
    groups_ = {};
}

// Groups without pixels stand at the ends alone, for the groups go one way.
bool CopiedRows::FindColumns() {
    const auto count = static_cast<size_t>(shape_.right - shape_.left);
    if (!found_.Reserve(count)) return false;
    PixelGroup* first = found_.Get();
    PixelGroup* end = first + count;
    FindGroups(shape_.columns, shape_.left, {first, count});
    while (first != end && first->IsEmpty())
        first++;
    while (first != end && (end - 1)->IsEmpty())
        end--;
    left_ = shape_.left + static_cast<int32_t>(first - found_.Get());
    right_ = left_ + static_cast<int32_t>(end - first);
    groups_ = {first, end};
    return true;
}

bool CopiedRows::TakeMemory() {
    const Axis& columns = shape_.columns;
    PixelGroup pixels;
    if (columns.IsOneToOne()) {
        const auto first = static_cast<int32_t>(left_ - columns.to + columns.from);
        pixels = {first, first + static_cast<int32_t>(Width())};
    } else {
        pixels = {std::min(groups_.front().first, groups_.back().first),
                  std::max(groups_.front().end, groups_.back().end)};
    }
    // Eight pixels begin a byte at any depth.
    const int32_t base = pixels.first / 8 * 8;
    for (PixelGroup& group : groups_)
        group = {group.first - base, group.end - base};
    firstByte_ = BytesOfPixels(Bits(), static_cast<uint32_t>(base));
    byteCount_ = BytesOfPixels(Bits(), static_cast<uint32_t>(pixels.end)) - firstByte_;
    firstBit_ = static_cast<size_t>(pixels.first - base) * Bits();
    isJoined_ = Bits() == 1 && !columns.IsOneToOne() && joiner_.Prepare(groups_);
    const size_t stretchedBytes = BytesOfPixels(Bits(), Width());
    return joined_.Reserve(byteCount_ + kRowPadding) &&
           stretched_.Reserve(isJoined_ ? joiner_.RoomNeeded() : stretchedBytes) &&
           (!change_.IsNeeded() || changed_.Reserve(BytesOfPixels(shape_.colors.toBits, Width())));
}

bool CopiedRows::Begin(const Shape& shape) {
    made_ = {};
    if (isReady_ && shape == shape_) return true;
    if (shape.colors != change_.GetTerms()) change_ = ColorChange(shape.colors);
    shape_ = shape;
    isReady_ = isBlank_ = false;
    if (shape.columns.IsOneToOne())
        ClipColumns();
    else if (!FindColumns())
        return false;
    isReady_ = Width() == 0 || TakeMemory();
    return isReady_;
}

// A row of one bit that is stretched is copied even if it is alone, for the padding.
const uint8_t* CopiedRows::JoinedRow(const SourceRows& source, PixelGroup rows) {
    const bool needsPadding = Bits() == 1 && !shape_.columns.IsOneToOne();
    const uint8_t* first = source.Row(rows.first) + firstByte_;
    if (rows.end - rows.first == 1 && !needsPadding) return first;
    std::memcpy(joined_.Get(), first, byteCount_);
    const PixelOperation operation =
        shape_.joining == Joining::And ? PixelOperation::And : PixelOperation::Or;
    for (int32_t y = rows.first + 1; y < rows.end; y++)
        CombineBits({joined_.Get(), 0}, {source.Row(y) + firstByte_, 0}, byteCount_ * kByteBits,
                    operation);
    return joined_.Get();
}

void CopiedRows::Stretch(const uint8_t* row) {
    if (!isJoined_) return StretchRow(Bits(), row, groups_, shape_.joining, stretched_.Get());
    const uint8_t inverted = shape_.joining == Joining::And ? 0xFF : 0;
    joiner_.Join(row, byteCount_, inverted, stretched_.Get());
}

const PixelGroup* CopiedRows::Down(const Axis& rows, int32_t top, size_t count) {
    if (rows == downAxis_ && top == downTop_ && count == downCount_) return down_.Get();
    downCount_ = 0;
    if (!down_.Reserve(count)) return nullptr;
    FindGroups(rows, top, {down_.Get(), count});
    downAxis_ = rows;
    downTop_ = top;
    downCount_ = count;
    return down_.Get();
}

// Of a row of one bit that is stretched, which has padding to be read. Most lines of a page are
// blank, and then all come to the same row.
bool CopiedRows::IsBlank(const uint8_t* row) const {
    if (Bits() != 1 || row != joined_.Get()) return false;
    uint64_t ones = 0;
    for (size_t i = 0; i < byteCount_; i += sizeof ones) {
        uint64_t word = 0;
        std::memcpy(&word, row + i, std::min(sizeof word, byteCount_ - i));
        ones |= word;
    }
    return ones == 0;
}

// A copy that grows asks for the same row several times in a row.
ConstBitPlace CopiedRows::Row(const SourceRows& source, PixelGroup rows) {
    if (rows == made_) return place_;
    made_ = rows;
    const uint8_t* row = JoinedRow(source, rows);
    const bool wasBlank = std::exchange(isBlank_, IsBlank(row));
    if (wasBlank && isBlank_) return place_;
    place_ = {row, firstBit_};
    if (!shape_.columns.IsOneToOne()) {
        Stretch(row);
        place_ = {stretched_.Get(), 0};
    }
    if (!change_.IsNeeded()) return place_;
    if (place_.bit % kByteBits != 0) {
        CombineBits({stretched_.Get(), 0}, place_, size_t{Width()} * Bits(), PixelOperation::Copy);
        place_ = {stretched_.Get(), 0};
    }
    change_.Apply(place_.bytes + place_.bit / kByteBits, changed_.Get(), Width());
    place_ = {changed_.Get(), 0};
    return place_;
}

}  // namespace vellim
