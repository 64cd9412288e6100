// Bare streams: fax code and nothing else, so that whoever reads one has to be told what it is.
#include "coded_output.h"
#include "line_encoder.h"
#include "output_formats.h"
#include "vellim/encode.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

FaxCoding CodingOf(const WriteOptions& options) {
    return options.coding.value_or(FaxCoding::G4);
}

int32_t WriteBare(FaxCoding coding, uint32_t fillOrder, const Picture& picture, StreamHandle file,
                  uintptr_t callbackData) {
    const auto width = static_cast<int32_t>(picture.width);
    const auto height = static_cast<int32_t>(picture.height);
    const int32_t good =
        coding == FaxCoding::Mmr
            ? EncodeMMRImage(file, width, height, 0, callbackData, OnLineWanted)
            : EncodeCcittImageTo(file, width, height, fillOrder, TIFF_LITTLE_ENDIAN, KeyOf(coding),
                                 callbackData, OnLineWanted);
    return good != 0 ? 0 : TiffError();
}

}  // namespace

bool PrepareBare(const Picture& picture, const WriteOptions& options,
                 std::vector<std::string>& notes, std::string& why) {
    const FaxCoding coding = CodingOf(options);
    if (!TakesLine(coding, picture.width, why)) return false;
    std::string note = "a bare stream states neither size nor resolution; this one is read with ";
    note += "--coding " + std::string(FaxCodingName(coding));
    note += " --fill-order " + std::to_string(options.fillOrder);
    note += " --width " + std::to_string(picture.width);
    note += " --height " + std::to_string(picture.height);
    notes.push_back(std::move(note));
    return true;
}

std::optional<LineSink> BeginBare(const Picture& picture, const WriteOptions& options,
                                  OutputFile& output) {
    return BeginCoded(picture, output,
                      [coding = CodingOf(options), fillOrder = options.fillOrder, picture](
                          StreamHandle file, uintptr_t data) {
                          return WriteBare(coding, fillOrder, picture, file, data);
                      });
}

}  // namespace vellim::tool
