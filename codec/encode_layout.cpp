#include "codec/encode_layout.h"

#include <algorithm>

#include "codec/tag_value.h"
#include "container/sizes.h"
#include "platform/guards.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

constexpr uint32_t kTableSlack = 110;
constexpr uint16_t kDefaultSubsampling = 2;

uint64_t PartsOf(uint64_t whole, uint32_t part) {
    return part == 0 ? 1 : (whole + part - 1) / part;
}

uint16_t SubsamplingOf(const uint16_t* values, uint32_t count, uint32_t index) {
    const bool given = index < count && values[index] != 0;
    return given ? values[index] : kDefaultSubsampling;
}

void ReadSubsampling(TiffFileHandle file, int32_t image, CodecState& state) {
    GlobalHandle value = 0;
    GetTiffImageInfoBuffer(file, image, TIFF_TAG_YCBCR_SUBSAMPLING, &value, nullptr, nullptr);
    const OwnedBlock block(value);
    const LockedBlock locked(value);
    const uint32_t count = locked ? locked.Size() / uint32_t{sizeof(uint16_t)} : 0;
    const auto* values = locked.As<uint16_t>();
    state.SubsamplingH = SubsamplingOf(values, count, 0);
    state.SubsamplingV = SubsamplingOf(values, count, 1);
}

// A picture without width has a tile all the same.
uint32_t ReadTiles(TiffFileHandle file, int32_t image, CodecState& state) {
    state.TileWidth = TagValue(file, image, TIFF_TAG_TILE_WIDTH, 0);
    state.TileLength = TagValue(file, image, TIFF_TAG_TILE_LENGTH, 0);
    const uint64_t across =
        PartsOf(static_cast<uint32_t>(state.Dimensions.biWidth), state.TileWidth);
    const uint64_t down =
        PartsOf(static_cast<uint32_t>(state.Dimensions.biHeight), state.TileLength);
    if (across > UINT16_MAX || down > UINT16_MAX) return TIFF_BAD_TAG;
    state.TilesAcross = static_cast<uint16_t>(across);
    state.TilesDown = static_cast<uint16_t>(down);
    state.TileCount = static_cast<uint32_t>(std::max<uint64_t>(across * down, 1));
    ReadSubsampling(file, image, state);
    return TIFF_SUCCESS;
}

bool DefineTable(TiffFileHandle file, int32_t image, uint32_t tag, GlobalHandle block,
                 uint32_t count) {
    const LockedBlock table(block);
    if (!table || table.Size() / sizeof(uint32_t) < count) return false;
    return DefineTiffImageInfoBuffer(file, image, tag, table.As<uint32_t>(), TIFF_TYPE_LONG,
                                     count) != 0;
}

// Without the tag a writer's strips are of one row, but a reader's are the whole image.
bool DefineRowsPerStrip(TiffFileHandle file, int32_t image, const CodecState& state) {
    if (state.TileCount != 0 || HasTag(file, image, TIFF_TAG_ROWS_PER_STRIP)) return true;
    return DefineTiffImageInfo(file, image, TIFF_TAG_ROWS_PER_STRIP, TIFF_TYPE_LONG,
                               state.RowsPerStrip) != 0;
}

// Where the coding tables stand in the file, as the module that wrote them has left word.
bool WriteJpegTableTags(TiffFileHandle file, int32_t image, const CodecState& state) {
    if (state.Key != TIFF_KEY_JPEG) return true;
    constexpr uint16_t kGreyBits = 8;
    const uint32_t count = state.Dimensions.biBitCount > kGreyBits ? 3 : 1;
    return DefineTable(file, image, TIFF_TAG_JPEG_Q_TABLES, state.JpegQTables, count) &&
           DefineTable(file, image, TIFF_TAG_JPEG_AC_TABLES, state.JpegACTables, count) &&
           DefineTable(file, image, TIFF_TAG_JPEG_DC_TABLES, state.JpegDCTables, count);
}

}  // namespace

uint32_t ReadEncodeLayout(TiffFileHandle file, int32_t image, CodecState& state) {
    const auto height = static_cast<uint32_t>(state.Dimensions.biHeight);
    uint64_t strips = 0;
    if (HasTag(file, image, TIFF_TAG_TILE_WIDTH)) {
        const uint32_t result = ReadTiles(file, image, state);
        if (result != TIFF_SUCCESS) return result;
        strips = state.TileCount;
    } else {
        // Rows of 0 mean what they mean in a stored image: the strip is the whole of it.
        const uint32_t rows = TagValue(file, image, TIFF_TAG_ROWS_PER_STRIP, 1);
        state.RowsPerStrip = rows == 0 ? height : rows;
        strips = PartsOf(height, state.RowsPerStrip);
    }
    state.StripCount = static_cast<uint32_t>(strips);
    return TIFF_SUCCESS;
}

uint32_t AllocateStripTables(CodecState& state) {
    const auto bytes = CheckedSize(state.StripCount, sizeof(uint32_t), kTableSlack);
    if (!bytes) return TIFF_NO_MEMORY;
    state.StripOffsets = GlobalAlloc(GHND, *bytes);
    state.StripByteCounts = GlobalAlloc(GHND, *bytes);
    return state.StripOffsets != 0 && state.StripByteCounts != 0 ? TIFF_SUCCESS : TIFF_NO_MEMORY;
}

uint32_t WriteStripTags(TiffFileHandle file, int32_t image, const CodecState& state) {
    const bool tiles = state.Key == TIFF_KEY_JPEG;
    const uint32_t offsets = tiles ? TIFF_TAG_TILE_OFFSETS : TIFF_TAG_STRIP_OFFSETS;
    const uint32_t counts = tiles ? TIFF_TAG_TILE_BYTE_COUNTS : TIFF_TAG_STRIP_BYTE_COUNTS;
    const bool defined =
        DefineRowsPerStrip(file, image, state) &&
        DefineTable(file, image, offsets, state.StripOffsets, state.StripCount) &&
        DefineTable(file, image, counts, state.StripByteCounts, state.StripCount) &&
        WriteJpegTableTags(file, image, state);
    return defined ? TIFF_SUCCESS : TIFF_NO_MEMORY;
}

}  // namespace vellim
