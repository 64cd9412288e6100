// PBM, PGM and PPM in their binary forms (P4, P5, P6): a text header and bare rows. The three hold
// no resolution. In a PBM, black is 1.
#include "output_formats.h"

namespace vellim::tool {
namespace {

struct PnmWriter {
    OutputFile* output = nullptr;
    uint32_t unusedBits = 0;
    bool bilevel = false;
    std::vector<uint8_t> row;
};

bool WriteLine(PnmWriter& w, const uint8_t* row) {
    if (!w.bilevel) return Write(*w.output, row, w.row.size());
    for (size_t i = 0; i < w.row.size(); ++i)
        w.row[i] = static_cast<uint8_t>(~row[i]);
    w.row.back() = static_cast<uint8_t>(w.row.back() & 0xFFU << w.unusedBits);
    return Write(*w.output, w.row.data(), w.row.size());
}

bool FinishFile(PnmWriter& /*w*/) {
    return true;
}

}  // namespace

std::optional<LineSink> BeginPnm(const Picture& picture, const WriteOptions& /*options*/,
                                 OutputFile& output) {
    auto w = std::make_unique<PnmWriter>();
    w->output = &output;
    w->bilevel = picture.type == kBilevel;
    w->row.resize(RowBytes(picture));
    w->unusedBits =
        static_cast<uint32_t>(w->row.size() * 8 - uint64_t{picture.width} * picture.type.bits);
    std::string header = w->bilevel ? "P4\n" : picture.type == kGrey8 ? "P5\n" : "P6\n";
    header += std::to_string(picture.width) + " " + std::to_string(picture.height) + "\n";
    if (!w->bilevel) header += "255\n";
    if (!Write(output, header)) return {};
    return MakeSink<WriteLine, FinishFile>(std::move(w));
}

}  // namespace vellim::tool
