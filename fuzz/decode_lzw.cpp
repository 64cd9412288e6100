// LZW in strips, with and without differencing. The same image stored in the other byte order and
// the other FillOrder must come out alike.
#include "fuzz/checks.h"
#include "fuzz/strip_target.h"
#include "vellim/tags.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    constexpr uint16_t kLzw = 5;
    const BlockBalance balance;
    Input input(data, size);
    const uint8_t choice = input.Byte();
    StripTiff image = ReadStripTiff(input, choice, kLzw);
    image.optionTag = TIFF_TAG_PREDICTOR;
    image.option = (choice & 4U) != 0 ? 2 : 1;
    CutIntoStrips(image);

    const Outcome plain = DecodeStripTiff(image, {false, false}, Hands::Off);
    const Outcome other = DecodeStripTiff(image, {true, true}, Hands::Off);
    Require(plain == other, "the layout of the file doesn't change the picture");
    return 0;
}
