// What every run has, decoding or encoding: its record, the picture's size, and its end.
#pragma once

#include <cstdint>

#include "codec/buffers.h"
#include "vellim/files.h"

namespace vellim {

// The record of one run, whose blocks are freed at the end of the scope.
struct Run {
    CodecState state{};
    Run(uintptr_t callbackData, LineCallback callback) {
        state.CallbackData = callbackData;
        state.Callback = callback;
    }
    ~Run() { ReleaseCodecState(state); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
};

// Takes the size of a stored or defined image, and the bytes of its lines, from its tags. 0, 1 for
// a picture above the limits, or what GetTiffDimensions gives.
uint32_t ReadDimensions(TiffFileHandle file, int32_t image, CodecState& state);

// The same for a bilevel picture that is a single strip. 0 or 1.
uint32_t TakeBarePicture(int32_t width, int32_t height, CodecState& state);

// What a caller gives for bare data: anything that isn't one of the two means the usual one.
uint32_t FillOrderOrMsbFirst(uint32_t fillOrder);
uint32_t ByteOrderOrLittleEndian(uint32_t byteOrder);

// Stores a run's code as the failure code, 0 included, and gives 1 for success, 0 for failure.
int32_t FinishRun(uint32_t code);

}  // namespace vellim
