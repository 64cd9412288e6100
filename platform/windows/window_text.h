// The text of a dialog or a control: a memory block, since edit controls lend theirs.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/guards.h"

namespace vellim {

struct WindowText {
    OwnedBlock block;     // whoever was lent it may have freed it by now: an empty text
    bool isLent = false;  // its handle was given away since the text has had it
};

// The block keeps its handle, if it is still there. `from` may lie within it. False, and nothing
// changed, without memory.
bool SetText(WindowText& text, std::string_view from);

// As much as there is room for, and always a terminator where there is any room. Gives the length
// copied.
uint32_t CopyText(const WindowText& text, char* to, int32_t bytes);

// The handle of the block, with a terminated text in it; 0 without memory.
LocalHandle LendBlock(WindowText& text);

// Takes a block over. The one before is freed unless it was lent: it is then the borrower's. False
// for a number that is no block.
bool TakeBlock(WindowText& text, uintptr_t block);

}  // namespace vellim
