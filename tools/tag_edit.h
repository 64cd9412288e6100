// Changing a tag of an image in a file.
#pragma once

#include "commands.h"
#include "document.h"
#include "tag_rewrite.h"

namespace vellim::tool {

// Changes the file behind `document`, which was claimed before it was opened, and says what was
// changed. What would be lost on the way is told, and the file left alone unless `acceptLoss` is
// set; the tags that would then point nowhere are deleted too. All of that happens or nothing.
Outcome EditTag(const Document& document, const EditClaim& claim, const TagEdit& edit,
                bool acceptLoss);

}  // namespace vellim::tool
