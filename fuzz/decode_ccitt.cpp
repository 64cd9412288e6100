// Bare CCITT data from a memory stream: one target for each pair of FUZZ_KEYS. The key 0 stands for
// an MMR stream, from a file, where FillOrder plays no part.
//
// Input: a byte of settings (bit 0: FillOrder, set for 2; the others pick the key), width and
// height (two bytes each, low byte first, signed), data. The data is decoded as it is, and again
// with every byte mirrored and the other FillOrder: both must come out alike.
#include <array>

#include "container/streams.h"
#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "fuzz/lines.h"
#include "support/tiff_builder.h"
#include "vellim/decode.h"

namespace vellim::fuzz {

namespace {

constexpr auto kKeys = std::to_array<CompressionKey>({FUZZ_KEYS});

struct Settings {
    int32_t width;
    int32_t height;
    CompressionKey key;
};

constexpr bool kIsMmr = kKeys.front() == 0;

Outcome DecodeBytes(const test::Bytes& bytes, const Settings& settings, uint32_t fillOrder,
                    Hands hands) {
    const OwnedBlock block(test::BlockOf(bytes));
    const OpenStream stream(kIsMmr ? OpenFile(test::FileOf(bytes, "mmr").c_str(), nullptr, OF_READ)
                                   : mOpen(block.Get(), static_cast<int32_t>(bytes.size())));
    Require(static_cast<bool>(stream), "a stream is free");

    const bool sensible = settings.width > 0 && settings.height > 0;
    const Expected expected = {sensible ? (static_cast<uint32_t>(settings.width) + 7) / 8 : 0, 0,
                               sensible ? settings.height : -1};
    return Run(expected, hands, [&](uintptr_t callbackData, LineCallback callback) {
        if (kIsMmr)
            return DecodeMMRImage(stream.Get(), 0, settings.width, settings.height, 0, fillOrder,
                                  TIFF_LITTLE_ENDIAN, callbackData, callback);
        return DecodeCcittImageFrom(stream.Get(), 0, settings.width, settings.height, settings.key,
                                    fillOrder, TIFF_LITTLE_ENDIAN, callbackData, callback);
    });
}

}  // namespace

}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    const BlockBalance balance;
    Input input(data, size);
    const uint8_t choice = input.Byte();
    const uint32_t fillOrder = (choice & 1U) != 0 ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST;
    const uint32_t other = TIFF_FILL_MSB_FIRST + TIFF_FILL_LSB_FIRST - fillOrder;
    const int32_t width = input.SignedWord();
    const int32_t height = input.SignedWord();
    const Settings settings = {width, height, kKeys[(choice >> 1U) % kKeys.size()]};

    vellim::test::Bytes bytes = input.Rest();
    const Outcome plain = DecodeBytes(bytes, settings, fillOrder, Hands::Off);
    if (!kIsMmr) vellim::ReverseBits(bytes.data(), bytes.size());
    const Outcome mirrored = DecodeBytes(bytes, settings, other, Hands::Scribbling);
    Require(plain == mirrored, "a mirrored stream decodes alike");
    return 0;
}
