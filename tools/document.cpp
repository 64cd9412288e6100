// Opening a document. The library reads files by path, a path of at most TIFF_PATH_BYTES bytes, and
// memory blocks. What is neither is made one of the two:
//
//  - a longer path is opened here and named to the library by its descriptor, /proc/self/fd/N;
//  - where there is no /proc, and for pipes and devices, which can't be read twice, the bytes are
//    taken into a memory block: memory then grows with the file, not with its pictures.
#include "document.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "messages.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kFirstBlock = 1U << 20U;
constexpr uint32_t kMostBytes = INT32_MAX;  // sizes at the boundary are signed

// Twice the size, or the most there can be. 0 if that is reached or memory is short.
uint32_t GrowBlock(OwnedBlock& block, uint32_t size) {
    if (size == kMostBytes) return 0;
    const uint32_t larger = size > kMostBytes / 2 ? kMostBytes : size * 2;
    const GlobalHandle grown = GlobalReAlloc(block.Get(), larger, GHND);
    if (grown == 0) return 0;
    block.Release();
    block.Reset(grown);
    return larger;
}

// Reads as much as fits behind `used`. -1 on an error, 0 at the end.
ssize_t ReadInto(int descriptor, GlobalHandle block, uint32_t used, uint32_t size) {
    const LockedBlock bytes(block);
    if (bytes.Bytes() == nullptr) return -1;
    ssize_t got = 0;
    do {
        got = read(descriptor, bytes.Bytes() + used, size - used);
    } while (got < 0 && errno == EINTR);
    return got;
}

// All that comes from `descriptor`, as a block. False with the reason in `why`.
bool ReadWhole(int descriptor, OwnedBlock& block, uint32_t& used, std::string& why) {
    uint32_t size = kFirstBlock;
    block.Reset(GlobalAlloc(GHND, size));
    used = 0;
    while (block) {
        const ssize_t got = ReadInto(descriptor, block.Get(), used, size);
        if (got < 0) {
            why = std::strerror(errno);
            return false;
        }
        if (got == 0) return true;
        used += static_cast<uint32_t>(got);
        if (used < size) continue;
        size = GrowBlock(block, size);
        if (size == 0) break;
    }
    why = "not enough memory for the whole of it, or it is larger than 2 GB";
    return false;
}

bool OpenFromMemory(int descriptor, Document& document, std::string& why) {
    uint32_t size = 0;
    if (!ReadWhole(descriptor, document.block, size, why)) return false;
    if (size == 0) {
        why = "it is empty";
        return false;
    }
    document.tiff.Reset(OpenTiffInMemory(document.block.Get(), static_cast<int32_t>(size), T_READ));
    return true;
}

void OpenByName(const std::string& name, Document& document) {
    document.tiff.Reset(OpenTiffFile(name.c_str(), T_READ));
}

// Opens by the descriptor's name. False where there is no such name.
bool OpenByDescriptor(Document& document) {
    const std::string name = "/proc/self/fd/" + std::to_string(document.descriptor.Get());
    if (access(name.c_str(), R_OK) != 0) return false;
    OpenByName(name, document);
    return true;
}

bool OpenPath(const std::string& path, Document& document, std::string& why) {
    document.descriptor.Reset(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    if (!document.descriptor || fstat(document.descriptor.Get(), &status) != 0) {
        why = std::strerror(errno);
        return false;
    }
    if (S_ISDIR(status.st_mode)) {
        why = std::strerror(EISDIR);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        return OpenFromMemory(document.descriptor.Get(), document, why);
    }
    if (status.st_size == 0) {
        why = "it is empty";
        return false;
    }
    if (path.size() < TIFF_PATH_BYTES) {
        OpenByName(path, document);
        return true;
    }
    return OpenByDescriptor(document) || OpenFromMemory(document.descriptor.Get(), document, why);
}

// What was asked for, once the library has answered.
std::optional<Document> Finish(Document document, std::string& why) {
    if (!document.tiff) {
        why = FailureInWords(TiffError());
        return {};
    }
    document.chainBroken = TiffError() == TIFF_IO_ERROR;
    document.imageCount = NumberOfTiffImages(document.File(), TIFF_ALL_IMAGES);
    return document;
}

}  // namespace

std::optional<Document> OpenDocument(const std::string& path, std::string& why) {
    Document document;
    document.name = path;
    const bool asked =
        path == "-" ? OpenFromMemory(STDIN_FILENO, document, why) : OpenPath(path, document, why);
    if (!asked) return {};
    return Finish(std::move(document), why);
}

std::optional<Document> OpenDocument(const std::string& name, OwnedDescriptor descriptor,
                                     std::string& why) {
    Document document;
    document.name = name;
    document.descriptor = std::move(descriptor);
    const int from = document.descriptor.Get();
    if (!OpenByDescriptor(document) &&
        (lseek(from, 0, SEEK_SET) != 0 || !OpenFromMemory(from, document, why))) {
        return {};
    }
    return Finish(std::move(document), why);
}

std::string BrokenChainMessage(const Document& document) {
    return "the chain of images is broken behind image " + std::to_string(document.imageCount) +
           "; what may follow can't be reached";
}

}  // namespace vellim::tool
