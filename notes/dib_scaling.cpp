#include "notes/dib_scaling.h"

#include <algorithm>
#include <cstring>

#include "bridge/dib.h"
#include "container/sizes.h"

namespace vellim {
namespace {

constexpr uint32_t kByteBits = 8;

// The pixels of a part that new ones come from, one after the other: j x from / to, rounded. Kept
// as a whole number and a rest, so that no step divides.
class Steps {
  public:
    Steps(int64_t from, int64_t to)
        : whole_(from / to), rest_(2 * (from % to)), sum_(to), limit_(2 * to) {}

    [[nodiscard]] int64_t At() const { return at_; }
    void Next() {
        at_ += whole_;
        sum_ += rest_;
        if (sum_ < limit_) return;
        sum_ -= limit_;
        at_++;
    }

  private:
    int64_t whole_, rest_, sum_, limit_;
    int64_t at_ = 0;
};

// How pixels of a depth lie in bytes.
template <uint32_t kBits>
struct Packing {
    static constexpr bool kIsPacked = kBits < kByteBits;
    static constexpr int64_t kPixelsPerByte = kIsPacked ? kByteBits / kBits : 1;
    static constexpr int64_t kBytesPerPixel = kIsPacked ? 1 : kBits / kByteBits;

    static int64_t StartByte(int64_t x) { return x / kPixelsPerByte * kBytesPerPixel; }
    static int64_t Offset(int64_t x) { return x % kPixelsPerByte; }  // in pixels, within that byte

    // What is read of a row for so many pixels, all of which the image has; and where it has fewer.
    static int64_t FullBytes(int64_t pixels) {
        if constexpr (!kIsPacked) return pixels * kBytesPerPixel;
        return (pixels + kPixelsPerByte - 1) / kPixelsPerByte + 1;  // one more to begin in a byte
    }
    static int64_t ClippedBytes(int64_t pixels) {
        if constexpr (!kIsPacked) return pixels * kBytesPerPixel;
        return pixels / kPixelsPerByte + 1;
    }

    // Puts a pixel where as yet all bits are 0.
    static void Put(uint8_t* to, int64_t j, const uint8_t* from, int64_t k) {
        if constexpr (kIsPacked) {
            constexpr uint32_t mask = (1U << kBits) - 1;
            const uint32_t pixel = uint32_t{from[k / kPixelsPerByte]} >> ShiftOf(k) & mask;
            to[j / kPixelsPerByte] |= static_cast<uint8_t>(pixel << ShiftOf(j));
        } else {
            std::memcpy(to + j * kBytesPerPixel, from + k * kBytesPerPixel, kBytesPerPixel);
        }
    }

    // The first pixel has the high bits.
    static uint32_t ShiftOf(int64_t pixel) {
        return static_cast<uint32_t>(kPixelsPerByte - 1 - pixel % kPixelsPerByte) * kBits;
    }

