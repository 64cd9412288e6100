#include "passing_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <thread>
#include <vector>

#include "vellim/platform.h"

namespace vellim::tool {
namespace {

constexpr mode_t kNewFileMode = 0666;  // less the process's mask
constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kPermissionBits = 0777;
constexpr size_t kCopyBytes = 256UL << 10U;
constexpr int kMostTries = 100;  // against names that a process of the same number left behind
constexpr int kMostLinks = 40;   // in a row, as the system itself follows them
constexpr auto kPatience = std::chrono::seconds(10);
constexpr auto kPause = std::chrono::milliseconds(20);

// The names for the signal handler, which may touch nothing that is being changed. More files than
// these at once have to be taken away by hand after a signal.
constexpr size_t kWatchedFiles = 16;
std::array<std::atomic<const char*>, kWatchedFiles> watched{};

void RemoveAndEnd(int signal) {
    for (const auto& name : watched) {
        const char* path = name.load();
        if (path != nullptr) unlink(path);
    }
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void WatchSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (std::signal(signal, RemoveAndEnd) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

void Watch(const char* name) {
    for (auto& place : watched) {
        const char* none = nullptr;
        if (place.compare_exchange_strong(none, name)) break;
    }
    WatchSignals();
}

void Unwatch(const char* name) {
    for (auto& place : watched) {
        const char* expected = name;
        place.compare_exchange_strong(expected, nullptr);
    }
}

bool Fail(std::string& why) {
    why = std::strerror(errno);
    return false;
}

bool OpenNew(const std::filesystem::path& folder, mode_t mode, PassingFile& file,
             std::string& why) {
    static int count = 0;
    for (int tries = 0; tries < kMostTries; ++tries) {
        const std::string name =
            ".vellim-" + std::to_string(getpid()) + "-" + std::to_string(count++) + ".tmp";
        file.temporary = folder / name;
        file.descriptor.Reset(
            open(file.temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (file.descriptor || errno != EEXIST) break;
    }
    if (!file.descriptor) {
        file.temporary.clear();
        return Fail(why);
    }
    Watch(file.temporary.c_str());
    return true;
}

// A file system without owners or permissions has none to keep, and only the system's own user may
// give files away: neither is an obstacle.
void TakeOver(int descriptor, const struct stat& replaced) {
    if (fchown(descriptor, replaced.st_uid, replaced.st_gid) != 0) errno = 0;
    if (fchmod(descriptor, replaced.st_mode & kPermissionBits) != 0) errno = 0;
}

bool IsFile(const std::string& path, struct stat& status) {
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool IsUnchanged(const struct stat& before, const std::string& path) {
    struct stat now = {};
    return IsFile(path, now) && now.st_dev == before.st_dev && now.st_ino == before.st_ino &&
           now.st_size == before.st_size && now.st_mtim.tv_sec == before.st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
}

// Whether `path` is a link to a file that isn't there.
bool DanglesFrom(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_symlink(std::filesystem::symlink_status(path, error)) &&
           !std::filesystem::exists(path, error);
}

// The name that is to be written: behind all links, also where the last leads to nothing yet.
std::string FinalName(const std::string& path) {
    std::error_code error;
    auto target = std::filesystem::canonical(path, error);
    if (!error) return target;
    target = path;
    for (int links = 0; links < kMostLinks; ++links) {
        const auto next = std::filesystem::read_symlink(target, error);
        if (error) return target;
        target = target.parent_path() / next;
    }
    return path;
}

enum class Claimed { Yes, NoFile, Busy, Failed };

// Whoever had the lock before may have put another file in the place of the one that was opened, so
// that the path is looked at again under the lock. A file system without locks is no obstacle.
Claimed TryClaim(const std::string& path, PassingFile& file) {
    file.claim.Reset(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!file.claim) return errno == ENOENT ? Claimed::NoFile : Claimed::Failed;
    const int descriptor = file.claim.Get();
    if (flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) return Claimed::Busy;
    if (fstat(descriptor, &file.replaced) != 0) return Claimed::Failed;
    return IsUnchanged(file.replaced, path) ? Claimed::Yes : Claimed::Busy;
}

// Claims the file that is to be appended to, if there is one.
bool ClaimToAppend(const std::string& path, PassingFile& file, std::string& why) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        const Claimed claimed = TryClaim(path, file);
        if (claimed == Claimed::Failed) return Fail(why);
        if (claimed != Claimed::Busy) {
            file.replaces = claimed == Claimed::Yes;
            return true;
        }
        if (std::chrono::steady_clock::now() > end) break;
        std::this_thread::sleep_for(kPause);
    }
    why = "it is being written to by another program";
    return false;
}

bool WriteAll(int descriptor, const char* bytes, size_t count, std::string& why) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return Fail(why);
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool CopyRest(int from, int to, std::string& why) {
    std::vector<char> buffer(kCopyBytes);
    for (;;) {
        const ssize_t got = read(from, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return Fail(why);
        if (got == 0) return true;
        if (!WriteAll(to, buffer.data(), static_cast<size_t>(got), why)) return false;
    }
}

}  // namespace

PassingFile::~PassingFile() {
    if (temporary.empty()) return;
    Unwatch(temporary.c_str());
    unlink(temporary.c_str());
}

bool IsPlace(const std::string& path) {
    struct stat status = {};
    return path == "-" || (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode));
}

bool MayWrite(const std::string& path, Overwrite mode, std::string& why) {
    struct stat status = {};
    if (path == "-") return true;
    const bool exists = IsFile(path, status);
    if (mode != Overwrite::Refuse) {
        if (!exists || access(path.c_str(), W_OK) == 0) return true;
        why = std::string("it may not be written to: ") + std::strerror(errno);
        return false;
    }
    if (!exists && !DanglesFrom(path)) return true;
    why = exists ? "there is such a file already; with --force it is replaced"
                 : "it is a link to a file that isn't there; with --force that is made";
    return false;
}

bool CreatePassingFile(const std::string& path, Overwrite mode, PassingFile& file,
                       std::string& why) {
    if (!MayWrite(path, mode, why)) return false;
    file.path = FinalName(path);
    file.replaces = mode != Overwrite::Refuse;
    if (mode == Overwrite::Append && !ClaimToAppend(file.path, file, why)) return false;
    const bool exists = file.claim || IsFile(path, file.replaced);
    if (!exists) file.replaced = {};
    // What was private isn't shown to others while it is being rewritten.
    const auto folder = std::filesystem::path(file.path).parent_path();
    return OpenNew(folder, exists ? kPrivateMode : kNewFileMode, file, why);
}

bool CreateScratchFile(PassingFile& file, std::string& why) {
    std::error_code error;
    const auto folder = std::filesystem::temp_directory_path(error);
    if (!error) return OpenNew(folder, kPrivateMode, file, why);
    why = "there is no folder for temporary files: " + error.message();
    return false;
}

OwnedDescriptor CreateNamelessFile(std::string& why) {
    std::error_code error;
    const auto folder = std::filesystem::temp_directory_path(error);
    OwnedDescriptor file;
    if (!error) file.Reset(open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kPrivateMode));
    if (!file) file.Reset(memfd_create("vellim", MFD_CLOEXEC));
    if (!file) Fail(why);
    return file;
}

OwnedDescriptor SpoolBytes(int descriptor, std::string& why) {
    OwnedDescriptor spool = CreateNamelessFile(why);
    if (!spool) return {};
    if (!CopyRest(descriptor, spool.Get(), why)) return {};
    return spool;
}

bool CopyBytes(int from, int to, std::string& why) {
    if (lseek(from, 0, SEEK_SET) != 0) return Fail(why);
    return CopyRest(from, to, why);
}

bool Settle(PassingFile& file, std::string& why) {
    if (file.replaced.st_mode != 0) TakeOver(file.descriptor.Get(), file.replaced);
    if (fsync(file.descriptor.Get()) != 0 && errno != EINVAL) return Fail(why);
    if (close(file.descriptor.Release()) != 0) return Fail(why);
    const char* from = file.temporary.c_str();
    const char* to = file.path.c_str();
    if (file.claim && !IsUnchanged(file.replaced, file.path)) {
        why = "another program has changed it meanwhile";
        return false;
    }
    const bool moved = file.replaces ? std::rename(from, to) == 0 : MoveFileA(from, to) != 0;
    struct stat other = {};
    if (!moved && !file.replaces && IsFile(file.path, other)) {
        why = "another program has made it meanwhile";
        return false;
    }
    if (!moved) return Fail(why);
    Unwatch(from);
    file.temporary.clear();
    return true;
}

}  // namespace vellim::tool
