#include "fax_stream.h"

#include <array>

#include "messages.h"
#include "vellim/decode.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

// What a code that was cut becomes with them: in turn zeros, ones, and the short runs of horizontal
// mode whose first bits came or didn't come; with the last, at the place of a mode, none at all.
constexpr std::array<char, kPaddings> kFirstBytes = {'\0', '\xFF', '\x47', '\x8E', '\x01'};

}  // namespace

std::optional<FaxStream> OpenFaxStream(const CodeFile& code, std::string& why) {
    const std::string path = "/proc/self/fd/" + std::to_string(code.descriptor.Get());
    if (access(path.c_str(), R_OK) != 0) {
        why = "bare fax code is decoded by way of /proc, which can't be had here";
        return {};
    }
    FaxStream stream;
    stream.file.Reset(OpenFile(path.c_str(), nullptr, OF_READ));
    if (!stream.file) {
        why = FailureInWords(TIFF_IO_ERROR);
        return {};
    }
    return stream;
}

int32_t DecodeFax(const FaxStream& stream, uint32_t height, uintptr_t callbackData,
                  LineCallback callback) {
    const StreamHandle file = stream.file.Get();
    if (mSeek(file, 0, 0) != 0) return TIFF_IO_ERROR;
    const auto width = static_cast<int32_t>(stream.width);
    const auto lines = static_cast<int32_t>(height);
    const int32_t done =
        stream.coding == FaxCoding::Mmr
            ? DecodeMMRImage(file, 0, width, lines, 0, stream.fillOrder, TIFF_LITTLE_ENDIAN,
                             callbackData, callback)
            : DecodeCcittImageFrom(file, 0, width, lines, KeyOf(stream.coding), stream.fillOrder,
                                   TIFF_LITTLE_ENDIAN, callbackData, callback);
    return done != 0 ? TIFF_SUCCESS : TiffError();
}

std::string PaddingOf(FaxCoding coding, uint32_t way) {
    const char byte = kFirstBytes[way];
    if (coding == FaxCoding::Mmr) return {'\xFE', '\x92', '\0', '\x01', byte};
    std::string bytes(1, byte);
    if (coding == FaxCoding::G3TwoD) bytes += "\x01\x80";
    return bytes;
}

}  // namespace vellim::tool
