// Files: handles over POSIX descriptors.
//
// A handle names an entry of a table and is never the descriptor itself, which may be 0 and is used
// again at once. Positions are told in 31 bits; a file may be longer, but what lies beyond can't be
// reached.
//
// Reading and writing is for ordinary files and for devices such as /dev/null. A folder, a pipe and
// a socket are refused when they are opened: none can be sought in, and opening a pipe would wait
// for its other end.

// Long files can be opened by a 32-bit build too.
#define _FILE_OFFSET_BITS 64

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>

#include "platform/files/descriptors.h"
#include "platform/files/full_path.h"
#include "platform/handle_table.h"
#include "vellim/platform.h"

namespace vellim {
namespace {

struct OpenDescriptor {
    std::atomic<int> descriptor{-1};
};

using FileTable = HandleTable<OpenDescriptor, HandleKind::kFile>;
constinit FileTable files;

constexpr int32_t kFailed = -1;
constexpr int32_t kExists = 1;  // below every handle
constexpr uint32_t kAccessMask = 0x3;
constexpr uint32_t kShareMask = 0x70;
constexpr mode_t kNewFileMode = 0666;  // less the process's umask
constexpr int kOpenAttempts = 16;
constexpr int kAlwaysFlags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr int64_t kLastPosition = std::numeric_limits<int32_t>::max();

FileIdentity IdentityIn(const struct stat& status) {
    return {.Device = status.st_dev, .Inode = status.st_ino};
}

bool Claim(int descriptor) {
    if (Uninterrupted([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) == 0) return true;
    return errno != EWOULDBLOCK;
}

// Share styles. Two writers that each ask not to be shared would spoil one another's file, so the
// second is refused, in other processes too. Readers are never held off.
bool AsksForClaim(uint32_t style) {
    const uint32_t share = style & kShareMask;
    return share != 0 && share != OF_SHARE_DENY_NONE;
}

enum class Prepared { Ready, Failed, Replaced };

// What is left to do with a fresh descriptor; Failed with errno set. A file is cut to nothing only
// once it is known to be ours, and still the one that the path leads to: whoever had it claimed
// before may have put another in its place.
Prepared Prepare(int descriptor, const char* path, uint32_t style, bool writes) {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) return Prepared::Failed;
    const bool ordinary = S_ISREG(status.st_mode);
    if (!ordinary && !S_ISCHR(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : ESPIPE;
        return Prepared::Failed;
    }
    if (!ordinary) return Prepared::Ready;
    if (writes && AsksForClaim(style)) {
        if (!Claim(descriptor)) return Prepared::Failed;
        if (IdentityOf(path) != IdentityIn(status)) return Prepared::Replaced;
    }
    if ((style & OF_CREATE) == 0) return Prepared::Ready;
    const bool cut = Uninterrupted([&] { return ::ftruncate(descriptor, 0); }) == 0;
    return cut ? Prepared::Ready : Prepared::Failed;
}

// A descriptor, or kNoDescriptor with errno set. A file that is made can be written whatever the
// access: asked for with OF_READ, it is open for both.
int OpenDescriptorFor(const char* path, uint32_t style) {
    constexpr int accessFlags[] = {O_RDONLY, O_WRONLY, O_RDWR};
    const bool create = (style & OF_CREATE) != 0;
    uint32_t access = style & kAccessMask;
    if (create && access == OF_READ) access = OF_READWRITE;
    if (path == nullptr || access >= std::size(accessFlags)) {
        errno = EINVAL;
        return kNoDescriptor;
    }
    const int makes = !create ? 0 : (style & kMustBeNew) != 0 ? O_CREAT | O_EXCL : O_CREAT;
    const int flags = accessFlags[access] | makes | kAlwaysFlags;
    for (int attempt = 0; attempt < kOpenAttempts; attempt++) {
        const int descriptor = Uninterrupted([&] { return ::open(path, flags, kNewFileMode); });
        if (descriptor == kNoDescriptor) return kNoDescriptor;
        const Prepared prepared = Prepare(descriptor, path, style, access != OF_READ);
        if (prepared == Prepared::Ready) return descriptor;
        const int reason = prepared == Prepared::Replaced ? EBUSY : errno;
        ::close(descriptor);
        errno = reason;
        if (prepared == Prepared::Failed) break;
    }
    return kNoDescriptor;
}

// A question makes nothing and cuts nothing, whatever else the style asks for.
int32_t AskForExistence(const char* path, uint32_t style) {
    const int descriptor = OpenDescriptorFor(path, style & kAccessMask);
    if (descriptor == kNoDescriptor) return kFailed;
    ::close(descriptor);
    return kExists;
}

int32_t OpenByStyle(const char* path, uint32_t style) {
    if ((style & OF_EXIST) != 0) return AskForExistence(path, style);
    const int descriptor = OpenDescriptorFor(path, style);
    return descriptor != kNoDescriptor ? RegisterDescriptor(descriptor) : kFailed;
}

// Moves `bytes` bytes by `move(done, left)`, which gives what one system call moved. What was moved
// before a failure counts; a failure at the first byte is -1.
template <typename Move>
int32_t MoveAll(uint32_t bytes, Move move) {
    const auto wanted = static_cast<size_t>(std::min<int64_t>(bytes, kLastPosition));
    size_t done = 0;
    while (done < wanted) {
        const ssize_t moved = Uninterrupted([&] { return move(done, wanted - done); });
        if (moved < 0 && done == 0) return kFailed;
        if (moved <= 0) break;
        done += static_cast<size_t>(moved);
    }
    return static_cast<int32_t>(done);
}

// Where an origin's offsets count from, or -1.
int64_t SeekBase(int descriptor, int32_t origin) {
    constexpr int32_t fromStart = 0, fromPosition = 1, fromEnd = 2;
    if (origin == fromStart) return 0;
    if (origin == fromPosition) return ::lseek(descriptor, 0, SEEK_CUR);
    struct stat status = {};
    if (origin != fromEnd || ::fstat(descriptor, &status) != 0) return kFailed;
    return status.st_size;
}

}  // namespace

int DescriptorOf(int32_t file) {
    const OpenDescriptor* found = files.Find(static_cast<uint32_t>(file));
    return found != nullptr ? found->descriptor.load(std::memory_order_relaxed) : kNoDescriptor;
}

FileIdentity IdentityOf(int32_t file) {
    struct stat status = {};
    const int descriptor = DescriptorOf(file);
    const bool known = descriptor != kNoDescriptor && ::fstat(descriptor, &status) == 0;
    return known ? IdentityIn(status) : FileIdentity{};
}

FileIdentity IdentityOf(const char* path) {
    struct stat status = {};
    return ::stat(path, &status) == 0 ? IdentityIn(status) : FileIdentity{};
}

bool ClaimFile(int32_t file) {
    const int descriptor = DescriptorOf(file);
    return descriptor != kNoDescriptor && Claim(descriptor);
}

int32_t FileBytes(int32_t file) {
    struct stat status = {};
    const int descriptor = DescriptorOf(file);
    if (descriptor == kNoDescriptor || ::fstat(descriptor, &status) != 0) return kFailed;
    return status.st_size <= kLastPosition ? static_cast<int32_t>(status.st_size) : kFailed;
}

int32_t RegisterDescriptor(int descriptor) {
    const FileTable::Place place = files.Reserve();
    if (place.handle == 0) {
        ::close(descriptor);
        errno = EMFILE;
        return kFailed;
    }
    place.entry->descriptor.store(descriptor, std::memory_order_relaxed);
    files.Publish(place.handle);
    return static_cast<int32_t>(place.handle);
}

}  // namespace vellim

int32_t OpenFile(const char* path, OFSTRUCT* info, uint32_t style) {
    const int32_t file = vellim::OpenByStyle(path, style);
    const int reason = errno;
    if (info == nullptr) return file;
    info->cBytes = sizeof(OFSTRUCT);
    info->nErrCode = file == vellim::kFailed ? static_cast<uint32_t>(reason) : 0;
    info->szPathName[0] = '\0';
    if (path != nullptr) vellim::FullPath(path, info->szPathName);
    return file;
}

int32_t _lopen(const char* path, int32_t style) {
    const auto bits = static_cast<uint32_t>(style);
    return vellim::OpenByStyle(path, bits & (vellim::kAccessMask | vellim::kShareMask));
}

int32_t _lread(int32_t file, void* buffer, uint32_t bytes) {
    const int descriptor = vellim::DescriptorOf(file);
    if (descriptor == vellim::kNoDescriptor || (buffer == nullptr && bytes > 0)) {
        return vellim::kFailed;
    }
    auto* to = static_cast<uint8_t*>(buffer);
    return vellim::MoveAll(
        bytes, [&](size_t done, size_t left) { return ::read(descriptor, to + done, left); });
}

int32_t _lwrite(int32_t file, const void* buffer, uint32_t bytes) {
    const int descriptor = vellim::DescriptorOf(file);
    if (descriptor == vellim::kNoDescriptor || (buffer == nullptr && bytes > 0)) {
        return vellim::kFailed;
    }
    const auto* from = static_cast<const uint8_t*>(buffer);
    return vellim::MoveAll(
        bytes, [&](size_t done, size_t left) { return ::write(descriptor, from + done, left); });
}

int32_t _llseek(int32_t file, int32_t offset, int32_t origin) {
    const int descriptor = vellim::DescriptorOf(file);
    if (descriptor == vellim::kNoDescriptor) return vellim::kFailed;
    const int64_t base = vellim::SeekBase(descriptor, origin);
    if (base < 0) return vellim::kFailed;
    const int64_t target = base + offset;
    if (target < 0 || target > vellim::kLastPosition) return vellim::kFailed;
    return static_cast<int32_t>(::lseek(descriptor, static_cast<off_t>(target), SEEK_SET));
}

// A handle is gone after this whatever the result; -1 for one that was open tells that the system
// couldn't bring the last bytes to the disk.
int32_t _lclose(int32_t file) {
    const auto handle = static_cast<uint32_t>(file);
    const vellim::OpenDescriptor* found = vellim::files.Find(handle);
    if (found == nullptr) return vellim::kFailed;
    const int descriptor = found->descriptor.load(std::memory_order_relaxed);
    if (!vellim::files.Withdraw(handle)) return vellim::kFailed;
    const bool closed = ::close(descriptor) == 0 || errno == EINTR;
    vellim::files.Recycle(handle);
    return closed ? 0 : vellim::kFailed;
}

int32_t DeleteFileA(const char* path) {
    return path != nullptr && ::unlink(path) == 0 ? 1 : 0;
}

// A target that exists is never replaced. Where the file system can't see to that itself there is a
// moment between the look and the move.
int32_t MoveFileA(const char* from, const char* to) {
    if (from == nullptr || to == nullptr) return 0;
#if defined(RENAME_NOREPLACE)
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 1;
    if (errno != EINVAL && errno != ENOSYS) return 0;
#endif
    struct stat status = {};
    if (::lstat(to, &status) == 0 || errno != ENOENT) return 0;
    return ::rename(from, to) == 0 ? 1 : 0;
}

int32_t SetHandleCount(int32_t count) {
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
    const auto wanted = static_cast<rlim_t>(std::max(count, 0));
    if (wanted > limit.rlim_cur) {
        rlimit raised = limit;
        raised.rlim_cur = std::min(wanted, limit.rlim_max);
        if (::setrlimit(RLIMIT_NOFILE, &raised) == 0) limit = raised;
    }
    const rlim_t most = vellim::FileTable::kMaxEntries;
    return static_cast<int32_t>(std::min(limit.rlim_cur, most));
}
