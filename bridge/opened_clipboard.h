// The clipboard, open for no window, closed at the end of the scope.
#pragma once

#include "vellim/windows.h"

namespace vellim {

class OpenedClipboard {
  public:
    OpenedClipboard() : isOpen_(OpenClipboard(0) != 0) {}
    ~OpenedClipboard() {
        if (isOpen_) CloseClipboard();
    }
    OpenedClipboard(const OpenedClipboard&) = delete;
    OpenedClipboard& operator=(const OpenedClipboard&) = delete;

    explicit operator bool() const { return isOpen_; }

  private:
    bool isOpen_;
};

}  // namespace vellim
