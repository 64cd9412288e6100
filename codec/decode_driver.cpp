// Decoding runs: from a stored image's tags, or from a caller's figures for bare CCITT data and MMR
// streams, to the record that an engine runs on; the engine, by its key but for MMR, which has
// none; and the end of the run, on every way out.

#include "codec/compression_key.h"
#include "codec/engines.h"
#include "codec/jpeg_tags.h"
#include "codec/run.h"
#include "codec/strip_table.h"
#include "container/file_stream.h"
#include "vellim/decode.h"
#include "vellim/failures.h"

namespace vellim {
namespace {

// Puts the stream into the run, with its length. 0 or 6.
uint32_t AttachStream(StreamHandle stream, CodecState& state) {
    const int32_t length = mSize(stream);
    if (length < 0 || mSeek(stream, 0, 0) != 0) return TIFF_IO_ERROR;
    state.Stream = stream;
    state.StreamLimit = static_cast<uint32_t>(length);
    return TIFF_SUCCESS;
}

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

    const FileStream stream(file, FileUse::Read);
    if (!stream) return TIFF_IO_ERROR;
    result = AttachStream(stream.Get(), state);
    return result == TIFF_SUCCESS ? DispatchDecoder(state) : result;
}

// Where bare data stands in its stream, and how it is stored.
struct BareData {
    StreamHandle stream;
    int32_t offset;
    CompressionKey key;
    uint32_t fillOrder;
    uint32_t byteOrder;
    Engine decode;
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
    const uint32_t taken = TakeBarePicture(width, height, state);
    if (taken != TIFF_SUCCESS) return taken;
    if (width == 0 && height == 0) return TIFF_SUCCESS;
    state.Key = data.key;
    state.FillOrder = data.fillOrder;
    state.ByteOrder = data.byteOrder;
    return data.decode(state);
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t DecodeTiffImage(TiffFileHandle file, int32_t image, uint32_t firstStrip, uint32_t lineCount,
                        uintptr_t callbackData, LineCallback callback) {
    Run run(callbackData, callback);
    return FinishRun(DecodeStoredImage(file, image, firstStrip, lineCount, run.state));
}

int32_t DecodeCcittImage(StreamHandle stream, int32_t width, int32_t height, CompressionKey key,
                         uintptr_t callbackData, LineCallback callback) {
    return DecodeCcittImageFrom(stream, 0, width, height, key, TIFF_FILL_MSB_FIRST,
                                TIFF_LITTLE_ENDIAN, callbackData, callback);
}

int32_t DecodeCcittImageFrom(StreamHandle stream, int32_t offset, int32_t width, int32_t height,
                             CompressionKey key, uint32_t fillOrder, uint32_t byteOrder,
                             uintptr_t callbackData, LineCallback callback) {
    const BareData data{
        .stream = stream,
        .offset = offset,
        .key = key,
        .fillOrder = FillOrderOrMsbFirst(fillOrder),
        .byteOrder = ByteOrderOrLittleEndian(byteOrder),
        .decode = DispatchDecoder,
    };
    Run run(callbackData, callback);
    return FinishRun(DecodeBareData(data, width, height, run.state));
}

int32_t DecodeMMRImage(StreamHandle stream, int32_t offset, int32_t width, int32_t height,
                       uint32_t /*unused*/, uint32_t fillOrder, uint32_t byteOrder,
                       uintptr_t callbackData, LineCallback callback) {
    const BareData data{
        .stream = stream,
        .offset = offset,
        .key = 0,
        .fillOrder = FillOrderOrMsbFirst(fillOrder),
        .byteOrder = ByteOrderOrLittleEndian(byteOrder),
        .decode = DecodeMmr,
    };
    Run run(callbackData, callback);
    return FinishRun(DecodeBareData(data, width, height, run.state));
}
