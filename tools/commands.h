// The commands, what each is asked, and how the process ends.
#pragma once

#include <string>
#include <vector>

namespace vellim::tool {

// Exit codes. A worse one has the higher number, so that the worst of several is their maximum.
enum class Outcome : int {
    Well = 0,
    Damaged = 1,  // done, but something was damaged and recovered only in part
    Failed = 2,
    Usage = 64
};

inline Outcome Worse(Outcome a, Outcome b) {
    return a < b ? b : a;
}

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
    bool tags = false;
};

struct CheckOptions {
    std::vector<std::string> files;
};

struct ConvertOptions {
    std::string input;
    std::string output;
    std::string pages;   // empty: all
    std::string format;  // empty: by the output's ending
    bool square = false;
};

Outcome RunInfo(const InfoOptions& options);
Outcome RunCheck(const CheckOptions& options);
Outcome RunConvert(const ConvertOptions& options);

}  // namespace vellim::tool
