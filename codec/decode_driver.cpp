// Decoding runs: from a stored image's tags, or from a caller's figures for bare CCITT data, to the
// record that an engine runs on; the engine by its key; and the end of the run, on every way out.

#include <limits>
#include <optional>

#include "codec/buffers.h"
#include "codec/compression_key.h"
#include "codec/engines.h"
#include "codec/jpeg_tags.h"
#include "codec/strip_table.h"
#include "container/failure.h"
#include "container/sizes.h"
#include "container/streams.h"
#include "container/tiff_file.h"
#include "vellim/decode.h"
#include "vellim/queries.h"

namespace vellim {
namespace {

// A run, whose blocks are freed at the end of the scope.
struct Run {
    CodecState state{};
    Run() = default;
    ~Run() { ReleaseCodecState(state); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
};

// The bytes of a TIFF file for the length of a run. At its end a memory TIFF takes its block back
// from the stream. The file's record is locked for moments only: the callback may use the file.
class TiffSource {
  public:
    explicit TiffSource(TiffFileHandle file) : file_(file), stream_(Open(file)) {}
    ~TiffSource() {
        if (!stream_ || stream_.Get() > 0) return;
        // A callback that closed the stream has left nothing to take back.
        const GlobalHandle block = mBlock(stream_.Get());
        const TiffFileAccess access(file_);
        if (access && block != 0) access->MemoryBlock = block;
    }
    TiffSource(const TiffSource&) = delete;
    TiffSource& operator=(const TiffSource&) = delete;

    // Puts the stream into the run, with its length. 0 or 6.
    [[nodiscard]] uint32_t Attach(CodecState& state) const {
        if (!stream_) return TIFF_IO_ERROR;
        const int32_t length = mSize(stream_.Get());
        if (length < 0 || mSeek(stream_.Get(), 0, 0) != 0) return TIFF_IO_ERROR;
        state.Stream = stream_.Get();
        state.StreamLimit = static_cast<uint32_t>(length);
        return TIFF_SUCCESS;
    }

  private:
    static StreamHandle Open(TiffFileHandle file) {
        const TiffFileAccess access(file);
        return access ? OpenForReading(*access) : StreamHandle{-1};
    }

