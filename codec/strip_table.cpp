// Strips (TIFF 6.0 section 8, StripOffsets and RowsPerStrip).

#include "codec/strip_table.h"

#include "codec/tag_value.h"
#include "vellim/failures.h"

namespace vellim {

uint32_t ReadTableTag(TiffFileHandle file, int32_t image, uint32_t tag, GlobalHandle& block,
                      uint32_t& type, uint32_t& count) {
    if (!HasTag(file, image, tag)) return TIFF_TAG_MISSING;
    const bool copied = GetTiffImageInfoBuffer(file, image, tag, &block, &type, &count) != 0;
    return copied ? TIFF_SUCCESS : TIFF_NO_MEMORY;
}

uint32_t ReadStripTable(TiffFileHandle file, int32_t image, CodecState& state) {
    GlobalHandle offsets = 0;
    uint32_t type = 0;
    uint32_t count = 0;
    const uint32_t result = ReadTableTag(file, image, TIFF_TAG_STRIP_OFFSETS, offsets, type, count);
    if (result != TIFF_SUCCESS) return result;
    state.StripOffsets = offsets;
    state.StripOffsetType = type;
    state.StripCount = count;

    const auto height = static_cast<uint32_t>(state.Dimensions.biHeight);
    const uint32_t rows = TagValue(file, image, TIFF_TAG_ROWS_PER_STRIP, 0);
    state.RowsPerStrip = rows != 0 && rows < height ? rows : height;
    return TIFF_SUCCESS;
}

// A table can have more entries than the height needs. A start in one of the surplus strips is as
// much out of range as one behind the table: no line of the image is there, and a run that began
// there would never meet the last one.
uint32_t SelectStartStrip(CodecState& state, uint32_t firstStrip, uint32_t lineCount) {
    if (firstStrip >= state.StripCount) return TIFF_BAD_INDEX;
    const uint64_t firstLine = uint64_t{state.RowsPerStrip} * firstStrip;
    const auto height = static_cast<uint32_t>(state.Dimensions.biHeight);
    if (firstLine >= height) return TIFF_BAD_INDEX;
    state.StripIndex = firstStrip;
    state.LineNumber = static_cast<uint32_t>(firstLine);
    if (lineCount != 0 && firstLine + lineCount < height) {
        state.Dimensions.biHeight = static_cast<int32_t>(firstLine + lineCount);
    }
    return TIFF_SUCCESS;
}

}  // namespace vellim
