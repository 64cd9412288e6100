#include "bridge/whole_file.h"

#include <cerrno>
#include <filesystem>
#include <memory>
#include <utility>

#include "platform/files/descriptors.h"
#include "platform/files/file_replacement.h"
#include "vellim/platform.h"

namespace vellim {
namespace {

constexpr char kUnfinishedEnding[] = ".~~~";

bool IsDevice(const std::string& path) {
    std::error_code unknown;
    return std::filesystem::is_character_file(path, unknown);
}

// Whether a folder refuses a new file, or one of a longer name.
bool HasNoRoomBeside(int error) {
    return error == EACCES || error == EPERM || error == ENAMETOOLONG;
}

}  // namespace

// Only a file that isn't there is made: one that can't be written to for another reason isn't
// replaced either.
WholeFile::WholeFile(const char* path) {
    const auto told = std::make_unique<OFSTRUCT>();
    const bool exists = OpenFile(path, told.get(), OF_EXIST | OF_WRITE) != -1;
    original_ = told->szPathName;
    if (!exists) {
        if (told->nErrCode != ENOENT) return;
        unfinished_ = original_;
        stream_ = OpenFile(path, nullptr, OF_CREATE | OF_WRITE | kMustBeNew);
        if (stream_ == -1 && errno == EEXIST) WriteInPlace(path);
    } else if (IsDevice(original_)) {
        stream_ = OpenFile(path, nullptr, OF_WRITE);
    } else {
        unfinished_ = original_ + kUnfinishedEnding;
        stream_ = CreateReplacement(original_.c_str(), unfinished_.c_str());
        if (stream_ == -1 && HasNoRoomBeside(errno)) WriteInPlace(path);
    }
}

void WholeFile::WriteInPlace(const char* path) {
    unfinished_.clear();
    stream_ = OpenFile(path, nullptr, OF_CREATE | OF_WRITE);
}

// What is unfinished goes away while it is still open, and so still ours.
WholeFile::~WholeFile() {
    if (stream_ == -1) return;
    if (!unfinished_.empty()) DeleteFileA(unfinished_.c_str());
    _lclose(stream_);
}

bool WholeFile::Commit() {
    const bool replaces = !unfinished_.empty() && unfinished_ != original_;
    if (replaces && !CommitReplacement(stream_, unfinished_.c_str(), original_.c_str()))
        return false;
    const bool closed = _lclose(std::exchange(stream_, -1)) == 0;
    if (!closed && !replaces && !unfinished_.empty()) DeleteFileA(unfinished_.c_str());
    return closed;
}

}  // namespace vellim
