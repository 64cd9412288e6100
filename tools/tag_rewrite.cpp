// The library names its unfinished file after the one that it edits, with "~~~" for the ending.
// That of a passing file is therefore as much the process's own as the passing file is, and is
// taken away here when an edit fails. Signals wait for the end of an edit, since the handler that
// removes passing files doesn't know of the other one.
#include "tag_rewrite.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

#include "vellim/edit.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

constexpr int kClaimAttempts = 16;
constexpr const char* kUnfinishedEnding = "~~~";

class HeldSignals {
  public:
    HeldSignals() {
        sigset_t held;
        sigemptyset(&held);
        for (const int signal : {SIGINT, SIGTERM, SIGHUP})
            sigaddset(&held, signal);
        pthread_sigmask(SIG_BLOCK, &held, &before_);
    }
    ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

  private:
    sigset_t before_{};
};

bool IsSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Whether `status` and `path` tell of one file, as it is now.
bool StillNames(const std::string& path, const struct stat& status) {
    struct stat now = {};
    return stat(path.c_str(), &now) == 0 && IsSameFile(now, status) &&
           now.st_size == status.st_size && now.st_mtim.tv_sec == status.st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == status.st_mtim.tv_nsec;
}

// A path that the library takes for the passing file.
std::string PathForLibrary(const PassingFile& copy) {
    if (copy.temporary.size() < TIFF_PATH_BYTES) return copy.temporary;
    return "/proc/self/fd/" + std::to_string(copy.descriptor.Get());
}

bool CallLibrary(const std::string& path, const TagEdit& edit) {
    if (!edit.value) return DeleteTiffTagOfImage(path.c_str(), edit.image, edit.tag) != 0;
    return AddTiffTagToImage(path.c_str(), edit.image, edit.tag, edit.value->type,
                             edit.value->bytes.data(), edit.value->count) != 0;
}

}  // namespace

// Whoever held the lock before may have put another file in the place of the one that was opened:
// the path is looked at again under the lock. A file system without locks is no obstacle.
bool ClaimForEdit(const std::string& path, EditClaim& claim, std::string& why) {
    for (int attempt = 0; attempt < kClaimAttempts; ++attempt) {
        claim.descriptor.Reset(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
        const int descriptor = claim.descriptor.Get();
        if (!claim.descriptor || fstat(descriptor, &claim.status) != 0) {
            why = std::strerror(errno);
            return false;
        }
        if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) break;
        if (fstat(descriptor, &claim.status) == 0 && StillNames(path, claim.status)) return true;
    }
    why = "it is being written to by another program";
    return false;
}

bool CopyForEdit(const std::string& path, const EditClaim& claim, PassingFile& copy,
                 std::string& why) {
    return CreatePassingFile(path, Overwrite::Allow, copy, why) &&
           CopyBytes(claim.descriptor.Get(), copy.descriptor.Get(), why);
}

// A changed file is a new one under the old name, so that it is opened again.
int32_t ChangeTag(PassingFile& copy, const TagEdit& edit) {
    const HeldSignals held;
    errno = 0;
    if (!CallLibrary(PathForLibrary(copy), edit)) {
        const int error = errno;
        const int32_t code = TiffError();
        std::error_code ignored;
        std::filesystem::remove(
            std::filesystem::path(copy.temporary).replace_extension(kUnfinishedEnding), ignored);
        errno = error;
        return code;
    }
    copy.descriptor.Reset(open(copy.temporary.c_str(), O_RDWR | O_CLOEXEC));
    return copy.descriptor ? int32_t{TIFF_SUCCESS} : int32_t{TIFF_IO_ERROR};
}

bool CommitEdit(const std::string& path, const EditClaim& claim, PassingFile& copy,
                std::string& why) {
    if (StillNames(path, claim.status)) return Settle(copy, why);
    why = "another program has changed it meanwhile";
    return false;
}

}  // namespace vellim::tool
