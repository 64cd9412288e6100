// A file that waits for its name is written in place. All else (a pipe, a device, standard output)
// gets a copy of a scratch file, since the library wants files that it can seek in.
#include "coded_output.h"

#include <cmath>
#include <utility>

#include "line_encoder.h"
#include "passing_file.h"
#include "pixel_format.h"
#include "vellim/failures.h"
#include "vellim/platform.h"

namespace vellim::tool {
namespace {

constexpr double kMetresPerInch = 0.0254;

using OwnedFile = Owned<int32_t, -1, &_lclose>;

struct CodedWriter {
    OutputFile* output = nullptr;
    uint32_t width = 0;
    FileCoder coder;
    PassingFile scratch;
    std::vector<uint8_t> row;
    LineEncoder encoder;  // last, so that it ends before what it works on

    [[nodiscard]] const PassingFile& Written() const {
        return output->stream ? scratch : output->passing;
    }
};

int32_t RunCoder(const CodedWriter& w, uintptr_t callbackData) {
    OwnedFile file(OpenFile(w.Written().temporary.c_str(), nullptr, OF_READWRITE));
    if (!file) return TIFF_IO_ERROR;
    const int32_t code = w.coder(file.Get(), callbackData);
    if (_lclose(file.Release()) != 0 && code == 0) return TIFF_IO_ERROR;
    return code;
}

// Fax code has black as 1.
bool WriteLine(CodedWriter& w, const uint8_t* row) {
    std::copy_n(row, w.row.size(), w.row.begin());
    NormaliseLine(w.row.data(), w.width, kBilevel, true);
    return EncodeLine(w.encoder, w.row.data(), w.output->failure);
}

bool FinishFile(CodedWriter& w) {
    OutputFile& output = *w.output;
    if (!FinishEncoder(w.encoder, output.failure)) return false;
    return !output.stream ||
           CopyBytes(w.scratch.descriptor.Get(), output.Descriptor(), output.failure);
}

}  // namespace

std::optional<LineSink> BeginCoded(const Picture& picture, OutputFile& output, FileCoder coder) {
    auto w = std::make_unique<CodedWriter>();
    w->output = &output;
    w->width = picture.width;
    w->coder = std::move(coder);
    if (output.stream && !CreateScratchFile(w->scratch, output.failure)) return {};
    w->row.resize(RowBytes(picture));
    StartEncoder(w->encoder, w->row.size(),
                 [&writer = *w](uintptr_t callbackData) { return RunCoder(writer, callbackData); });
    return MakeSink<WriteLine, FinishFile>(std::move(w));
}

bool TakesLine(FaxCoding coding, uint32_t width, std::string& why) {
    const bool oneDimensional = coding == FaxCoding::G3 || coding == FaxCoding::G3Eol;
    if (oneDimensional || width <= kMostTwoDimensionalPixels) return true;
    why = "lines of " + std::to_string(width) +
          " pixels are too long: " + std::string(FaxCodingInWords(coding)) + " coding takes " +
          std::to_string(kMostTwoDimensionalPixels) + " at most";
    return false;
}

uint32_t DotsIn(uint32_t inches, const Picture& picture, uint32_t pelsPerMetre) {
    if (!picture.absoluteResolution) return 0;
    return static_cast<uint32_t>(std::lround(pelsPerMetre * kMetresPerInch * inches));
}

}  // namespace vellim::tool
