#include "wrappers/head_reader.h"

#include <algorithm>
#include <limits>

namespace vellim {

HeadReader::~HeadReader() {
    if (taken_ != filled_) _llseek(file_, Position(), kFromStart);
}

bool HeadReader::Skip(uint32_t bytes) {
    for (uint32_t i = 0; i < bytes; i++)
        if (!Byte()) return false;
    return true;
}

bool HeadReader::Fill() {
    if (isBroken_) return false;
    position_ = Position();
    taken_ = 0;
    filled_ = 0;
    const auto reach = static_cast<uint32_t>(std::numeric_limits<int32_t>::max() - position_);
    const int32_t read = _lread(file_, piece_.data(), std::min(kPieceBytes, reach));
    isBroken_ = read < 0;
    if (read > 0) filled_ = static_cast<uint32_t>(read);
    return read > 0;
}

}  // namespace vellim
