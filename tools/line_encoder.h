// An encoder of the library at the end of a picture's stages. Encoders ask for lines, while
// decoders and stages give them: the encoder has a thread of its own, and lines reach it through a
// queue. The failure code belongs to that thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>

#include "line_queue.h"

namespace vellim::tool {

// The longest line that the two-dimensional coders take, in pixels.
constexpr uint32_t kMostTwoDimensionalPixels = 33280;

struct LineEncoder {
    LineQueue queue;
    std::thread thread;
    int32_t code = 0;  // the failure code, once the thread has ended

    LineEncoder() = default;
    ~LineEncoder();  // as StopEncoder
    LineEncoder(const LineEncoder&) = delete;
    LineEncoder& operator=(const LineEncoder&) = delete;
};

// Runs `encode` on its thread. It hands OnLineWanted and its argument to the library as callback
// and callbackData, and its result is a failure code or 0.
void StartEncoder(LineEncoder& encoder, size_t lineBytes,
                  std::function<int32_t(uintptr_t callbackData)> encode);

// The LineCallback of such an encoder.
uint32_t OnLineWanted(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) noexcept;

// Each gives false, with the reason in `failure`, if the encoder has failed.
bool EncodeLine(LineEncoder& encoder, const uint8_t* line, std::string& failure);
bool FinishEncoder(LineEncoder& encoder, std::string& failure);  // after the last line

// Ends an encoder that hasn't finished, and waits for that.
void StopEncoder(LineEncoder& encoder);

// Why an encoder couldn't write, in words.
std::string FailureInEncoding(int32_t code);

}  // namespace vellim::tool
