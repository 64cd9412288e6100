#include "wrappers/picture_starts.h"

#include <algorithm>
#include <array>

namespace vellim {
namespace {

struct Start {
    StreamHandle file = 0;  // 0: free
    int32_t position = -1;
};

// The latest first.
thread_local std::array<Start, 16> starts;

}  // namespace

int32_t TakePictureStart(StreamHandle file) {
    auto* const found = std::find_if(starts.begin(), starts.end(),
                                     [file](const Start& start) { return start.file == file; });
    if (file == 0 || found == starts.end()) return -1;
    const int32_t position = found->position;
    std::copy(found + 1, starts.end(), found);
    starts.back() = {};
    return position;
}

void RememberPictureStart(StreamHandle file, int32_t position) {
    TakePictureStart(file);
    std::copy_backward(starts.begin(), starts.end() - 1, starts.end());
    starts.front() = {.file = file, .position = position};
}

}  // namespace vellim
