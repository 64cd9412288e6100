// Makes a chosen call to the system or for memory fail, once, as a full disk or a bad moment would.
// For the program faults_tests alone: there the linker leads the rooms' calls of these functions
// through here.
#pragma once

#include <cstdint>
#include <functional>
#include <ostream>

namespace vellim::test {

enum class Call { kOpen, kRead, kWrite, kSeek, kCut, kFlush, kRename, kAllocate, kAny };

struct Fault {
    Call call;
    uint32_t at;         // the first call is 1
    bool kills = false;  // ends the process there instead
    bool struck = false;
};

std::ostream& operator<<(std::ostream& out, const Fault& fault);

// The fault is in force for the length of a scope; one at a time.
class Armed {
  public:
    explicit Armed(Fault& fault);
    ~Armed();
    Armed(const Armed&) = delete;
    Armed& operator=(const Armed&) = delete;
};

// Calls `attempt` with every fault that can strike in it: of each kind of call the first, the
// second, and so on until one run meets none. The attempt arms the fault around what it tests.
// Gives the number of faults that struck.
uint32_t WithEveryFault(const std::function<void(Fault&)>& attempt);

// Calls `run` in a process of its own that is killed at its first such call, its second and so on,
// and `check` after each. Gives the number of processes killed.
uint32_t KilledEverywhere(const std::function<void()>& prepare, const std::function<void()>& run,
                          const std::function<void(const Fault&)>& check);

}  // namespace vellim::test
