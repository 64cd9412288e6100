// The header is written here, so that the library adds images to a file that is there: a new file
// and one that is appended to are then one case.
#include "tiff_output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "messages.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

constexpr size_t kHeaderBytes = 8;
using Header = std::array<uint8_t, kHeaderBytes>;

// TIFF 6.0, section 2: byte order, 42, and 0 for the first directory, which is still to come.
constexpr Header kLittleEndianHeader = {'I', 'I', 42, 0};
constexpr Header kBigEndianHeader = {'M', 'M', 0, 42};

std::string SystemReason() {
    return std::strerror(errno);
}

bool WriteHeader(int descriptor, uint16_t byteOrder, std::string& why) {
    const Header& header = byteOrder == TIFF_BIG_ENDIAN ? kBigEndianHeader : kLittleEndianHeader;
    if (write(descriptor, header.data(), header.size()) == ssize_t{kHeaderBytes}) return true;
    why = SystemReason();
    return false;
}

// Fills the passing file: with what is there, or with a header.
bool Begin(TiffOutput& output, uint16_t byteOrder, std::string& why) {
    const int descriptor = output.passing.descriptor.Get();
    const OwnedDescriptor& old = output.passing.claim;
    if (old && !CopyBytes(old.Get(), descriptor, why)) return false;
    if (lseek(descriptor, 0, SEEK_CUR) > 0) return true;
    return WriteHeader(descriptor, byteOrder, why);
}

// The library takes paths of TIFF_PATH_BYTES at most; the descriptor's own name is short.
bool NameForLibrary(TiffOutput& output, std::string& why) {
    output.openPath = output.passing.temporary;
    if (output.openPath.size() < TIFF_PATH_BYTES) return true;
    output.openPath = "/proc/self/fd/" + std::to_string(output.passing.descriptor.Get());
    if (access(output.openPath.c_str(), W_OK) == 0) return true;
    why = "the path is too long";
    return false;
}

bool OpenForImages(TiffOutput& output, std::string& why) {
    output.tiff.Reset(OpenTiffFile(output.Path().c_str(), T_APPEND));
    TiffFileInfo info = {};
    if (!output.tiff) {
        why = FailureInWords(TiffError());
        return false;
    }
    if (TiffError() != TIFF_SUCCESS) {
        why = "its chain of images is broken, and what may lie behind the break would be lost";
        return false;
    }
    GetTiffFileInfo(output.File(), &info);
    output.imageCount = NumberOfTiffImages(output.File(), TIFF_ALL_IMAGES);
    output.byteOrder = info.ByteOrder;
    return true;
}

bool CanBeAppendedTo(const TiffOutput& output, uint16_t byteOrder, std::string& why) {
    if (output.imageCount >= TIFF_MAX_IMAGES) {
        why = "it is full: a file holds " + std::to_string(TIFF_MAX_IMAGES) + " images";
        return false;
    }
    if (byteOrder == 0 || byteOrder == output.byteOrder) return true;
    why = "it is in the other byte order, which it keeps; leave out --byte-order";
    return false;
}

bool CreatePassing(TiffOutput& output, Overwrite mode, std::string& why) {
    if (!output.copied) return CreatePassingFile(output.target, mode, output.passing, why);
    if (mode != Overwrite::Append) return CreateScratchFile(output.passing, why);
    why = "images can be appended to files alone";
    return false;
}

bool CopyToTarget(TiffOutput& output, std::string& why) {
    const OwnedDescriptor target(output.target == "-"
                                     ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                                     : open(output.target.c_str(), O_WRONLY | O_CLOEXEC));
    if (!target) {
        why = SystemReason();
        return false;
    }
    return CopyBytes(output.passing.descriptor.Get(), target.Get(), why);
}

}  // namespace

std::unique_ptr<TiffOutput> CreateTiffOutput(const std::string& path, uint16_t byteOrder,
                                             Overwrite mode, std::string& why) {
    auto output = std::make_unique<TiffOutput>();
    output->target = path;
    output->copied = IsPlace(path);
    if (!CreatePassing(*output, mode, why) || !Begin(*output, byteOrder, why) ||
        !NameForLibrary(*output, why) || !OpenForImages(*output, why)) {
        return nullptr;
    }
    if (mode == Overwrite::Append && !CanBeAppendedTo(*output, byteOrder, why)) return nullptr;
    return output;
}

bool CommitTiffOutput(TiffOutput& output, std::string& why) {
    output.tiff.Reset();
    return output.copied ? CopyToTarget(output, why) : Settle(output.passing, why);
}

}  // namespace vellim::tool
