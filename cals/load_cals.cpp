// A CALS picture as a DIB: the header gives the size, and each line goes straight from the decoder
// to its row. A zero bit is white, as Group 4 has it.
#include <cstring>
#include <optional>

#include "bridge/damage_warning.h"
#include "cals/cals_image.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "container/streams.h"
#include "platform/guards.h"
#include "vellim/cals.h"

namespace vellim {
namespace {

constexpr uint32_t kBitsOffset = sizeof(CalsDescription);
constexpr uint32_t kSpareBytes = 100;  // behind the last row

// Of the rows of a picture as `info` gives its size. Nothing when it is above the limits, or its
// DIB can't be counted in 32 bits.
std::optional<uint32_t> DibBytes(const CalsInfo& info) {
    if (!WithinSizeLimits(info.rpelcnt[0], info.rpelcnt[1])) return std::nullopt;
    const auto stride = StoredRowBytes(info.rpelcnt[0], 1);
    if (!stride) return std::nullopt;
    return CheckedSize(*stride, info.rpelcnt[1], kBitsOffset + kSpareBytes);
}

bool Decode(StreamHandle file, const CalsInfo& info, const CalsLineContext& context) {
    const WaitCursor wait;
    return DecodeCalsImage(file, info, reinterpret_cast<uintptr_t>(&context),
                           DllFlushCALSLineDIB) != 0;
}

// Whether the rows now hold the picture, or the part of it that there was.
bool DecodeIntoRows(const char* path, const CalsInfo& info, uint8_t* rows) {
    const OpenStream file(OpenFile(path, nullptr, OF_READ));
    if (!file) return Fail(TIFF_IO_ERROR, false);
    const auto [width, height] = info.rpelcnt;
    CalsLineContext context{};
    context.Bits = rows;
    context.Height = static_cast<uint32_t>(height);
    context.LineBytes = PackedRowBytes(width, 1).value_or(0);
    context.Stride = StoredRowBytes(width, 1).value_or(0);
    return Decode(file.Get(), info, context) || IsWorthKeeping("CALS warning");
}

bool FillDib(const char* path, const CalsInfo& info, GlobalHandle dib) {
    const LockedBlock block(dib);
    if (!block) return Fail(TIFF_NO_MEMORY, false);
    auto* bytes = block.As<uint8_t>();
    const CalsDescription description = DescribeCalsImage(info);
    std::memcpy(bytes, &description, sizeof description);
    return DecodeIntoRows(path, info, bytes + kBitsOffset);
}

}  // namespace
}  // namespace vellim

DibHandle LoadCALSIntoDIB(const char* path, int32_t showInfo) {
    using namespace vellim;
    // No dialog can be run in this process, which counts as one that failed to.
    if (showInfo != 0) return Fail(TIFF_NO_MEMORY, DibHandle{0});
    CalsInfo info{};
    if (ReadCALSInfo(path, &info) == 0) return 0;
    const auto bytes = DibBytes(info);
    OwnedBlock dib(bytes ? GlobalAlloc(GHND, *bytes) : 0);
    if (!dib) return Fail(TIFF_NO_MEMORY, DibHandle{0});
    return FillDib(path, info, dib.Get()) ? dib.Release() : 0;
}
