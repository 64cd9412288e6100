// Changing a tag of an image in a file.
#pragma once

#include <cstdint>
#include <optional>

#include "commands.h"
#include "document.h"
#include "tag_values.h"

namespace vellim::tool {

struct TagEdit {
    int32_t image = 0;
    uint32_t tag = 0;
    std::optional<TagValue> value;  // none: the tag is deleted
};

// Changes the file behind `document`, and says what was changed. What would be lost on the way is
// told, and the file left alone unless `acceptLoss` is set; the tags that would then point nowhere
// are deleted too.
Outcome EditTag(const Document& document, const TagEdit& edit, bool acceptLoss);

}  // namespace vellim::tool
