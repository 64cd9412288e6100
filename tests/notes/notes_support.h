// Notes made and looked at.
#pragma once

#include <array>
#include <cstring>
#include <string>

#include "platform/guards.h"
#include "support/shown_colors.h"
#include "vellim/notes.h"
#include "vellim/text.h"

namespace vellim::test {

using Box = std::array<int32_t, 4>;

inline Box BoxOf(const NoteRecord& note) {
    return {note.Left, note.Top, note.Right, note.Bottom};
}

// The font that contexts begin with is made once.
inline std::vector<uint32_t> LiveWithFont() {
    GetStockObject(SYSTEM_FONT);
    return Live();
}

// A block of exactly these bytes.
inline OwnedBlock BlockOf(const std::string& bytes) {
    OwnedBlock block(GlobalAlloc(GHND, static_cast<uint32_t>(bytes.size())));
    const LockedBlock locked(block.Get());
    std::memcpy(locked.As<char>(), bytes.data(), bytes.size());
    return block;
}

inline std::string TextOf(GlobalHandle block) {
    const LockedBlock locked(block);
    return locked ? std::string(locked.As<char>(), locked.Size()) : std::string();
}

}  // namespace vellim::test
