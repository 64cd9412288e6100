// The clipboard: one bitmap of the process, which one thread at a time opens.
#include "platform/windows/clipboard.h"

#include <mutex>
#include <utility>

#include "platform/graphics/graphics_objects.h"
#include "platform/windows/windows.h"

namespace vellim {
namespace {

// A thread, by the address of its own. One that ends leaves the clipboard closed.
struct ClipboardThread {
    ~ClipboardThread();
};
thread_local ClipboardThread thisThread;

constinit std::mutex clipboardMutex;

// With the mutex held.
constinit const ClipboardThread* openedBy = nullptr;  // null while closed
constinit WindowHandle openFor = 0;
constinit BitmapHandle held = 0;

ClipboardThread::~ClipboardThread() {
    const std::scoped_lock lock(clipboardMutex);
    if (openedBy == this) openedBy = nullptr;
}

bool IsOpenHere() {
    return openedBy == &thisThread;
}

// The system's own bitmaps can't be given away.
bool CanBeHeld(GraphicsHandle data) {
    const GraphicsObject object = FindObject(data);
    return object.kind == ObjectKind::Bitmap && !object.isSystems;
}

void Hold(BitmapHandle bitmap) {
    const BitmapHandle before = std::exchange(held, bitmap);
    if (before != bitmap) DeleteObject(before);
}

}  // namespace

void CloseClipboardOf(WindowHandle window) {
    const std::scoped_lock lock(clipboardMutex);
    if (openFor == window) openedBy = nullptr;
}

}  // namespace vellim

using namespace vellim;

int32_t OpenClipboard(WindowHandle window) {
    if (window != 0 && FindWindow(window) == nullptr) return 0;
    const std::scoped_lock lock(clipboardMutex);
    if (openedBy != nullptr && !(IsOpenHere() && openFor == window)) return 0;
    openedBy = &thisThread;
    openFor = window;
    return 1;
}

int32_t CloseClipboard() {
    const std::scoped_lock lock(clipboardMutex);
    if (!IsOpenHere()) return 0;
    openedBy = nullptr;
    return 1;
}

int32_t EmptyClipboard() {
    const std::scoped_lock lock(clipboardMutex);
    if (!IsOpenHere()) return 0;
    Hold(0);
    return 1;
}

GraphicsHandle SetClipboardData(uint32_t format, GraphicsHandle data) {
    const std::scoped_lock lock(clipboardMutex);
    if (!IsOpenHere() || format != CF_BITMAP || !CanBeHeld(data)) return 0;
    Hold(data);
    return data;
}

GraphicsHandle GetClipboardData(uint32_t format) {
    const std::scoped_lock lock(clipboardMutex);
    return IsOpenHere() && format == CF_BITMAP && CanBeHeld(held) ? held : 0;
}

int32_t IsClipboardFormatAvailable(uint32_t format) {
    const std::scoped_lock lock(clipboardMutex);
    return format == CF_BITMAP && CanBeHeld(held) ? 1 : 0;
}
