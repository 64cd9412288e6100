// Texts in memory blocks. A block that came from outside may be of any size, without a terminator,
// and freed behind the text's back: what is read ends at the first zero byte or the block's end.
#include "platform/windows/window_text.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

namespace vellim {
namespace {

size_t LengthIn(const LockedBlock& locked) {
    return locked ? strnlen(locked.As<char>(), locked.Size()) : 0;
}

// A block that is no more is replaced.
bool GrowTo(WindowText& text, uint32_t bytes) {
    const LockedBlock locked(text.block.Get());
    if (locked) {
        return locked.Size() >= bytes || GlobalReAlloc(text.block.Get(), bytes, GHND) != 0;
    }
    OwnedBlock fresh(GlobalAlloc(GHND, bytes));
    if (!fresh) return false;
    text = {std::move(fresh), false};
    return true;
}

}  // namespace

// A text within the block is no longer than the block's, so that it never makes the block grow, and
// is in its place before the block shrinks.
bool SetText(WindowText& text, std::string_view from) {
    if (from.size() >= std::numeric_limits<uint32_t>::max()) return false;
    const uint32_t bytes = static_cast<uint32_t>(from.size()) + 1;
    if (!GrowTo(text, bytes)) return false;
    const LockedBlock locked(text.block.Get());
    if (!locked) return false;
    if (!from.empty()) std::memmove(locked.As<char>(), from.data(), from.size());
    locked.As<char>()[from.size()] = '\0';
    return GlobalReAlloc(text.block.Get(), bytes, GHND) != 0;
}

uint32_t CopyText(const WindowText& text, char* to, int32_t bytes) {
    if (to == nullptr || bytes <= 0) return 0;
    const LockedBlock locked(text.block.Get());
    const size_t length = std::min(LengthIn(locked), static_cast<size_t>(bytes) - 1);
    if (length != 0) std::memcpy(to, locked.As<char>(), length);
    to[length] = '\0';
    return static_cast<uint32_t>(length);
}

LocalHandle LendBlock(WindowText& text) {
    const size_t length = LengthIn(LockedBlock(text.block.Get()));
    if (length == std::numeric_limits<uint32_t>::max()) return 0;
    if (!GrowTo(text, static_cast<uint32_t>(length) + 1)) return 0;
    text.isLent = true;
    return text.block.Get();
}

bool TakeBlock(WindowText& text, uintptr_t block) {
    if (block > std::numeric_limits<LocalHandle>::max()) return false;
    const auto taken = static_cast<LocalHandle>(block);
    if (!LockedBlock(taken)) return false;
    if (text.isLent || text.block.Get() == taken) text.block.Release();
    text = {OwnedBlock(taken), false};
    return true;
}

}  // namespace vellim
