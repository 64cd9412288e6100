#include "support/faults.h"

#include <fcntl.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "vellim/platform.h"

namespace vellim::test {
namespace {

constexpr int kKilled = 77;
Fault* armed = nullptr;
uint32_t seen = 0;
uint32_t refusedWrites = 0;  // still to come

bool Strikes(Call call) {
    if (armed == nullptr || armed->struck || (armed->call != call && armed->call != Call::kAny))
        return false;
    if (++seen < armed->at) return false;
    if (armed->kills) _exit(kKilled);
    armed->struck = true;
    return true;
}

int Refused(int reason) {
    errno = reason;
    return -1;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Fault& fault) {
    constexpr const char* names[] = {"open", "read",   "write",  "seek", "cut",
                                     "sync", "rename", "memory", "call"};
    return out << names[static_cast<int>(fault.call)] << ' ' << fault.at;
}

Armed::Armed(Fault& fault) {
    armed = &fault;
    seen = 0;
}

Armed::~Armed() {
    armed = nullptr;
    refusedWrites = 0;
}

uint32_t WithEveryFault(const std::function<void(Fault&)>& attempt) {
    uint32_t struck = 0;
    for (int call = 0; call < static_cast<int>(Call::kAny); call++)
        for (Fault fault{static_cast<Call>(call), 1};; fault = {fault.call, fault.at + 1}) {
            attempt(fault);
            if (!fault.struck) break;
            struck++;
        }
    return struck;
}

uint32_t KilledEverywhere(const std::function<void()>& prepare, const std::function<void()>& run,
                          const std::function<void(const Fault&)>& check) {
    for (Fault fault{Call::kAny, 1, true};; fault.at++) {
        prepare();
        const pid_t child = fork();
        if (child == 0) {
            const Armed guard(fault);
            run();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        check(fault);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != kKilled) return fault.at - 1;
    }
}

}  // namespace vellim::test

using vellim::test::Call;
using vellim::test::Refused;
using vellim::test::refusedWrites;
using vellim::test::Strikes;

// The linker's names for the wrapped function and for the one that wraps it.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
int __real_open64(const char* path, int flags, mode_t mode);
ssize_t __real_read(int file, void* to, size_t bytes);
ssize_t __real_write(int file, const void* from, size_t bytes);
off64_t __real_lseek64(int file, off64_t offset, int origin);
int __real_ftruncate64(int file, off64_t bytes);
int __real_fsync(int file);
int __real_rename(const char* from, const char* to);
GlobalHandle __real_GlobalAlloc(uint32_t flags, uint32_t bytes);
GlobalHandle __real_GlobalReAlloc(GlobalHandle block, uint32_t bytes, uint32_t flags);

int __wrap_open64(const char* path, int flags, mode_t mode) {
    return Strikes(Call::kOpen) ? Refused(EMFILE) : __real_open64(path, flags, mode);
}
ssize_t __wrap_read(int file, void* to, size_t bytes) {
    return Strikes(Call::kRead) ? Refused(EIO) : __real_read(file, to, bytes);
}
// On a full disk a write of any length ends half-way, and what is tried next tells why.
ssize_t __wrap_write(int file, const void* from, size_t bytes) {
    constexpr size_t kLongestWhole = 8;
    if (refusedWrites > 0) {
        refusedWrites--;
        return Refused(ENOSPC);
    }
    if (!Strikes(Call::kWrite)) return __real_write(file, from, bytes);
    if (bytes <= kLongestWhole) return Refused(ENOSPC);
    refusedWrites = 2;
    return __real_write(file, from, bytes / 2);
}
off64_t __wrap_lseek64(int file, off64_t offset, int origin) {
    return Strikes(Call::kSeek) ? Refused(EIO) : __real_lseek64(file, offset, origin);
}
int __wrap_ftruncate64(int file, off64_t bytes) {
    return Strikes(Call::kCut) ? Refused(EIO) : __real_ftruncate64(file, bytes);
}
int __wrap_fsync(int file) {
    return Strikes(Call::kFlush) ? Refused(EIO) : __real_fsync(file);
}
int __wrap_rename(const char* from, const char* to) {
    return Strikes(Call::kRename) ? Refused(EACCES) : __real_rename(from, to);
}
GlobalHandle __wrap_GlobalAlloc(uint32_t flags, uint32_t bytes) {
    return Strikes(Call::kAllocate) ? 0 : __real_GlobalAlloc(flags, bytes);
}
GlobalHandle __wrap_GlobalReAlloc(GlobalHandle block, uint32_t bytes, uint32_t flags) {
    return Strikes(Call::kAllocate) ? 0 : __real_GlobalReAlloc(block, bytes, flags);
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