    static void ClearFrom(std::span<uint8_t> row, int64_t pixel) {
        const auto byte = static_cast<size_t>(StartByte(pixel));
        if (byte >= row.size()) return;
        const uint32_t kept = static_cast<uint32_t>(Offset(pixel)) * kBits;
        row[byte] &= static_cast<uint8_t>(0xFF00U >> kept);
        std::ranges::fill(row.subspan(byte + 1), uint8_t{0});
    }
};

// The bytes of row `y` that the part begins in, and no more than the block has.
template <uint32_t kBits>
std::span<const uint8_t> PartOfRow(const WholeDib& dib, const DibScaling& scaling, int64_t y) {
    using Pixels = Packing<kBits>;
    const int64_t avail = int64_t{dib.header.biWidth} - scaling.x;
    const int64_t bytes =
        scaling.width > avail ? Pixels::ClippedBytes(avail) : Pixels::FullBytes(scaling.width);
    const auto row = static_cast<uint64_t>(dib.header.biHeight - 1 - y) * dib.stride;
    const auto start = row + static_cast<uint64_t>(Pixels::StartByte(scaling.x));
    const auto rest = dib.tail.subspan(static_cast<size_t>(start));
    return rest.first(std::min(static_cast<size_t>(bytes), rest.size()));
}

// `to` is all zero.
template <uint32_t kBits>
void ScaleRow(std::span<const uint8_t> from, const DibScaling& scaling, std::span<uint8_t> to) {
    using Pixels = Packing<kBits>;
    const int64_t offset = Pixels::Offset(scaling.x);
    if (scaling.width == scaling.toWidth) {
        ShiftRowLeft(from, static_cast<uint32_t>(offset) * kBits % kByteBits, to);
        Pixels::ClearFrom(to, scaling.toWidth);
        return;
    }
    const int64_t there =
        static_cast<int64_t>(from.size()) / Pixels::kBytesPerPixel * Pixels::kPixelsPerByte -
        offset;
    const int64_t end = std::min<int64_t>(scaling.width, there);
    Steps steps(scaling.width, scaling.toWidth);
    for (int64_t j = 0; j < scaling.toWidth && steps.At() < end; j++, steps.Next())
        Pixels::Put(to.data(), j, from.data(), steps.At() + offset);
}

template <uint32_t kBits>
void ScaleRows(const WholeDib& dib, const DibScaling& scaling, std::span<uint8_t> rows,
               size_t stride) {
    Steps steps(scaling.height, scaling.toHeight);
    int64_t last = -1;
    std::span<uint8_t> lastRow;
    for (size_t i = rows.size() / stride; i > 0; i--, steps.Next()) {
        const int64_t y = scaling.y + steps.At();
        if (steps.At() >= scaling.height || y >= dib.header.biHeight) return;
        const auto row = rows.subspan((i - 1) * stride, stride);
        if (y == last) {
            std::ranges::copy(lastRow, row.begin());
        } else {
            ScaleRow<kBits>(PartOfRow<kBits>(dib, scaling, y), scaling, row);
        }
        last = y;
        lastRow = row;
    }
}

bool IsSensible(const WholeDib& dib, const DibScaling& scaling) {
    return scaling.width >= 1 && scaling.height >= 1 && scaling.toWidth >= 1 &&
           scaling.toHeight >= 1 && scaling.x >= 0 && scaling.y >= 0 &&
           scaling.x < dib.header.biWidth && scaling.y < dib.header.biHeight;
}

template <uint32_t kBits>
DibHandle ScaleWith(const WholeDib& dib, const DibScaling& scaling) {
    if (!IsSensible(dib, scaling)) return 0;
    const auto stride = StoredRowBytes(scaling.toWidth, kBits);
    if (!stride) return 0;
    const auto head = static_cast<size_t>(dib.bits - dib.bytes);
    const auto bytes = CheckedSize(*stride, scaling.toHeight, static_cast<int64_t>(head));
    OwnedBlock scaled(bytes ? GlobalAlloc(GHND, *bytes) : 0);
    {
        const LockedBlock block(scaled.Get());
        if (!block) return 0;
        auto* header = block.As<BITMAPINFOHEADER>();
        std::memcpy(block.As<uint8_t>(), dib.bytes, head);
        header->biWidth = scaling.toWidth;
        header->biHeight = scaling.toHeight;
        ScaleRows<kBits>(dib, scaling, {block.As<uint8_t>() + head, *bytes - head}, *stride);
    }
    return scaled.Release();
}

}  // namespace

std::optional<WholeDib> ReadWholeDib(const LockedBlock& block) {
    if (!block || block.Size() < sizeof(BITMAPINFOHEADER)) return std::nullopt;
    WholeDib dib;
    dib.bytes = block.As<const uint8_t>();
    std::memcpy(&dib.header, dib.bytes, sizeof dib.header);
    const BITMAPINFOHEADER& header = dib.header;
    if (header.biSize != sizeof header || header.biWidth < 1 || header.biHeight < 1)
        return std::nullopt;
    const auto stride = StoredRowBytes(header.biWidth, header.biBitCount);
    const uint64_t offset = DibBitsOffset(&header);
    if (!stride || offset > block.Size()) return std::nullopt;
    dib.stride = *stride;
    dib.bits = dib.bytes + offset;
    dib.tail = {dib.bits, static_cast<size_t>(block.Size() - offset)};
    const bool isWhole = dib.stride * static_cast<uint32_t>(header.biHeight) <= dib.tail.size();
    return isWhole ? std::optional(dib) : std::nullopt;
}

DibHandle ScaleDib(const WholeDib& dib, const DibScaling& scaling) {
    switch (dib.header.biBitCount) {
        case 1:
            return ScaleWith<1>(dib, scaling);
        case 4:
            return ScaleWith<4>(dib, scaling);
        case 8:
            return ScaleWith<8>(dib, scaling);
        case 24:
            return ScaleWith<24>(dib, scaling);
        default:
            return 0;
    }
}

void ShiftRowLeft(std::span<const uint8_t> from, uint32_t shift, std::span<uint8_t> to) {
    const size_t count = std::min(from.size(), to.size());
    for (size_t i = 0; i < count; i++) {
        const uint32_t next = i + 1 < from.size() ? from[i + 1] : 0;
        to[i] = static_cast<uint8_t>((uint32_t{from[i]} << kByteBits | next) << shift >> kByteBits);
    }
}

}  // namespace vellim
