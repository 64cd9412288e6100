// What an engine for Compression 6 has to know beside the picture's size: the tiles (TIFF 6.0
// section 15), the process and its tables (section 22), and for colour the subsampling and the
// reference levels (section 21).

#include "codec/jpeg_tags.h"

#include <algorithm>
#include <array>
#include <limits>

#include "codec/strip_table.h"
#include "codec/tag_value.h"
#include "platform/guards.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

constexpr uint32_t kLastKnownProcess = 1;
constexpr uint32_t kLargestGreyDepth = 8;
constexpr uint32_t kReferenceWords = 6;

// Tiles along one side of the picture. Without a size the picture is one tile.
int64_t TilesAlong(int64_t pixels, uint32_t tileSize) {
    if (tileSize == 0) return 1;
    return (pixels + tileSize - 1) / tileSize;
}

bool FitsCount(int64_t tiles) {
    return tiles >= 0 && tiles <= std::numeric_limits<uint16_t>::max();
}

uint32_t ReadTileGrid(TiffFileHandle file, int32_t image, CodecState& state) {
    if (!HasTag(file, image, TIFF_TAG_TILE_WIDTH)) return TIFF_TAG_MISSING;
    state.TileWidth = TagValue(file, image, TIFF_TAG_TILE_WIDTH, 0);
    if (!HasTag(file, image, TIFF_TAG_TILE_LENGTH)) return TIFF_TAG_MISSING;
    state.TileLength = TagValue(file, image, TIFF_TAG_TILE_LENGTH, 0);
    if (state.TileLength != 0) state.RowsPerStrip = state.TileLength;

    const int64_t across = TilesAlong(state.Dimensions.biWidth, state.TileWidth);
    const int64_t down = TilesAlong(state.Dimensions.biHeight, state.TileLength);
    if (!FitsCount(across) || !FitsCount(down)) return TIFF_BAD_CODE;
    state.TilesAcross = static_cast<uint16_t>(across);
    state.TilesDown = static_cast<uint16_t>(down);
    state.TileCount = static_cast<uint32_t>(across * down);
    return TIFF_SUCCESS;
}

// A table tag with nowhere to go wrong behind it: its block and the number of its elements.
struct Table {
    uint32_t result = TIFF_SUCCESS;
    GlobalHandle block = 0;
    uint32_t type = 0;
    uint32_t count = 0;
};

Table ReadTable(TiffFileHandle file, int32_t image, uint32_t tag) {
    Table table;
    table.result = ReadTableTag(file, image, tag, table.block, table.type, table.count);
    return table;
}

uint32_t ReadTileTables(TiffFileHandle file, int32_t image, CodecState& state) {
    const Table offsets = ReadTable(file, image, TIFF_TAG_TILE_OFFSETS);
    if (offsets.result != TIFF_SUCCESS) return offsets.result;
    state.StripOffsets = offsets.block;
    state.StripOffsetType = offsets.type;
    state.TileCount = offsets.count;
    const Table byteCounts = ReadTable(file, image, TIFF_TAG_TILE_BYTE_COUNTS);
    if (byteCounts.result != TIFF_SUCCESS) return byteCounts.result;
    state.StripByteCounts = byteCounts.block;
    state.TileCount = byteCounts.count;
    return TIFF_SUCCESS;
}

uint32_t ReadCodingTables(TiffFileHandle file, int32_t image, CodecState& state) {
    const Table quantisation = ReadTable(file, image, TIFF_TAG_JPEG_Q_TABLES);
    if (quantisation.result != TIFF_SUCCESS) return quantisation.result;
    state.JpegQTables = quantisation.block;
    state.JpegQTableCount = quantisation.count;
    const Table ac = ReadTable(file, image, TIFF_TAG_JPEG_AC_TABLES);
    if (ac.result != TIFF_SUCCESS) return ac.result;
    state.JpegACTables = ac.block;
    state.JpegACTableCount = ac.count;
    const Table dc = ReadTable(file, image, TIFF_TAG_JPEG_DC_TABLES);
    if (dc.result != TIFF_SUCCESS) return dc.result;
    state.JpegDCTables = dc.block;
    state.JpegDCTableCount = dc.count;
    return TIFF_SUCCESS;
}

// A tag with a single value is as good as missing: neither factor can be guessed.
uint32_t ReadSubsampling(TiffFileHandle file, int32_t image, CodecState& state) {
    const Table table = ReadTable(file, image, TIFF_TAG_YCBCR_SUBSAMPLING);
    const OwnedBlock owner(table.block);
    if (table.result != TIFF_SUCCESS) return table.result;
    const LockedBlock factors(table.block);
    if (!factors) return TIFF_NO_MEMORY;
    if (factors.Size() < 2 * sizeof(uint16_t)) return TIFF_TAG_MISSING;
    state.SubsamplingH = factors.As<uint16_t>()[0];
    state.SubsamplingV = factors.As<uint16_t>()[1];
    return TIFF_SUCCESS;
}

// The levels of section 20 for full-range YCbCr stand for a tag that is missing or too short.
void ReadReferenceLevels(TiffFileHandle file, int32_t image, CodecState& state) {
    std::array<uint32_t, kReferenceWords> words{0, 255, 128, 255, 128, 255};
    const Table table = ReadTable(file, image, TIFF_TAG_REFERENCE_BLACK_WHITE);
    const OwnedBlock owner(table.block);
    const LockedBlock levels(table.block);
    if (levels && levels.Size() >= sizeof(words)) {
        std::copy_n(levels.As<uint32_t>(), kReferenceWords, words.begin());
    }
    for (uint32_t i = 0; i < kReferenceWords; ++i)
        state.ReferenceBlackWhite[i] = words[i];
}

}  // namespace

uint32_t ReadJpegTags(TiffFileHandle file, int32_t image, CodecState& state) {
    if (!HasTag(file, image, TIFF_TAG_JPEG_PROC)) return TIFF_TAG_MISSING;
    const uint32_t process = TagValue(file, image, TIFF_TAG_JPEG_PROC, 0);
    if (process > kLastKnownProcess) return TIFF_UNKNOWN_COMPRESSION;
    state.JpegProc = static_cast<uint16_t>(process);

    uint32_t result = ReadTileGrid(file, image, state);
    if (result == TIFF_SUCCESS) result = ReadTileTables(file, image, state);
    if (result == TIFF_SUCCESS) result = ReadCodingTables(file, image, state);
    if (result != TIFF_SUCCESS) return result;

    if (!HasTag(file, image, TIFF_TAG_PLANAR_CONFIGURATION)) return TIFF_TAG_MISSING;
    state.PlanarConfig =
        static_cast<uint16_t>(TagValue(file, image, TIFF_TAG_PLANAR_CONFIGURATION, 0));
    state.JpegRestartInterval =
        static_cast<uint16_t>(TagValue(file, image, TIFF_TAG_JPEG_RESTART_INTERVAL, 0));
    if (state.Dimensions.biBitCount <= kLargestGreyDepth) return TIFF_SUCCESS;

    result = ReadSubsampling(file, image, state);
    if (result != TIFF_SUCCESS) return result;
    ReadReferenceLevels(file, image, state);
    return TIFF_SUCCESS;
}

}  // namespace vellim
