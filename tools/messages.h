// What the tool says to a person: messages and progress on standard error, failures in words.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace vellim::tool {

// Names the document as a whole in `Say` and `Place`.
constexpr int32_t kWholeFile = -1;

// "scan.tif" or "scan.tif: image 3"; `image` counts from 0 as the library does, people from 1.
std::string Place(std::string_view file, int32_t image);

// A line on standard error: "vellim: scan.tif: image 3: text".
void Say(std::string_view file, int32_t image, std::string_view text);

// The library's message of a failure code.
std::string FailureMessage(int32_t code);

// What that means for the document, in plain words; empty where the message says it all.
std::string_view Explanation(int32_t code);

// Both: "message (explanation)".
std::string FailureInWords(int32_t code);

// Why the library couldn't write, in words: from its failure code, from `error` (errno right after
// the call, which began with 0), and from the most `bytes` that the file would have had. Empty if
// nothing speaks for a failure in writing.
std::string FailureInWriting(int32_t code, int error, uint64_t bytes);

// "1204 of 2200 lines"
std::string LinesOf(uint32_t came, uint32_t due);

// A percentage on the terminal, for work that takes more than a second. Silent where standard
// error is no terminal. `Say` wipes it away, and so does its end.
class Progress {
  public:
    Progress(std::string_view file, int32_t image, uint32_t total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Step(uint32_t done);

  private:
    std::string place_;
    uint32_t total_;
    std::chrono::steady_clock::time_point next_;
    bool terminal_;
};

}  // namespace vellim::tool
