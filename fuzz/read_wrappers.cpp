// Any bytes as a wrapped picture, looked for from where the first byte says.
#include "container/streams.h"
#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "fuzz/lines.h"
#include "support/tiff_builder.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {
namespace {

void ReadPicture(StreamHandle stream, int32_t start,
                 int32_t (*readHeader)(StreamHandle, IocaHeader*)) {
    _llseek(stream, start, 0);
    IocaHeader header{};
    const int32_t result = readHeader(stream, &header);
    const auto offset = static_cast<int32_t>(header.DataOffset);
    const int32_t behind = _llseek(stream, 0, 1);
    Require(behind >= start && behind <= std::max(start, mSize(stream)), "no byte is made up");
    if (result == 0 || offset == 0) return;
    Require(behind == offset + 4, "the file stands behind the chunk's length");
    const Expected expected{(header.Width + 7U) / 8, 0, header.Height == 0 ? -1 : header.Height};
    Run(expected, Hands::Scribbling, [&](uintptr_t callbackData, LineCallback callback) {
        return DecodeMMRImage(stream, offset, header.Width, header.Height, 0, TIFF_FILL_MSB_FIRST,
                              TIFF_LITTLE_ENDIAN, callbackData, callback);
    });
}

}  // namespace
}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim;
    const fuzz::BlockBalance balance;
    fuzz::Input input(data, size);
    const int32_t start = input.Byte();
    const std::string path = test::FileOf(input.Rest(), "picture.ica");
    const OpenStream stream(OpenFile(path.c_str(), nullptr, OF_READ));
    fuzz::ReadPicture(stream.Get(), start, ReadIOCAHeader);
    fuzz::ReadPicture(stream.Get(), start, ReadMODCAHeader);
    return 0;
}
