// PackBits and uncompressed data in strips. The same image stored in the other byte order and the
// other FillOrder must come out alike.
#include "fuzz/checks.h"
#include "fuzz/strip_target.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    constexpr uint16_t kPackBits = 32773;
    constexpr uint16_t kUncompressed = 1;
    const BlockBalance balance;
    Input input(data, size);
    const uint8_t choice = input.Byte();
    StripTiff image = ReadStripTiff(input, choice, (choice & 4U) != 0 ? kUncompressed : kPackBits);
    CutIntoStrips(image);

    const Outcome plain = DecodeStripTiff(image, {false, false}, Hands::Off);
    const Outcome other = DecodeStripTiff(image, {true, true}, Hands::Scribbling);
    Require(plain == other, "the layout of the file doesn't change the picture");
    return 0;
}
