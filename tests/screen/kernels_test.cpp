// Every kernel against a model that moves one pixel at a time, byte for byte, with what isn't
// written around it. A source ends with its last byte, so that a sanitizer sees more being read.
#include "screen/kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

namespace vellim {
namespace {

struct Kernel {
    void (*run)(const uint8_t* source, uint8_t* target, uint32_t count);
    size_t bits, entryBytes;  // no entries: the row is mirrored
    bool reversed;
};

void Model(const Kernel& kernel, const uint8_t* source, uint8_t* target, size_t count) {
    const auto [run, bits, entryBytes, reversed] = kernel;
    const auto bit = [source](size_t at) { return source[at / 8] >> (7 - at % 8) & 1; };
    if (entryBytes == 0) std::fill_n(target, (count * bits + 7) / 8, 0);
    for (size_t i = 0; i < count; i++) {
        const size_t to = reversed ? count - 1 - i : i;
        for (size_t b = 0; b < bits; b++) {
            uint8_t& byte = target[entryBytes != 0 ? to * entryBytes + b / 8 : (to * bits + b) / 8];
            byte = static_cast<uint8_t>(entryBytes == 0
                                            ? byte | bit(i * bits + b) << (7 - (to * bits + b) % 8)
                                        : bits == 1 ? bit(i) * 0x80
                                                    : source[(i * bits + b) / 8] << i * bits % 8);
        }
    }
    if (bits == 4 && entryBytes == 0 && count % 2 != 0) target[count / 2] = source[0];
}

TEST(Kernels, MoveEachPixelAndTouchNothingElse) {
    constexpr size_t kGuard = 9;
    std::mt19937 random(1728);
    for (const Kernel& kernel :
         {Kernel{SpreadMonoLine, 1, 2, false}, Kernel{SpreadMonoLineReversed, 1, 2, true},
          Kernel{SpreadNibbleLine, 4, 4, false}, Kernel{SpreadNibbleLineReversed, 4, 4, true},
          Kernel{SpreadByteLine, 8, 4, false}, Kernel{SpreadByteLineReversed, 8, 4, true},
          Kernel{SpreadRgbLine, 24, 4, false}, Kernel{SpreadRgbLineReversed, 24, 4, true},
          Kernel{MirrorMonoLine, 1, 0, true}, Kernel{MirrorNibbleLine, 4, 0, true},
          Kernel{MirrorByteLine, 8, 0, true}, Kernel{MirrorRgbLine, 24, 0, true}}) {
        for (uint32_t count = 0; count <= 150; count++) {
            std::vector<uint8_t> source((count * kernel.bits + 7) / 8);
            std::vector<uint8_t> target(size_t{4} * count + 2 * kGuard);
            std::generate(source.begin(), source.end(), std::ref(random));
            std::generate(target.begin(), target.end(), std::ref(random));
            std::vector<uint8_t> expected = target;
            Model(kernel, source.data(), expected.data() + kGuard, count);
            kernel.run(source.data(), target.data() + kGuard, count);
            ASSERT_EQ(target, expected) << kernel.bits << " bits, " << count << " pixels";
        }
    }
}

}  // namespace
}  // namespace vellim
