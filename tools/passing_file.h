// A file that stands beside its final name under a passing one until it is whole, so that the name
// never means half a file, and what was there before stays until it is replaced. A signal that ends
// the process takes the passing file with it.
//
// A file that is to be replaced by itself and more is locked (flock) meanwhile, as the library
// locks what it writes to: of several that append to it, each begins with what the one before left.
#pragma once

#include <sys/stat.h>

#include <string>

#include "handles.h"

namespace vellim::tool {

// What becomes of a file that is there already.
enum class Overwrite {
    Refuse,  // it stays, and nothing is written
    Allow,   // it is replaced
    Append   // it is replaced by itself and more
};

struct PassingFile {
    std::string path;       // its final name
    std::string temporary;  // its name until then; empty: there is nothing to take away
    OwnedDescriptor descriptor;
    bool replaces = false;      // a file of the final name may be there
    struct stat replaced = {};  // of the file that was there; st_mode 0 if none was
    OwnedDescriptor claim;      // Overwrite::Append: that file, locked, for reading

    PassingFile() = default;
    ~PassingFile();  // without Settle nothing is left
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;
};

// Whether `path` is written by passing files: false for what is there and no regular file (a pipe,
// a device), and for "-".
bool IsPlace(const std::string& path);

// Whether `mode` allows to write `path`; if not, the reason is in `why`. Streams and devices are
// never overwritten. A file that its user may not write to is not replaced either, although whoever
// may write in its folder could.
bool MayWrite(const std::string& path, Overwrite mode, std::string& why);

// Creates the passing file of `path`, for reading and writing. Of a link, the file that it leads to
// is meant, be it there or not. To append to a file that another program has locked, waits some
// seconds. False, with the reason in `why`, if it can't be.
bool CreatePassingFile(const std::string& path, Overwrite mode, PassingFile& file,
                       std::string& why);

// Creates a passing file in the folder for temporary files, which never gets another name.
bool CreateScratchFile(PassingFile& file, std::string& why);

// A file without a name, for reading and writing: on disk, or in memory where no folder takes it.
// Nothing, with the reason in `why`, if there can be none.
OwnedDescriptor CreateNamelessFile(std::string& why);

// Such a file that holds what comes from `descriptor`. Nothing, with the reason in `why`, if it
// can't be written.
OwnedDescriptor SpoolBytes(int descriptor, std::string& why);

// Copies all bytes of `from`, from its start, to where `to` stands. False with the reason in `why`.
bool CopyBytes(int from, int to, std::string& why);

// Flushes the file to disk and gives it its name, with the permissions and, where the system lets
// it, the owner of the file that was there. A file that came up or was changed meanwhile stays:
// where none was found at first, and for Overwrite::Append. False with the reason in `why`.
bool Settle(PassingFile& file, std::string& why);

}  // namespace vellim::tool
