#include "platform/copied_rows.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vellim {
namespace {

constexpr uint32_t kByteBits = 8;

std::unique_ptr<uint8_t[]> NewBytes(size_t count) {
    return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[count]);
}

}  // namespace

void CopiedRows::ClipColumns(int32_t left, int32_t right) {
    const int64_t offset = columns_.to - columns_.from;
    left_ = static_cast<int32_t>(std::clamp<int64_t>(offset, left, right));
    right_ = static_cast<int32_t>(std::clamp<int64_t>(offset + columns_.sourceSize, left_, right));
}

// Groups without pixels stand at the ends alone, for the groups go one way.
bool CopiedRows::FindColumns(int32_t left, int32_t right) {
    const auto count = static_cast<size_t>(right - left);
    found_.reset(new (std::nothrow) PixelGroup[count]);
    if (found_ == nullptr) return false;
    FindGroups(columns_, left, {found_.get(), count});
    PixelGroup* first = found_.get();
    PixelGroup* end = first + count;
    while (first != end && first->IsEmpty())
        first++;
    while (first != end && (end - 1)->IsEmpty())
        end--;
    left_ = left + static_cast<int32_t>(first - found_.get());
    right_ = left_ + static_cast<int32_t>(end - first);
    groups_ = {first, end};
    return true;
}

bool CopiedRows::TakeMemory(uint32_t toBits) {
    PixelGroup pixels;
    if (columns_.IsOneToOne()) {
        const auto first = static_cast<int32_t>(left_ - columns_.to + columns_.from);
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
    joined_ = NewBytes(byteCount_ + kRowPadding);
    stretched_ = NewBytes(BytesOfPixels(Bits(), Width()));
    if (change_.IsNeeded()) changed_ = NewBytes(BytesOfPixels(toBits, Width()));
    return joined_ != nullptr && stretched_ != nullptr &&
           (changed_ != nullptr || !change_.IsNeeded());
}

bool CopiedRows::Prepare(int32_t left, int32_t right, uint32_t toBits) {
    if (columns_.IsOneToOne())
        ClipColumns(left, right);
    else if (!FindColumns(left, right))
        return false;
    return Width() == 0 || TakeMemory(toBits);
}

// A row of one bit that is stretched is copied even if it is alone, for the padding.
const uint8_t* CopiedRows::JoinedRow(PixelGroup rows) {
    const bool needsPadding = Bits() == 1 && !columns_.IsOneToOne();
    const uint8_t* first = source_.Row(rows.first) + firstByte_;
    if (rows.end - rows.first == 1 && !needsPadding) return first;
    std::memcpy(joined_.get(), first, byteCount_);
    const PixelOperation operation =
        joining_ == Joining::And ? PixelOperation::And : PixelOperation::Or;
    for (int32_t y = rows.first + 1; y < rows.end; y++)
        CombineBits({joined_.get(), 0}, {source_.Row(y) + firstByte_, 0}, byteCount_ * kByteBits,
                    operation);
    return joined_.get();
}

// A copy that grows asks for the same row several times in a row.
ConstBitPlace CopiedRows::Row(PixelGroup rows) {
    if (rows == made_) return place_;
    made_ = rows;
    const uint8_t* row = JoinedRow(rows);
    place_ = {row, firstBit_};
    if (!columns_.IsOneToOne()) {
        StretchRow(Bits(), row, groups_, joining_, stretched_.get());
        place_ = {stretched_.get(), 0};
    }
    if (!change_.IsNeeded()) return place_;
    if (place_.bit % kByteBits != 0) {
        CombineBits({stretched_.get(), 0}, place_, size_t{Width()} * Bits(), PixelOperation::Copy);
        place_ = {stretched_.get(), 0};
    }
    change_.Apply(place_.bytes + place_.bit / kByteBits, changed_.get(), Width());
    place_ = {changed_.get(), 0};
    return place_;
}

}  // namespace vellim
