// A TIFF file of any bytes on disk, loaded as a DIB: its rows must be the decoded lines.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/checks.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {

namespace {

constexpr uint32_t kMaxLinePixels = 2048;
constexpr uint32_t kMaxPictureLines = 1024;

// One file without a name for the whole process, reached by its descriptor's path.
class ScratchFile {
  public:
    ScratchFile()
        : descriptor_(memfd_create("fuzz", 0)),
          path_("/proc/self/fd/" + std::to_string(descriptor_)) {
        Require(descriptor_ >= 0, "a scratch file can be made");
    }
    const char* Fill(const uint8_t* data, size_t size) {
        Require(ftruncate(descriptor_, 0) == 0, "the scratch file is emptied");
        Require(pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size),
                "the scratch file is filled");
        return path_.c_str();
    }

  private:
    int descriptor_;
    std::string path_;
};

struct Rows {
    std::vector<uint8_t> bytes;  // top line first, 24-bit pixels as blue, green, red
    size_t rowBytes;
    bool swapped;
};

// Exchanges colours in the line itself, as loading does.
uint32_t KeepLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    auto& rows = *reinterpret_cast<Rows*>(callbackData);
    if (rows.swapped)
        for (size_t i = 0; i + 2 < rows.rowBytes; i += 3)
            std::swap(line[i], line[i + 2]);
    std::copy_n(line, rows.rowBytes, rows.bytes.data() + lineNumber * rows.rowBytes);
    return TIFF_LINE_GO_ON;
}

void CompareRows(const char* path, const BITMAPINFOHEADER& header, std::span<const uint8_t> dib) {
    const auto height = static_cast<size_t>(header.biHeight);
    const size_t bits = static_cast<size_t>(header.biWidth) * header.biBitCount;
    Rows rows{{}, (bits + 7) / 8, header.biBitCount == 24};
    rows.bytes.assign(rows.rowBytes * height, 0);
    const TiffFileHandle file = OpenTiffFile(path, T_READ);
    GetTiffImage(file, 0);
    DecodeTiffImage(file, 0, 0, 0, reinterpret_cast<uintptr_t>(&rows), KeepLine);
    CloseTiffFile(file);

    const size_t storedBytes = (bits + 31) / 32 * 4;
    const size_t bitsStart = sizeof header + header.biClrUsed * sizeof(RGBQUAD);
    Require(bitsStart + storedBytes * height <= dib.size(), "the DIB holds its rows");
    for (size_t line = 0; line < height; ++line) {
        const auto stored = dib.subspan(bitsStart + (height - 1 - line) * storedBytes);
        Require(std::equal(stored.begin(), stored.begin() + static_cast<ptrdiff_t>(rows.rowBytes),
                           rows.bytes.begin() + static_cast<ptrdiff_t>(line * rows.rowBytes)),
                "the DIB's rows are the decoded lines");
    }
}

int32_t AnswerQuietly(WindowHandle /*owner*/, const char* /*text*/, const char* /*caption*/,
                      uint32_t /*style*/) {
    return IDOK;
}

}  // namespace

}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim::fuzz;
    static ScratchFile scratch;
    const DesktopDriver quiet = {AnswerQuietly, nullptr};
    SetDesktopDriver(&quiet);
    SetTiffSizeLimits(kMaxLinePixels, kMaxPictureLines);
    const BlockBalance balance;

    const char* path = scratch.Fill(data, size);
    const vellim::OwnedBlock dib(LoadTiffIntoDIB(path, 0, 0));
    if (!dib) {
        Require(TiffError() != TIFF_SUCCESS, "a refusal has a code");
        return 0;
    }
    const vellim::LockedBlock locked(dib.Get());
    Require(locked.Size() >= sizeof(BITMAPINFOHEADER), "a DIB has a header");
    const auto* header = locked.As<BITMAPINFOHEADER>();
    Require(header->biWidth >= 0 && header->biHeight > 0, "a DIB has a size");
    CompareRows(path, *header, {locked.As<uint8_t>(), locked.Size()});
    return 0;
}
