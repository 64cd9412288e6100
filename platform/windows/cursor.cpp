// Cursors: two of them, by name, and the one that each thread shows.
#include <utility>

#include "platform/handle_table.h"
#include "platform/windows/desktop.h"
#include "vellim/platform.h"

namespace vellim {
namespace {

constexpr CursorHandle CursorOf(uint32_t name) {
    return (static_cast<uint32_t>(HandleKind::kCursor) << kHandleKindShift) | name;
}

constexpr CursorHandle kNoCursor = 0;
constexpr CursorHandle kArrow = CursorOf(IDC_ARROW);
constexpr CursorHandle kWait = CursorOf(IDC_WAIT);

// A thread begins with the arrow, so that what is put back after a wait is a cursor that can be
// seen.
thread_local CursorHandle current = kArrow;

}  // namespace
}  // namespace vellim

CursorHandle LoadCursorA(uint32_t module, uintptr_t name) {
    if (module != 0) return 0;
    if (name == IDC_ARROW) return vellim::kArrow;
    return name == IDC_WAIT ? vellim::kWait : 0;
}

// 0 takes the cursor off the screen. A number that is no cursor gives 0 and changes nothing.
CursorHandle SetCursor(CursorHandle cursor) {
    using vellim::current;
    const bool known =
        cursor == vellim::kNoCursor || cursor == vellim::kArrow || cursor == vellim::kWait;
    if (!known) return 0;
    const CursorHandle before = std::exchange(current, cursor);
    const DesktopDriver desktop = vellim::CurrentDesktop();
    if (desktop.ShowCursor != nullptr) desktop.ShowCursor(cursor);
    return before;
}
