#include "line_encoder.h"

#include <utility>

#include "messages.h"
#include "vellim/codec.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

void RunEncoder(LineEncoder& encoder, const std::function<int32_t(uintptr_t)>& encode) noexcept {
    encoder.code = encode(reinterpret_cast<uintptr_t>(&encoder));
    if (encoder.code != 0) AbandonLines(encoder.queue);
}

bool Join(LineEncoder& encoder, std::string& failure) {
    encoder.thread.join();
    if (encoder.code != 0) failure = FailureInEncoding(encoder.code);
    return encoder.code == 0;
}

}  // namespace

LineEncoder::~LineEncoder() {
    StopEncoder(*this);
}

void StartEncoder(LineEncoder& encoder, size_t lineBytes,
                  std::function<int32_t(uintptr_t callbackData)> encode) {
    PrepareQueue(encoder.queue, lineBytes);
    encoder.thread = std::thread(RunEncoder, std::ref(encoder), std::move(encode));
}

uint32_t OnLineWanted(uint8_t* line, uint32_t /*lineNumber*/, uintptr_t callbackData) noexcept {
    auto& encoder = *reinterpret_cast<LineEncoder*>(callbackData);
    if (!PullLine(encoder.queue, line)) return TIFF_IO_ERROR;
    return TIFF_LINE_GO_ON;
}

bool EncodeLine(LineEncoder& encoder, const uint8_t* line, std::string& failure) {
    return PushLine(encoder.queue, line) || Join(encoder, failure);
}

bool FinishEncoder(LineEncoder& encoder, std::string& failure) {
    CompleteLines(encoder.queue);
    return Join(encoder, failure);
}

void StopEncoder(LineEncoder& encoder) {
    if (!encoder.thread.joinable()) return;
    AbandonLines(encoder.queue);
    encoder.thread.join();
}

std::string FailureInEncoding(int32_t code) {
    if (code == TIFF_IO_ERROR) {
        return "it can't be written: the disk is full, or the file would be larger than 2 GB";
    }
    return FailureMessage(code);
}

}  // namespace vellim::tool
