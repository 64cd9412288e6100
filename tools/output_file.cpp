// A new file stands beside its final name under a passing one, so that the name never means half a
// picture and a file that was there before stays until it is replaced. A signal that ends the
// process takes the passing file with it.
#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace vellim::tool {
namespace {

constexpr size_t kBufferBytes = 64UL << 10U;
constexpr mode_t kNewFileMode = 0666;  // less the process's mask
constexpr mode_t kPermissionBits = 0777;

// The name for the signal handler, which may touch nothing that is being changed.
std::atomic<const char*> passingName{nullptr};

void RemoveAndEnd(int signal) {
    const char* name = passingName.load();
    if (name != nullptr) unlink(name);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void WatchSignals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (std::signal(signal, RemoveAndEnd) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

bool Fail(OutputFile& output) {
    output.failure = std::strerror(errno);
    return false;
}

void FindBase(OutputFile& output) {
    struct stat status = {};
    const int descriptor = output.descriptor.Get();
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return;
    if ((fcntl(descriptor, F_GETFL) & O_APPEND) != 0) return;  // pwrite would append as well
    output.base = lseek(descriptor, 0, SEEK_CUR);
    output.seekable = output.base >= 0;
}

bool OpenInPlace(OutputFile& output) {
    output.descriptor.Reset(output.path == "-" ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                                               : open(output.path.c_str(), O_WRONLY | O_CLOEXEC));
    return output.descriptor ? true : Fail(output);
}

bool OpenPassing(OutputFile& output, const struct stat* replaced) {
    static int count = 0;
    const std::filesystem::path folder = std::filesystem::path(output.path).parent_path();
    const std::string name =
        ".vellim-" + std::to_string(getpid()) + "-" + std::to_string(count++) + ".tmp";
    output.temporary = folder / name;
    output.descriptor.Reset(
        open(output.temporary.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode));
    if (!output.descriptor) {
        output.temporary.clear();
        return Fail(output);
    }
    passingName = output.temporary.c_str();
    WatchSignals();
    if (replaced != nullptr) {
        // A file system without permissions has none to keep.
        static_cast<void>(fchmod(output.descriptor.Get(), replaced->st_mode & kPermissionBits));
    }
    return true;
}

bool WriteAll(OutputFile& output, const uint8_t* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = write(output.descriptor.Get(), bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return Fail(output);
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool Flush(OutputFile& output) {
    const bool good = WriteAll(output, output.buffer.data(), output.buffer.size());
    output.buffer.clear();
    return good;
}

}  // namespace

OutputFile::~OutputFile() {
    if (temporary.empty()) return;
    passingName = nullptr;
    unlink(temporary.c_str());
}

std::unique_ptr<OutputFile> CreateOutput(const std::string& path, std::string& why) {
    auto output = std::make_unique<OutputFile>();
    output->path = path;
    output->buffer.reserve(kBufferBytes);
    struct stat status = {};
    const bool exists = path != "-" && stat(path.c_str(), &status) == 0;
    const bool inPlace = path == "-" || (exists && !S_ISREG(status.st_mode));
    if (exists && !inPlace) {
        // The file that a link leads to is replaced, not the link.
        std::error_code error;
        const auto target = std::filesystem::canonical(path, error);
        if (!error) output->path = target;
    }
    const bool open =
        inPlace ? OpenInPlace(*output) : OpenPassing(*output, exists ? &status : nullptr);
    if (!open) {
        why = output->failure;
        return nullptr;
    }
    FindBase(*output);
    return output;
}

bool Write(OutputFile& output, const void* bytes, size_t count) {
    if (output.buffer.size() + count > kBufferBytes && !Flush(output)) return false;
    const auto* first = static_cast<const uint8_t*>(bytes);
    if (count > kBufferBytes) return WriteAll(output, first, count);
    output.buffer.insert(output.buffer.end(), first, first + count);
    return true;
}

bool Write(OutputFile& output, const std::string& text) {
    return Write(output, text.data(), text.size());
}

bool WriteAt(OutputFile& output, uint64_t offset, const void* bytes, size_t count) {
    const auto* next = static_cast<const uint8_t*>(bytes);
    auto position = static_cast<off_t>(static_cast<uint64_t>(output.base) + offset);
    while (count > 0) {
        const ssize_t written = pwrite(output.descriptor.Get(), next, count, position);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return Fail(output);
        next += written;
        position += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool Commit(OutputFile& output) {
    if (!Flush(output)) return false;
    // Behind WriteAt, whoever writes on to the same standard output does so behind the picture.
    if (output.seekable) lseek(output.descriptor.Get(), 0, SEEK_END);
    if (close(output.descriptor.Release()) != 0) return Fail(output);
    if (output.temporary.empty()) return true;
    if (std::rename(output.temporary.c_str(), output.path.c_str()) != 0) return Fail(output);
    passingName = nullptr;
    output.temporary.clear();
    return true;
}

}  // namespace vellim::tool
