#include "passing_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "vellim/platform.h"

namespace vellim::tool {
namespace {

constexpr mode_t kNewFileMode = 0666;  // less the process's mask
constexpr mode_t kPrivateMode = 0600;
constexpr mode_t kPermissionBits = 0777;
constexpr size_t kCopyBytes = 256UL << 10U;
constexpr int kMostTries = 100;  // against names that a process of the same number left behind

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
    if (mode != Overwrite::Refuse || path == "-" || !IsFile(path, status)) return true;
    why = "there is such a file already; with --force it is replaced";
    return false;
}

bool CreatePassingFile(const std::string& path, Overwrite mode, PassingFile& file,
                       std::string& why) {
    if (!MayWrite(path, mode, why)) return false;
    file.path = path;
    file.replaces = mode != Overwrite::Refuse;
    const bool exists = IsFile(path, file.replaced);
    if (exists) {
        std::error_code error;
        const auto target = std::filesystem::canonical(path, error);
        if (!error) file.path = target;
    } else {
        file.replaced = {};
    }
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

OwnedDescriptor SpoolBytes(int descriptor, std::string& why) {
    std::error_code error;
    const auto folder = std::filesystem::temp_directory_path(error);
    OwnedDescriptor spool;
    if (!error) spool.Reset(open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kPrivateMode));
    if (!spool) spool.Reset(memfd_create("vellim", MFD_CLOEXEC));
    if (!spool) {
        Fail(why);
        return {};
    }
    if (!CopyRest(descriptor, spool.Get(), why)) return {};
    return spool;
}

bool CopyBytes(int from, int to, std::string& why) {
    if (lseek(from, 0, SEEK_SET) != 0) return Fail(why);
    return CopyRest(from, to, why);
}

// Where no file was found at first, one that has come up since then is not replaced either.
bool Settle(PassingFile& file, std::string& why) {
    if (file.replaced.st_mode != 0) TakeOver(file.descriptor.Get(), file.replaced);
    if (fsync(file.descriptor.Get()) != 0 && errno != EINVAL) return Fail(why);
    if (close(file.descriptor.Release()) != 0) return Fail(why);
    const char* from = file.temporary.c_str();
    const char* to = file.path.c_str();
    const bool moved = file.replaces ? std::rename(from, to) == 0 : MoveFileA(from, to) != 0;
    if (!moved) return Fail(why);
    Unwatch(from);
    file.temporary.clear();
    return true;
}

}  // namespace vellim::tool
