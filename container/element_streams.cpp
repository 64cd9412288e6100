// Counted runs of TIFF elements, moved between a stream in the file's order and a buffer in the
// host's. Bytes are swapped before bits are mirrored, whichever way the data goes.

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>

#include "container/failure.h"
#include "container/streams.h"
#include "platform/guards.h"

namespace vellim {
namespace {

constexpr int32_t kTransferBytes = 32000;  // at most, in one call of mRead or mWrite
constexpr uint32_t kCopySlack = 50;

struct ElementRun {
    uint32_t Type;
    uint32_t Count;
    int32_t Bytes;
};

// A RATIONAL is two LONGs, each in the file's order by itself. Nothing when the run is longer than
// a stream can be.
std::optional<ElementRun> MeasureRun(int32_t type, uint32_t count) {
    const bool rational = type == TIFF_TYPE_RATIONAL;
    const auto elementType = static_cast<uint32_t>(rational ? TIFF_TYPE_LONG : type);
    const uint64_t elements = uint64_t{count} * (rational ? 2 : 1);
    const uint64_t bytes = elements * TiffTypeSize(elementType);
    if (bytes > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) return std::nullopt;
    return ElementRun{.Type = elementType,
                      .Count = static_cast<uint32_t>(elements),
                      .Bytes = static_cast<int32_t>(bytes)};
}

struct Conversion {
    bool Swap;
    bool Mirror;

    [[nodiscard]] bool Any() const { return Swap || Mirror; }
};

Conversion ConversionOf(const ElementRun& run, int32_t byteOrder, int32_t fillOrder) {
    return {.Swap = byteOrder == TIFF_BIG_ENDIAN && TiffTypeSize(run.Type) > 1,
            .Mirror = fillOrder == TIFF_FILL_LSB_FIRST};
}

void Convert(void* buffer, const ElementRun& run, Conversion conversion) {
    if (conversion.Swap) SwapElements(buffer, run.Type, run.Count);
    if (conversion.Mirror)
        ReverseBits(static_cast<uint8_t*>(buffer), static_cast<size_t>(run.Bytes));
}

bool WriteBytes(StreamHandle handle, const void* buffer, int32_t bytes) {
    const auto* from = static_cast<const uint8_t*>(buffer);
    while (bytes > 0) {
        const int32_t written = mWrite(handle, from, std::min(bytes, kTransferBytes));
        if (written < 1) return false;
        from += written;
        bytes -= written;
    }
    return true;
}

bool ReadBytes(StreamHandle handle, void* buffer, int32_t bytes) {
    auto* to = static_cast<uint8_t*>(buffer);
    while (bytes > 0) {
        const int32_t got = mRead(handle, to, std::min(bytes, kTransferBytes));
        if (got < 1) return false;
        to += got;
        bytes -= got;
    }
    return true;
}

// Writes from a converted copy, so that the caller's buffer stays as it is; only without memory
// for one is the buffer itself converted.
bool WriteConverted(StreamHandle handle, void* buffer, const ElementRun& run,
                    Conversion conversion) {
    const auto bytes = static_cast<uint32_t>(run.Bytes);
    const OwnedBlock copyBlock(GlobalAlloc(GHND, bytes + kCopySlack));
    const LockedBlock copy(copyBlock.Get());
    void* converted = copy ? copy.As<void>() : buffer;
    if (copy) std::memcpy(converted, buffer, bytes);
    Convert(converted, run, conversion);
    return WriteBytes(handle, converted, run.Bytes);
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t LongRead(StreamHandle handle, int32_t type, uint32_t count, void* buffer, int32_t byteOrder,
                 int32_t fillOrder) {
    if (count == 0) return 1;
    const std::optional<ElementRun> run = MeasureRun(type, count);
    if (!run || buffer == nullptr || !ReadBytes(handle, buffer, run->Bytes))
        return Fail(TIFF_IO_ERROR, 0);
    Convert(buffer, *run, ConversionOf(*run, byteOrder, fillOrder));
    return 1;
}

int32_t LongWrite(StreamHandle handle, int32_t type, uint32_t count, void* buffer,
                  int32_t byteOrder, int32_t fillOrder) {
    if (count == 0) return 1;
    const std::optional<ElementRun> run = MeasureRun(type, count);
    if (!run || buffer == nullptr) return Fail(TIFF_IO_ERROR, 0);
    const Conversion conversion = ConversionOf(*run, byteOrder, fillOrder);
    const bool written = conversion.Any() ? WriteConverted(handle, buffer, *run, conversion)
                                          : WriteBytes(handle, buffer, run->Bytes);
    return written ? 1 : Fail(TIFF_IO_ERROR, 0);
}