    TiffFileHandle file_;
    OpenStream stream_;
};

uint32_t DispatchDecoder(CodecState& state) {
    switch (state.Key) {
        case TIFF_KEY_NONE:
            return DecodeRaw(state);
        case TIFF_KEY_CCITT_1D_BARE:
            state.Key = TIFF_KEY_CCITT_1D;
            return Decode1DNoEol(state);
        case TIFF_KEY_CCITT_1D:
            return Decode1DNoEol(state);
        case TIFF_KEY_GROUP3_1D:
        case TIFF_KEY_GROUP3_1D_FILL:
            return Decode1DEol(state);
        case TIFF_KEY_GROUP3_2D:
        case TIFF_KEY_GROUP3_2D_FILL:
            return Decode2DEol(state);
        case TIFF_KEY_GROUP4:
            return DecodeGroup4(state);
        case TIFF_KEY_LZW:
        case TIFF_KEY_LZW_DIFFERENCING:
            return DecodeLzw(state);
        case TIFF_KEY_PACKBITS:
            return DecodePackBits(state);
        default:
            return TIFF_UNKNOWN_COMPRESSION;
    }
}

// The picture's size and the bytes of its lines. 0 or a failure code.
uint32_t ReadDimensions(TiffFileHandle file, int32_t image, CodecState& state) {
    TiffDimensions dimensions{};
    const int32_t result = GetTiffDimensions(file, image, &dimensions);
    if (result != TIFF_SUCCESS) return static_cast<uint32_t>(result);
    if (!WithinSizeLimits(dimensions.biWidth, dimensions.biHeight)) return TIFF_NO_MEMORY;
    const auto rowBytes = PackedRowBytes(dimensions.biWidth, dimensions.biBitCount);
    if (!rowBytes) return TIFF_NO_MEMORY;
    state.Dimensions = dimensions;
    state.RowBytes = *rowBytes;
    return TIFF_SUCCESS;
}

// JPEG has tiles for strips, and always begins with the first.
uint32_t ReadLayout(TiffFileHandle file, int32_t image, uint32_t firstStrip, uint32_t lineCount,
                    CodecState& state) {
    if (state.Key == TIFF_KEY_JPEG) return ReadJpegTags(file, image, state);
    const uint32_t result = ReadStripTable(file, image, state);
    return result == TIFF_SUCCESS ? SelectStartStrip(state, firstStrip, lineCount) : result;
}

uint32_t DecodeStoredImage(TiffFileHandle file, int32_t image, uint32_t firstStrip,
                           uint32_t lineCount, CodecState& state) {
    if (state.Callback == nullptr || IsTiffImageRegistered(file, image) == 0) return TIFF_BAD_INDEX;
    uint32_t result = ReadDimensions(file, image, state);
    if (result != TIFF_SUCCESS) return result;
    result = ReadCompressionKey(file, image, state);
    if (result != TIFF_SUCCESS) return result;
    result = ReadLayout(file, image, firstStrip, lineCount, state);
    if (result != TIFF_SUCCESS) return result;

    const TiffSource source(file);
    result = source.Attach(state);
    return result == TIFF_SUCCESS ? DispatchDecoder(state) : result;
}

TiffDimensions BilevelDimensions(int32_t width, int32_t height) {
    TiffDimensions dimensions{};
    dimensions.biSize = sizeof(TiffDimensions);
    dimensions.biWidth = width;
    dimensions.biHeight = height;
    dimensions.biPlanes = 1;
    dimensions.biBitCount = 1;
    dimensions.biClrUsed = 2;
    dimensions.biClrImportant = 2;
    return dimensions;
}

// Where bare data stands in its stream, and how it is stored.
struct BareData {
    StreamHandle stream;
    int32_t offset;
    CompressionKey key;
    uint32_t fillOrder;
    uint32_t byteOrder;
};

// Measures the stream and moves to the data. 0 or 6. Only a disk file can be moved; the length is
// cut for either kind.
uint32_t AttachBareData(const BareData& data, CodecState& state) {
    const int32_t length = mSize(data.stream);
    if (length < 0) return TIFF_IO_ERROR;
    const bool moved = data.offset > 0 && data.offset < length;
    if (moved) _llseek(data.stream, data.offset, 0);
    state.Stream = data.stream;
    state.StreamLimit = static_cast<uint32_t>(moved ? length - data.offset : length);
    return TIFF_SUCCESS;
}

// A height of 0 has no last line: lines come until the data ends. Lines of no pixels would then
// come for ever, so a picture with neither is done as it stands.
uint32_t DecodeBareData(const BareData& data, int32_t width, int32_t height, CodecState& state) {
    if (state.Callback == nullptr) return TIFF_BAD_INDEX;
    const uint32_t result = AttachBareData(data, state);
    if (result != TIFF_SUCCESS) return result;
    const auto rowBytes = PackedRowBytes(width, 1);
    if (!WithinSizeLimits(width, height) || !rowBytes) return TIFF_NO_MEMORY;
    if (width == 0 && height == 0) return TIFF_SUCCESS;
    state.Dimensions = BilevelDimensions(width, height);
    state.RowBytes = *rowBytes;
    state.RowsPerStrip = static_cast<uint32_t>(height);
    state.Key = data.key;
    state.FillOrder = data.fillOrder;
    state.ByteOrder = data.byteOrder;
    return DispatchDecoder(state);
}

int32_t Finish(uint32_t result) {
    StoreFailure(result);
    return result == TIFF_SUCCESS ? 1 : 0;
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t DecodeTiffImage(TiffFileHandle file, int32_t image, uint32_t firstStrip, uint32_t lineCount,
                        uintptr_t callbackData, LineCallback callback) {
    Run run;
    run.state.CallbackData = callbackData;
    run.state.Callback = callback;
    return Finish(DecodeStoredImage(file, image, firstStrip, lineCount, run.state));
}

int32_t DecodeCcittImage(StreamHandle stream, int32_t width, int32_t height, CompressionKey key,
                         uintptr_t callbackData, LineCallback callback) {
    return DecodeCcittImageFrom(stream, 0, width, height, key, TIFF_FILL_MSB_FIRST,
                                TIFF_LITTLE_ENDIAN, callbackData, callback);
}

int32_t DecodeCcittImageFrom(StreamHandle stream, int32_t offset, int32_t width, int32_t height,
                             CompressionKey key, uint32_t fillOrder, uint32_t byteOrder,
                             uintptr_t callbackData, LineCallback callback) {
    const bool lsbFirst = fillOrder == TIFF_FILL_LSB_FIRST;
    const bool bigEndian = byteOrder == TIFF_BIG_ENDIAN;
    const BareData data{
        .stream = stream,
        .offset = offset,
        .key = key,
        .fillOrder = lsbFirst ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST,
        .byteOrder = bigEndian ? TIFF_BIG_ENDIAN : TIFF_LITTLE_ENDIAN,
    };
    Run run;
    run.state.CallbackData = callbackData;
    run.state.Callback = callback;
    return Finish(DecodeBareData(data, width, height, run.state));
}
