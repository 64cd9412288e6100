// Message boxes: the desktop's, or a line on standard error where there is none.
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iterator>

#include "platform/windows/desktop.h"
#include "vellim/platform.h"

namespace vellim {
namespace {

iovec Piece(const char* text) {
    // writev only reads, but its record is made for reading into as well.
    return {const_cast<char*>(text), std::strlen(text)};  // NOLINT(*-const-cast)
}

// One system call, so that the lines of several threads don't mix. A message that can't be written
// is lost: there is nobody to tell.
void WriteLine(const char* caption, const char* text) {
    const iovec pieces[] = {Piece(caption), Piece(": "), Piece(text), Piece("\n")};
    while (::writev(STDERR_FILENO, pieces, std::size(pieces)) == -1 && errno == EINTR) {
    }
}

}  // namespace
}  // namespace vellim

int32_t MessageBoxA(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    const char* shownText = text != nullptr ? text : "";
    const char* shownCaption = caption != nullptr ? caption : "";
    const DesktopDriver desktop = vellim::CurrentDesktop();
    if (desktop.MessageBox != nullptr) {
        return desktop.MessageBox(owner, shownText, shownCaption, style);
    }
    vellim::WriteLine(shownCaption, shownText);
    return IDOK;
}
