// Messages and progress. Standard output is for data alone.
#include "messages.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "handles.h"
#include "text.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

constexpr auto kPatience = std::chrono::seconds(1);
constexpr auto kRefresh = std::chrono::milliseconds(200);

// Whether a percentage stands on the terminal's current line.
bool progressShown = false;

void WipeProgress() {
    if (!progressShown) return;
    std::fputs("\r\x1b[K", stderr);
    progressShown = false;
}

constexpr std::array<std::string_view, TIFF_UNEXPECTED_EOFB + 1> kExplanations = {
    "",
    "or the picture is larger than the library takes on",
    "",
    "",
    "",
    "the data ends before the picture does",
    "the file can't be read, or it points to a place outside itself",
    "",
    "the number 42 of TIFF files is missing behind II or MM; BigTIFF, with 43, isn't served",
    "a tag with a value of 32768 bytes or more",
    "its size, its strips or its colour map",
    "this compression, or an option of it, isn't served",
    "the compressed data breaks the rules of its compression",
    "",
    "the file begins with neither II nor MM, so it is no TIFF file",
    "FillOrder is neither 1 nor 2",
    "served are 1, 4, 8 and 24 bits a pixel in one plane",
    "",
    "",
    "the Group 4 data doesn't end as it should",
    "the Group 4 data ends before the last line",
};

// Whether there is no room for the files that the library opens for one call. It keeps to itself
// what the system said, so that this is found out behind it.
bool LacksDescriptors() {
    constexpr size_t kMostAtOnce = 4;
    std::array<OwnedDescriptor, kMostAtOnce> tried;
    for (OwnedDescriptor& descriptor : tried) {
        descriptor.Reset(open("/", O_PATH | O_CLOEXEC));
        if (!descriptor && (errno == EMFILE || errno == ENFILE)) return true;
    }
    return false;
}

}  // namespace

std::string Place(std::string_view file, int32_t image) {
    std::string place = Printable(file == "-" ? "standard input" : file);
    if (image != kWholeFile) place += ": image " + std::to_string(image + 1);
    return place;
}

void Say(std::string_view file, int32_t image, std::string_view text) {
    WipeProgress();
    std::string line = "vellim: ";
    if (!file.empty()) line += Place(file, image) + ": ";
    line += text;
    line += '\n';
    std::fputs(line.c_str(), stderr);
}

std::string FailureMessage(int32_t code) {
    std::array<char, TIFF_MESSAGE_BYTES> buffer{};
    TiffErrorString(buffer.data(), code);
    return buffer.data();
}

std::string_view Explanation(int32_t code) {
    if (code < 0 || code > TIFF_UNEXPECTED_EOFB) return "";
    return kExplanations[static_cast<size_t>(code)];
}

std::string FailureInWords(int32_t code) {
    std::string words = FailureMessage(code);
    if (code == TIFF_IO_ERROR && LacksDescriptors()) return words + " (too many files are open)";
    if (!Explanation(code).empty()) words += " (" + std::string(Explanation(code)) + ")";
    return words;
}

// Other codes than that of input and output tell of the picture, other errors of the system may
// come from reading.
std::string FailureInWriting(int32_t code, int error, uint64_t bytes) {
    if (code != TIFF_IO_ERROR) return {};
    switch (error) {
        case EAGAIN:  // from a lock
            return "it is being written to by another program";
        case EFBIG:
        case ENOSPC:
        case EDQUOT:
        case EROFS:
        case EACCES:
        case EMFILE:
        case ENFILE:
            return std::string("it can't be written: ") + std::strerror(error);
        default:
            break;
    }
    if (LacksDescriptors()) return "it can't be written: too many files are open";
    return bytes > INT32_MAX ? "it can't be written: it would be larger than 2 GB" : "";
}

std::string LinesOf(uint32_t came, uint32_t due) {
    return std::to_string(came) + " of " + std::to_string(due) + " lines";
}

Progress::Progress(std::string_view file, int32_t image, uint32_t total)
    : place_(Place(file, image)),
      total_(total),
      next_(std::chrono::steady_clock::now() + kPatience),
      terminal_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    WipeProgress();
}

void Progress::Step(uint32_t done) {
    if (!terminal_ || total_ == 0) return;
    const auto now = std::chrono::steady_clock::now();
    if (now < next_) return;
    next_ = now + kRefresh;
    const uint64_t percent = uint64_t{done} * 100 / total_;
    std::fprintf(stderr, "\rvellim: %s: %u%%\x1b[K", place_.c_str(),
                 static_cast<unsigned>(percent));
    std::fflush(stderr);
    progressShown = true;
}

}  // namespace vellim::tool
