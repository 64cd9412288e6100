#include "container/stream_window.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace vellim {

// A stream's positions are 31 bits wide; an offset beyond them is no place in it.
bool StreamWindow::SeekTo(uint64_t offset) const {
    return offset <= static_cast<uint64_t>(std::numeric_limits<int32_t>::max()) &&
           mSeek(stream_, static_cast<int32_t>(offset), 0) != -1;
}

// Takes `room` bytes if they come, but asks again only while `wanted` are missing, so that the
// stream's end costs no extra read.
uint32_t StreamWindow::ReadUpTo(uint8_t* to, uint32_t wanted, uint32_t room) const {
    uint32_t got = 0;
    while (got < wanted) {
        const int32_t more = mRead(stream_, to + got, static_cast<int32_t>(room - got));
        if (more < 1) break;
        got += static_cast<uint32_t>(more);
    }
    return got;
}

void StreamWindow::MoveTo(uint64_t offset, uint32_t wanted) {
    start_ = offset;
    filled_ = SeekTo(offset) ? ReadUpTo(bytes_.data(), std::min(wanted, kBytes), kBytes) : 0;
}

const uint8_t* StreamWindow::At(uint64_t offset, uint32_t wanted) {
    const std::span<const uint8_t> bytes = Peek(offset, wanted);
    return bytes.size() == wanted ? bytes.data() : nullptr;
}

bool StreamWindow::Copy(uint64_t offset, uint8_t* to, uint32_t bytes) {
    if (bytes > kBytes) return SeekTo(offset) && ReadUpTo(to, bytes, bytes) == bytes;
    const uint8_t* from = At(offset, bytes);
    if (from == nullptr) return false;
    std::memcpy(to, from, bytes);
    return true;
}

}  // namespace vellim
