// Pages of unequal resolutions brought to their true shape, line by line.
#pragma once

#include <optional>

#include "image_facts.h"
#include "picture.h"

namespace vellim::tool {

// `picture` with the size, and the resolution on both axes, that it has when its axis of lower
// resolution is drawn out to the other's: a fax of 1728 x 1100 at 204 x 98 becomes one of
// 1728 x 2290. Nothing if the resolutions differ more than any scanner's do (16 times).
std::optional<Picture> Squared(const Picture& picture, const Resolution& resolution);

// The type of pixel that ScaleLines works on: bilevel pages and 8-bit grey stay as they are, other
// grey becomes 8-bit grey, and palettes of more than one bit become RGB.
PixelType ScalableType(PixelType type);

// A stage that draws lines of size and type `from` (a ScalableType) out to `width` x `height`, each
// at least as large, and gives them to `next`. Of the work, two lines are held at most.
//
// Pixels of one bit are repeated, each line and column as often as the ratio says, so that strokes
// stay as sharp as they were scanned. Grey and colour are interpolated between the centres of
// neighbouring pixels.
LineSink ScaleLines(const Picture& from, uint32_t width, uint32_t height, LineSink next);

}  // namespace vellim::tool
