// Setting the calling thread's failure code from inside the library.
#pragma once

#include "vellim/failures.h"

namespace vellim {

// Stores the result of a run. A callback may have ended it with a code of its own, outside the
// library's, which SetTiffError would refuse.
void StoreFailure(uint32_t code);

// Stores `code` and gives `result`, so that a failing path is one statement.
template <typename T>
inline T Fail(TiffFailure code, T result) {
    SetTiffError(code);
    return result;
}

}  // namespace vellim
