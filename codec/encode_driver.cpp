// Encoding runs: from an image's tags, or from a caller's figures for bare CCITT data and MMR
// streams, to the record that an engine runs on; the engine, by its key but for MMR, which has
// none; the tables of the strips that were written as tags; and last of all the directory, which
// makes the image part of its file.

#include "codec/compression_key.h"
#include "codec/encode_layout.h"
#include "codec/engines.h"
#include "codec/run.h"
#include "container/directory_writer.h"
#include "container/file_stream.h"
#include "vellim/encode.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim {
namespace {

// Null for a key that isn't known.
Engine EncoderOf(CompressionKey key) {
    switch (key) {
        case TIFF_KEY_NONE:
            return EncodeRaw;
        case TIFF_KEY_CCITT_1D_BARE:
        case TIFF_KEY_CCITT_1D:
        case TIFF_KEY_GROUP3_1D:
        case TIFF_KEY_GROUP3_1D_FILL:
            return Encode1D;
        case TIFF_KEY_GROUP3_2D:
        case TIFF_KEY_GROUP3_2D_FILL:
            return EncodeGroup3TwoD;
        case TIFF_KEY_GROUP4:
            return EncodeGroup4;
        case TIFF_KEY_LZW:
        case TIFF_KEY_LZW_DIFFERENCING:
            return EncodeLzw;
        case TIFF_KEY_PACKBITS:
            return EncodePackBits;
        default:
            return nullptr;
    }
}

uint32_t DispatchEncoder(CodecState& state) {
    const Engine engine = EncoderOf(state.Key);
    if (engine == nullptr) return TIFF_UNKNOWN_COMPRESSION;
    const uint32_t result = engine(state);
    return result == TIFF_SUCCESS ? FlushCodeBuffer(&state) : result;
}

// All that can be wrong with the tags is found before the file is touched.
uint32_t PrepareStoredImage(TiffFileHandle file, int32_t image, CodecState& state) {
    if (state.Callback == nullptr || IsTiffImageRegistered(file, image) == 0) return TIFF_BAD_INDEX;
    uint32_t result = ReadDimensions(file, image, state);
    if (result != TIFF_SUCCESS) return result;
    result = ReadEncodeLayout(file, image, state);
    if (result != TIFF_SUCCESS) return result;
    result = ReadCompressionKey(file, image, state);
    if (result != TIFF_SUCCESS) return result;
    // No engine but JPEG's writes tiles.
    const bool tiled = state.TileCount != 0 && state.Key != TIFF_KEY_JPEG;
    if (EncoderOf(state.Key) == nullptr || tiled) return TIFF_UNKNOWN_COMPRESSION;
    if (state.StripCount > kMostStrips) return TIFF_BAD_TAG;
    const TagBuffer tags(TagBufferOf(file, image));
    if (!tags) return TIFF_BAD_INDEX;
    if (!CanBeStored(tags)) return TIFF_BAD_TAG;
    return AllocateStripTables(state);
}

bool WriteHeader(TiffFileHandle file, StreamHandle stream) {
    const TiffFileAccess access(file);
    return access && WriteTiffHeader(*access, stream, 0);
}

uint32_t EncodeStoredImage(TiffFileHandle file, int32_t image, CodecState& state) {
    uint32_t result = PrepareStoredImage(file, image, state);
    if (result != TIFF_SUCCESS) return result;
    const FileStream stream(file, FileUse::Write);
    if (!stream || !WriteHeader(file, stream.Get())) return TIFF_IO_ERROR;
    state.Stream = stream.Get();
    result = DispatchEncoder(state);
    if (result != TIFF_SUCCESS) return result;
    result = WriteStripTags(file, image, state);
    return result == TIFF_SUCCESS ? WriteImageDirectory(file, image, stream.Get()) : result;
}

// The tables are there for the strip to be entered; nobody reads them. A height of 0 has no last
// line: lines are asked for until the callback stops the run.
uint32_t EncodeBareData(int32_t width, int32_t height, Engine encode, CodecState& state) {
    if (state.Callback == nullptr) return TIFF_BAD_INDEX;
    uint32_t result = TakeBarePicture(width, height, state);
    if (result != TIFF_SUCCESS) return result;
    state.StripCount = 1;
    result = AllocateStripTables(state);
    return result == TIFF_SUCCESS ? encode(state) : result;
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t EncodeTiffImage(TiffFileHandle file, int32_t image, uintptr_t callbackData,
                        LineCallback callback) {
    Run run(callbackData, callback);
    return FinishRun(EncodeStoredImage(file, image, run.state));
}

int32_t EncodeCcittImage(StreamHandle stream, int32_t width, int32_t height, CompressionKey key,
                         uintptr_t callbackData, LineCallback callback) {
    return EncodeCcittImageTo(stream, width, height, TIFF_FILL_MSB_FIRST, TIFF_LITTLE_ENDIAN, key,
                              callbackData, callback);
}

int32_t EncodeCcittImageTo(StreamHandle stream, int32_t width, int32_t height, uint32_t fillOrder,
                           uint32_t byteOrder, CompressionKey key, uintptr_t callbackData,
                           LineCallback callback) {
    Run run(callbackData, callback);
    run.state.Stream = stream;
    run.state.Key = key;
    run.state.FillOrder = FillOrderOrMsbFirst(fillOrder);
    run.state.ByteOrder = ByteOrderOrLittleEndian(byteOrder);
    return FinishRun(EncodeBareData(width, height, DispatchEncoder, run.state));
}

int32_t EncodeMMRImage(StreamHandle stream, int32_t width, int32_t height, uint32_t /*unused*/,
                       uintptr_t callbackData, LineCallback callback) {
    Run run(callbackData, callback);
    run.state.Stream = stream;
    run.state.FillOrder = TIFF_FILL_MSB_FIRST;
    run.state.ByteOrder = TIFF_LITTLE_ENDIAN;
    return FinishRun(EncodeBareData(width, height, EncodeMmr, run.state));
}
