// What was opened is named by its descriptor, so that pipes, which were spooled, and long paths
// serve too.
#include "paint_subject.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "passing_file.h"
#include "raster_formats.h"
#include "vellim/cals.h"
#include "vellim/screen.h"

namespace vellim::tool {
namespace {

constexpr std::string_view kCals = "CALS";

const OwnedDescriptor& DescriptorOf(const PageSource& source) {
    return source.tiff ? source.tiff->descriptor : source.descriptor;
}

// What begins as a TIFF file and isn't one is left to the library, which knows the reason.
bool BeginsAsTiff(const PageSource& source) {
    const std::string mark = ReadHead(DescriptorOf(source).Get()).substr(0, 2);
    return mark == "II" || mark == "MM";
}

std::string PathOf(const OwnedDescriptor& descriptor, const std::string& otherwise) {
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor.Get());
    return access(path.c_str(), R_OK) == 0 ? path : otherwise;
}

bool IsLineEnd(char c) {
    return c == '\r' || c == '\n';
}

// Puts a blank for each line end at the end of a record of a CALS header; whether there was one.
bool BlankLineEnds(std::string& header) {
    bool changed = false;
    for (size_t end = CALS_RECORD_BYTES; end <= header.size(); end += CALS_RECORD_BYTES) {
        if (!IsLineEnd(header[end - 1])) continue;
        header[end - 1] = ' ';
        changed = true;
    }
    return changed;
}

// A CALS file whose records end in line ends, as some writers have it, is painted from a copy
// without them, for the library refuses it. False with the reason in `why`.
bool CopyWithoutLineEnds(const PageSource& source, PaintSubject& subject, std::string& why) {
    std::string header = ReadHead(source.descriptor.Get());
    if (!BlankLineEnds(header)) return true;
    subject.copy = CreateNamelessFile(why);
    if (!subject.copy || lseek(source.descriptor.Get(), 0, SEEK_SET) != 0 ||
        !CopyBytes(source.descriptor.Get(), subject.copy.Get(), why)) {
        return false;
    }
    subject.path = PathOf(subject.copy, subject.path);
    if (pwrite(subject.copy.Get(), header.data(), header.size(), 0) ==
        static_cast<ssize_t>(header.size())) {
        return true;
    }
    why = std::strerror(errno);
    return false;
}

bool HasPage(const PageSource& source, uint32_t page, std::string& why) {
    if (page <= source.pageCount) return true;
    if (source.pageCount == 0) {
        why = NoImagesInWords(source);
        return false;
    }
    why = "there is no page " + std::to_string(page) + ": the last one is page " +
          std::to_string(source.pageCount);
    const std::string outOfReach = OutOfReach(source);
    if (!outOfReach.empty()) why += "; " + outOfReach;
    return false;
}

}  // namespace

// With a hint, a file of unknown kind is opened too, as a stream, and refused in words that suit.
std::optional<PageSource> OpenPaintSource(const std::string& path, std::string& why) {
    SourceHints anyKind;
    anyKind.fillOrder = 1;
    return OpenPageSource(path, anyKind, why);
}

std::optional<PaintSubject> FindPaintSubject(const PageSource& source, uint32_t page,
                                             std::string& why) {
    PaintSubject subject;
    if (source.tiff || BeginsAsTiff(source)) {
        subject.format = SCREEN_FORMAT_TIFF;
    } else if (source.Kind() == kCals) {
        subject.format = SCREEN_FORMAT_CALS;
    } else {
        why = source.format == nullptr ? "it is no TIFF or CALS file, which alone can be painted"
                                       : "it is a file of the kind " + std::string(source.Kind()) +
                                             "; TIFF and CALS alone can be painted";
        return {};
    }
    if (!HasPage(source, page, why)) return {};
    subject.path = PathOf(DescriptorOf(source), source.name);
    subject.image = static_cast<int32_t>(page - 1);
    const bool cals = subject.format == SCREEN_FORMAT_CALS;
    if (cals && !CopyWithoutLineEnds(source, subject, why)) return {};
    return subject;
}

}  // namespace vellim::tool
