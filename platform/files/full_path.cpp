// Full paths by way of realpath (POSIX.1-2017), without memory of their own.
#include "platform/files/full_path.h"

#include <climits>
#include <cstdlib>
#include <cstring>

namespace vellim {
namespace {

// realpath writes up to PATH_MAX bytes.
static_assert(OFSTRUCT_PATH_BYTES >= PATH_MAX);

// The full path of the folder that `path` names its file in, without a slash at the end: "" for
// the root.
bool FullFolder(const char* path, const char* name, char (&full)[OFSTRUCT_PATH_BYTES]) {
    char folder[OFSTRUCT_PATH_BYTES] = ".";
    const auto length = static_cast<size_t>(name - path);
    if (length >= sizeof folder) return false;
    if (length > 0) {
        std::memcpy(folder, path, length);
        folder[length] = '\0';
    }
    if (::realpath(folder, full) == nullptr) return false;
    if (std::strcmp(full, "/") == 0) full[0] = '\0';
    return true;
}

}  // namespace

void FullPath(const char* path, char (&full)[OFSTRUCT_PATH_BYTES]) {
    if (::realpath(path, full) != nullptr) return;

    const char* slash = std::strrchr(path, '/');
    const char* name = slash != nullptr ? slash + 1 : path;
    const size_t nameBytes = std::strlen(name) + 1;
    if (FullFolder(path, name, full)) {
        const size_t folderLength = std::strlen(full);
        if (nameBytes > 1 && folderLength + 1 + nameBytes <= sizeof full) {
            full[folderLength] = '/';
            std::memcpy(full + folderLength + 1, name, nameBytes);
            return;
        }
    }
    const size_t pathBytes = std::strlen(path) + 1;
    full[0] = '\0';
    if (pathBytes <= sizeof full) std::memcpy(full, path, pathBytes);
}

}  // namespace vellim
