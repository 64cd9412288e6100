// A replacement is written beside its original under a name that others may want at the same time.
// The name is theirs who hold an advisory lock on the file behind it (flock), from before the file
// is cut to nothing until after it was renamed. Since the holder renames it, a lock alone says
// nothing: one who waited at the door may have opened what by now is the original. So the name is
// looked at again under the lock.
//
// rename (POSIX.1-2017) replaces the old file in one step. What it puts there must be on the disk
// by then, or a power cut could leave the new name with none of the bytes.

// Long files can be opened by a 32-bit build too.
#define _FILE_OFFSET_BITS 64

#include "platform/files/file_replacement.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <utility>

#include "platform/files/descriptors.h"
#include "vellim/platform.h"

namespace vellim {
namespace {

constexpr int32_t kFailed = -1;
constexpr int kLockAttempts = 16;
constexpr mode_t kUnfinishedMode = S_IRUSR | S_IWUSR;  // it may hold what others mustn't read
constexpr mode_t kPermissions = S_IRWXU | S_IRWXG | S_IRWXO;

class Descriptor {
  public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (*this) ::close(descriptor_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    explicit operator bool() const { return descriptor_ != kNoDescriptor; }
    [[nodiscard]] int Get() const { return descriptor_; }
    int Release() { return std::exchange(descriptor_, kNoDescriptor); }

  private:
    int descriptor_;
};

bool SameInode(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Whether `path` itself, and not a link under that name, is the open file.
bool Names(const char* path, int descriptor) {
    struct stat named = {}, open = {};
    return ::lstat(path, &named) == 0 && ::fstat(descriptor, &open) == 0 && SameInode(named, open);
}

int OpenTemporary(const char* path) {
    constexpr int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    return Uninterrupted([&] { return ::open(path, flags, kUnfinishedMode); });
}

// A file system without locks is no obstacle.
bool Lock(int descriptor) {
    if (Uninterrupted([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) == 0) return true;
    return errno != EWOULDBLOCK;
}

// With the lock held and the name checked: emptied, and closed to others until it is finished.
bool Clear(int descriptor, const char* original) {
    struct stat old = {}, open = {};
    if (::stat(original, &old) != 0 || ::fstat(descriptor, &open) != 0) return false;
    if (!S_ISREG(old.st_mode) || !S_ISREG(open.st_mode) || SameInode(old, open)) return false;
    if (Uninterrupted([&] { return ::ftruncate(descriptor, 0); }) != 0) return false;
    ::fchmod(descriptor, kUnfinishedMode);
    return true;
}

// Who may write to a folder may not be who owns a file in it: the owner is kept where that is
// granted, else the group. A program that ran as the old ones mustn't run as the new.
void TakeOwnerAndMode(int descriptor, const struct stat& old) {
    constexpr auto keep = static_cast<uid_t>(-1);
    const bool owner = ::fchown(descriptor, old.st_uid, old.st_gid) == 0;
    const bool group = owner || ::fchown(descriptor, keep, old.st_gid) == 0;
    mode_t kept = kPermissions | S_ISVTX;
    if (owner) kept |= S_ISUID;
    if (group) kept |= S_ISGID;
    ::fchmod(descriptor, old.st_mode & kept);
}

// The name's own way to the disk. Where a folder can't be synced, a power cut may bring the old
// file back; it is whole.
void SyncFolderOf(const char* path) {
    char folder[OFSTRUCT_PATH_BYTES] = ".";
    const char* slash = std::strrchr(path, '/');
    const size_t length = slash != nullptr ? static_cast<size_t>(slash - path) + 1 : 0;
    if (length >= sizeof folder) return;
    if (length > 0) {
        std::memcpy(folder, path, length);
        folder[length] = '\0';
    }
    const Descriptor opened(::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) Uninterrupted([&] { return ::fsync(opened.Get()); });
}

}  // namespace

int32_t CreateReplacement(const char* original, const char* temporary) {
    for (int attempt = 0; attempt < kLockAttempts; attempt++) {
        Descriptor opened(OpenTemporary(temporary));
        if (!opened || !Lock(opened.Get())) return kFailed;
        // The holder before has just put this very file in its original's place.
        if (!Names(temporary, opened.Get())) continue;
        return Clear(opened.Get(), original) ? RegisterDescriptor(opened.Release()) : kFailed;
    }
    return kFailed;
}

bool CommitReplacement(int32_t file, const char* temporary, const char* original) {
    const int descriptor = DescriptorOf(file);
    struct stat old = {};
    if (descriptor == kNoDescriptor || !Names(temporary, descriptor)) return false;
    if (::stat(original, &old) != 0 || !S_ISREG(old.st_mode)) return false;
    TakeOwnerAndMode(descriptor, old);
    const bool done = Uninterrupted([&] { return ::fsync(descriptor); }) == 0 &&
                      ::rename(temporary, original) == 0;
    if (!done) {
        ::fchmod(descriptor, kUnfinishedMode);  // so that a later attempt can open it
        return false;
    }
    SyncFolderOf(original);
    SyncFolderOf(temporary);
    return true;
}

bool SameFile(const char* a, const char* b) {
    struct stat first = {}, second = {};
    return ::stat(a, &first) == 0 && ::stat(b, &second) == 0 && SameInode(first, second);
}

}  // namespace vellim
