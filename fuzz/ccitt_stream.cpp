#include "fuzz/ccitt_stream.h"

#include <vector>

#include "container/streams.h"
#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "fuzz/lines.h"
#include "vellim/decode.h"

namespace vellim::fuzz {

namespace {

struct Settings {
    int32_t width;
    int32_t height;
    CompressionKey key;
};

Outcome DecodeBytes(std::span<const uint8_t> bytes, const Settings& settings, uint32_t fillOrder,
                    Hands hands) {
    const OwnedBlock block = BlockOf(bytes);
    const OpenStream stream(mOpen(block.Get(), static_cast<int32_t>(bytes.size())));
    Require(static_cast<bool>(stream), "a memory stream is free");

    const bool sensible = settings.width > 0 && settings.height > 0;
    const Expected expected = {sensible ? (static_cast<uint32_t>(settings.width) + 7) / 8 : 0, 0,
                               sensible ? settings.height : -1};
    return Run(expected, hands, [&](uintptr_t callbackData, LineCallback callback) {
        return DecodeCcittImageFrom(stream.Get(), 0, settings.width, settings.height, settings.key,
                                    fillOrder, TIFF_LITTLE_ENDIAN, callbackData, callback);
    });
}

}  // namespace

void FuzzCcitt(const uint8_t* data, size_t size, std::span<const CompressionKey> keys) {
    const BlockBalance balance;
    Input input(data, size);
    const uint8_t choice = input.Byte();
    const uint32_t fillOrder = (choice & 1) != 0 ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST;
    const Settings settings = {input.SignedWord(), input.SignedWord(),
                               keys[(choice >> 1) % keys.size()]};

    std::vector<uint8_t> bytes(input.Rest().begin(), input.Rest().end());
    const Outcome plain = DecodeBytes(bytes, settings, fillOrder, Hands::Off);
    ReverseBits(bytes.data(), bytes.size());
    const uint32_t other = TIFF_FILL_MSB_FIRST + TIFF_FILL_LSB_FIRST - fillOrder;
    const Outcome mirrored = DecodeBytes(bytes, settings, other, Hands::Scribbling);
    Require(plain == mirrored, "a mirrored stream decodes alike");
}

}  // namespace vellim::fuzz
