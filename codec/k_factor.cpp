#include "codec/k_factor.h"

#include <atomic>

#include "vellim/encode.h"

namespace vellim {
namespace {

constexpr int32_t kLeastKFactor = 2;
constinit std::atomic<int32_t> kFactor = kLeastKFactor;

}  // namespace

uint32_t KFactor() {
    return static_cast<uint32_t>(kFactor.load(std::memory_order_relaxed));
}

}  // namespace vellim

using namespace vellim;

int32_t SetKfactor(int32_t k) {
    if (k < kLeastKFactor) return 0;
    kFactor.store(k, std::memory_order_relaxed);
    return 1;
}
