// Text brought to what the library's page maker draws: bytes 32 to 126 and tabs.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vellim::tool {

struct FaxText {
    std::string text;     // bytes 32 to 126, tabs, line feeds, form feeds
    size_t replaced = 0;  // characters that became "?"
    bool isUtf8 = true;   // else it was read as Windows-1252
};

// Lines may end with LF, CR LF or CR. Letters lose their accents, signs are written out or become
// the nearest that there is, characters without a look of their own go. Where a character takes
// more than one column, columns behind it move.
FaxText PrepareFaxText(std::string_view bytes);

}  // namespace vellim::tool
