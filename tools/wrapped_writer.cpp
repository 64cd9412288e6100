// One MMR image between the head and the tail of an IOCA image segment, or of MO:DCA picture data
// around one. Both state sizes in 16 bits, and resolutions in dots in 10 inches (unit base 0).
#include <algorithm>
#include <limits>

#include "coded_output.h"
#include "line_encoder.h"
#include "output_formats.h"
#include "vellim/encode.h"
#include "vellim/failures.h"
#include "vellim/wrappers.h"

namespace vellim::tool {
namespace {

constexpr uint32_t kMost = std::numeric_limits<uint16_t>::max();
constexpr uint32_t kUnitInches = 10;

struct Wrapper {
    int32_t (*head)(StreamHandle file, const IocaHeader* header);
    int32_t (*tail)(StreamHandle file);
};

constexpr Wrapper kIoca = {WriteIOCAHeader, WriteIOCATail};
constexpr Wrapper kModca = {WriteMODCAHeader, WriteMODCATail};

bool IsTooFine(const Picture& picture) {
    const uint32_t finer = std::max(picture.pelsPerMetreX, picture.pelsPerMetreY);
    return DotsIn(kUnitInches, picture, finer) > kMost;
}

IocaHeader HeaderOf(const Picture& picture) {
    IocaHeader header = {};
    const auto dots = [&](uint32_t pelsPerMetre) {
        return static_cast<uint16_t>(std::min(DotsIn(kUnitInches, picture, pelsPerMetre), kMost));
    };
    header.XResolution = dots(picture.pelsPerMetreX);
    header.YResolution = dots(picture.pelsPerMetreY);
    header.Width = static_cast<uint16_t>(picture.width);
    header.Height = static_cast<uint16_t>(picture.height);
    return header;
}

// A tail that can't be written leaves no code.
int32_t WriteWrapped(const Wrapper& wrapper, const IocaHeader& header, StreamHandle file,
                     uintptr_t callbackData) {
    if (wrapper.head(file, &header) == 0) return TIFF_IO_ERROR;
    if (EncodeMMRImage(file, header.Width, header.Height, 0, callbackData, OnLineWanted) == 0) {
        return TiffError();
    }
    return wrapper.tail(file) != 0 ? 0 : TIFF_IO_ERROR;
}

std::optional<LineSink> BeginWrapped(const Wrapper& wrapper, const Picture& picture,
                                     OutputFile& output) {
    return BeginCoded(picture, output,
                      [wrapper, header = HeaderOf(picture)](StreamHandle file, uintptr_t data) {
                          return WriteWrapped(wrapper, header, file, data);
                      });
}

}  // namespace

bool PrepareWrapped(const Picture& picture, const WriteOptions& /*options*/,
                    std::vector<std::string>& notes, std::string& why) {
    if (picture.width > kMost || picture.height > kMost) {
        why = "a picture of " + std::to_string(picture.width) + " x " +
              std::to_string(picture.height) + " pixels is above the " + std::to_string(kMost) +
              " a side that IOCA and MO:DCA can state";
        return false;
    }
    if (IsTooFine(picture)) {
        notes.emplace_back("IOCA and MO:DCA state no more than 6553.5 dots an inch");
    }
    return TakesLine(FaxCoding::Mmr, picture.width, why);
}

std::optional<LineSink> BeginIoca(const Picture& picture, const WriteOptions& /*options*/,
                                  OutputFile& output) {
    return BeginWrapped(kIoca, picture, output);
}

std::optional<LineSink> BeginModca(const Picture& picture, const WriteOptions& /*options*/,
                                   OutputFile& output) {
    return BeginWrapped(kModca, picture, output);
}

}  // namespace vellim::tool
