// Text to be laid over a page, as the shade that it gives each pixel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "picture.h"

namespace vellim::tool {

struct StampText {
    std::string bytes;  // Windows-1252, CR LF between lines
    std::string font;
    int32_t pointSize = 0;
};

// `typed` with \n as line ends and \\ as backslashes, in Windows-1252. What has no place there is
// counted in `lost`.
std::string ReadStampText(std::string_view typed, size_t& lost);

// Dots an inch of a page.
struct StampDots {
    uint32_t x = 0, y = 0;
};

// A rectangle of a page that text is drawn in.
struct StampPatch {
    uint32_t x = 0, y = 0, width = 0, height = 0;
    std::vector<uint8_t> light;  // of each pixel, row by row: 255 leaves it as it is, 0 is ink
    bool cut = false;            // text runs over the page's edge
};

// The patch of text at a place of the page `picture`, with shades at the edges of letters where its
// pixels have any. Nothing, with the reason in `why`, if it can't be drawn.
std::optional<StampPatch> DrawStamp(const StampText& text, uint32_t x, uint32_t y,
                                    const Picture& picture, StampDots dots, std::string& why);

// Darkens the pixels of the page's line `y`, whose upper left pixel is the page's first.
void StampLine(const StampPatch& patch, const Picture& picture, uint32_t y, uint8_t* line);

}  // namespace vellim::tool
