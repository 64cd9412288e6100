// Tags changed in a passing copy of a file, which takes the file's place once all changes are made:
// the library works beside the copy, under a name that nobody else has, and no change is seen
// before the last one.
//
//     EditClaim claim;
//     if (!ClaimForEdit(path, claim, why)) ...;     // from here on the file stays as it is
//     PassingFile copy;
//     if (!CopyForEdit(path, claim, copy, why)) ...;
//     if (ChangeTag(copy, edit) != 0) ...;          // as often as needed
//     if (!CommitEdit(path, claim, copy, why)) ...; // without it nothing is left
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>

#include "handles.h"
#include "passing_file.h"
#include "tag_values.h"

namespace vellim::tool {

struct TagEdit {
    int32_t image = 0;
    uint32_t tag = 0;
    std::optional<TagValue> value;  // none: the tag is deleted
};

// A file that others keep their hands off, by the lock that the library too asks for.
struct EditClaim {
    OwnedDescriptor descriptor;
    struct stat status = {};  // of the file as it was claimed
};

// Claims the file that `path` leads to. False, with the reason in `why`, if it isn't there or
// another program has it claimed.
bool ClaimForEdit(const std::string& path, EditClaim& claim, std::string& why);

// Copies the claimed file to a passing one of the same name.
bool CopyForEdit(const std::string& path, const EditClaim& claim, PassingFile& copy,
                 std::string& why);

// Changes a tag of a passing file. 0, or the library's failure code with errno as the system left
// it, 0 if the system had nothing to say. The file is written anew each time.
int32_t ChangeTag(PassingFile& copy, const TagEdit& edit);

// Puts the copy in the file's place, unless another program has touched that in spite of the claim.
bool CommitEdit(const std::string& path, const EditClaim& claim, PassingFile& copy,
                std::string& why);

}  // namespace vellim::tool
