#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace vellim::tool {
namespace {

constexpr size_t kBufferBytes = 64UL << 10U;

bool Fail(OutputFile& output) {
    output.failure = std::strerror(errno);
    return false;
}

void FindBase(OutputFile& output) {
    struct stat status = {};
    const int descriptor = output.Descriptor();
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return;
    if ((fcntl(descriptor, F_GETFL) & O_APPEND) != 0) return;  // pwrite would append as well
    output.base = lseek(descriptor, 0, SEEK_CUR);
    output.seekable = output.base >= 0;
}

bool OpenInPlace(OutputFile& output, const std::string& path) {
    output.stream.Reset(path == "-" ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                                    : open(path.c_str(), O_WRONLY | O_CLOEXEC));
    return output.stream ? true : Fail(output);
}

bool WriteAll(OutputFile& output, const uint8_t* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = write(output.Descriptor(), bytes, count);
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

std::unique_ptr<OutputFile> CreateOutput(const std::string& path, Overwrite mode,
                                         std::string& why) {
    auto output = std::make_unique<OutputFile>();
    output->buffer.reserve(kBufferBytes);
    const bool open = IsPlace(path)
                          ? OpenInPlace(*output, path)
                          : CreatePassingFile(path, mode, output->passing, output->failure);
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
        const ssize_t written = pwrite(output.Descriptor(), next, count, position);
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
    if (!output.stream) return Settle(output.passing, output.failure);
    // Behind WriteAt, whoever writes on to the same standard output does so behind the picture.
    if (output.seekable) lseek(output.Descriptor(), 0, SEEK_END);
    return close(output.stream.Release()) == 0 ? true : Fail(output);
}

}  // namespace vellim::tool
