// Rows of DIBs put into device bitmaps, and taken out of them.
//
// Row n of a DIB, counted from the lowest, is the bitmap's row n counted from its lowest, however
// high either of them is.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>

#include "platform/graphics/device_contexts.h"
#include "platform/graphics/dib_conversion.h"
#include "platform/graphics/dib_format.h"
#include "platform/graphics/graphics_objects.h"
#include "platform/graphics/pixel_rows.h"
#include "vellim/graphics.h"

namespace vellim {
namespace {

constexpr uint64_t kMostBytes = std::numeric_limits<int32_t>::max();

// The rows that a DIB and a bitmap have in common of those that a call asks for.
struct CommonRows {
    std::shared_ptr<Surface> surface;
    DibFormat dib;
    uint32_t count = 0;
    uint32_t width = 0;
    int32_t lowest = 0;  // the surface's row that the first of them is
    const PixelConversion* conversion = nullptr;

    [[nodiscard]] uint8_t* SurfaceRow(uint32_t row) const {
        return surface->Row(lowest - static_cast<int32_t>(row));
    }
    [[nodiscard]] size_t DibRow(uint32_t row) const { return size_t{row} * dib.stride; }
};

CommonRows FindCommonRows(std::shared_ptr<Surface> surface, DibFormat dib, uint32_t start,
                          uint32_t lines) {
    const int64_t height = std::min(dib.height, surface->height);
    const int64_t count = std::clamp<int64_t>(height - start, 0, lines);
    CommonRows rows;
    rows.width = static_cast<uint32_t>(std::min(dib.width, surface->width));
    if (static_cast<uint64_t>(count) * dib.stride <= kMostBytes)
        rows.count = static_cast<uint32_t>(count);
    if (rows.count != 0) rows.lowest = surface->height - 1 - static_cast<int32_t>(start);
    rows.surface = std::move(surface);
    rows.dib = dib;
    return rows;
}

struct DibCall {
    DeviceContextHandle context;
    BitmapHandle bitmap;
    uint32_t start;
    uint32_t lines;
    const BITMAPINFO* info;
    uint32_t use;
};

// No rows for a bad argument.
CommonRows FindCommonRows(const DibCall& call, DibConversion::Way way) {
    DeviceContext* context = FindContext(call.context);
    GraphicsObject object = FindObject(call.bitmap);
    if (context == nullptr || object.kind != ObjectKind::Bitmap) return {};
    const auto dib = ReadDibFormat(call.info, call.use);
    if (!dib) return {};
    CommonRows rows = FindCommonRows(std::move(object.surface), *dib, call.start, call.lines);
    if (rows.count == 0) return {};
    rows.conversion =
        &DibConversion::For(*context, way, call.info, *dib, call.use, rows.surface->bits);
    return rows;
}

// Bits of the last byte that are behind the row's last pixel.
void ClearBehindRow(uint8_t* row, uint32_t bits, uint32_t width) {
    const uint64_t used = uint64_t{bits} * width % 8;
    if (used == 0) return;
    uint8_t* last = row + BytesOfPixels(bits, width) - 1;
    *last = static_cast<uint8_t>(*last & ~(0xFFU >> used));
}

// Gives the bitmap's rows. A depth that the header has stays; all else is told anew.
int32_t DescribeBitmap(const Surface& surface, BITMAPINFO* info) {
    BITMAPINFOHEADER header;
    std::memcpy(&header, static_cast<void*>(info), sizeof header);
    if (header.biSize != sizeof header) return 0;
    const uint32_t bits = header.biBitCount != 0 ? header.biBitCount : surface.bits;
    if (bits != 1 && bits != 4 && bits != 8 && bits != 24) return 0;
    const uint64_t bytes = DibStride(surface.width, bits) * static_cast<uint64_t>(surface.height);
    header = {};
    header.biSize = sizeof header;
    header.biWidth = surface.width;
    header.biHeight = surface.height;
    header.biPlanes = 1;
    header.biBitCount = static_cast<uint16_t>(bits);
    header.biSizeImage = bytes <= kMostBytes ? static_cast<uint32_t>(bytes) : 0;
    std::memcpy(static_cast<void*>(info), &header, sizeof header);
    return surface.height;
}

}  // namespace
}  // namespace vellim

int32_t SetDIBits(DeviceContextHandle context, BitmapHandle bitmap, uint32_t start, uint32_t lines,
                  const void* bits, const BITMAPINFO* info, uint32_t use) {
    using namespace vellim;
    const CommonRows rows =
        FindCommonRows({context, bitmap, start, lines, info, use}, DibConversion::Way::ToSurface);
    if (rows.count == 0 || bits == nullptr) return 0;
    const auto* from = static_cast<const uint8_t*>(bits);
    if (rows.width == 1 && rows.count > 1) {
        const ptrdiff_t down = -static_cast<ptrdiff_t>(rows.surface->stride);
        ConvertColumn(*rows.conversion, {from, rows.dib.stride}, {rows.SurfaceRow(0), down},
                      rows.count);
        return static_cast<int32_t>(rows.count);
    }
    for (uint32_t row = 0; row < rows.count; row++)
        ConvertRow(*rows.conversion, from + rows.DibRow(row), rows.SurfaceRow(row), rows.width);
    return static_cast<int32_t>(rows.count);
}

int32_t GetDIBits(DeviceContextHandle context, BitmapHandle bitmap, uint32_t start, uint32_t lines,
                  void* bits, BITMAPINFO* info, uint32_t use) {
    using namespace vellim;
    if (bits == nullptr) {
        const GraphicsObject object = FindObject(bitmap);
        const bool isServed =
            FindContext(context) != nullptr && object.kind == ObjectKind::Bitmap && info != nullptr;
        return isServed ? DescribeBitmap(*object.surface, info) : 0;
    }
    const CommonRows rows =
        FindCommonRows({context, bitmap, start, lines, info, use}, DibConversion::Way::FromSurface);
    if (rows.count == 0) return 0;
    const bool endsRow = rows.width == static_cast<uint32_t>(rows.dib.width);
    auto* to = static_cast<uint8_t*>(bits);
    for (uint32_t row = 0; row < rows.count; row++) {
        uint8_t* dibRow = to + rows.DibRow(row);
        ConvertRow(*rows.conversion, rows.SurfaceRow(row), dibRow, rows.width);
        if (endsRow) ClearBehindRow(dibRow, rows.dib.bits, rows.width);
    }
    return static_cast<int32_t>(rows.count);
}

BitmapHandle CreateDIBitmap(DeviceContextHandle context, const BITMAPINFOHEADER* header,
                            uint32_t init, const void* bits, const BITMAPINFO* info, uint32_t use) {
    if (header == nullptr) return 0;
    BITMAPINFOHEADER size;
    std::memcpy(&size, static_cast<const void*>(header), sizeof size);
    if (size.biSize != sizeof size) return 0;
    const BitmapHandle bitmap = CreateCompatibleBitmap(context, size.biWidth, size.biHeight);
    if (bitmap == 0 || (init & CBM_INIT) == 0) return bitmap;
    const auto lines = static_cast<uint32_t>(size.biHeight);
    if (SetDIBits(context, bitmap, 0, lines, bits, info, use) != 0) return bitmap;
    DeleteObject(bitmap);
    return 0;
}
