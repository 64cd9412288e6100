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

#include "platform/descriptors.h"
#include "platform/full_path.h"
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
constexpr int kAlwaysFlags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
constexpr int64_t kLastPosition = std::numeric_limits<int32_t>::max();

// Share styles. Two writers that each ask not to be shared would spoil one another's file, so the
// second is refused, in other processes too. Readers are never held off, and a file system
// without locks is no obstacle.
bool ClaimForWriting(int descriptor, uint32_t style) {
    const uint32_t share = style & kShareMask;
    if (share == 0 || share == OF_SHARE_DENY_NONE) return true;
    if (Uninterrupted([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) == 0) return true;
    return errno != EWOULDBLOCK;
}

// What is left to do with a fresh descriptor; false with errno set. A file is cut to nothing only
// once it is known to be ours.
bool Prepare(int descriptor, uint32_t style, bool writes) {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) return false;
    const bool ordinary = S_ISREG(status.st_mode);
    if (!ordinary && !S_ISCHR(status.st_mode)) {
        errno = S_ISDIR(status.st_mode) ? EISDIR : ESPIPE;
        return false;
    }
    if (!ordinary) return true;
    if (writes && !ClaimForWriting(descriptor, style)) return false;
    if ((style & OF_CREATE) == 0) return true;
    return Uninterrupted([&] { return ::ftruncate(descriptor, 0); }) == 0;
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
    const int flags = accessFlags[access] | (create ? O_CREAT : 0) | kAlwaysFlags;
    const int descriptor = Uninterrupted([&] { return ::open(path, flags, kNewFileMode); });
    if (descriptor == kNoDescriptor) return kNoDescriptor;
    if (Prepare(descriptor, style, access != OF_READ)) return descriptor;
    const int reason = errno;
    ::close(descriptor);
    errno = reason;
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
