#include "output_choice.h"

#include "cals_writer.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

constexpr const char* kDefaultFormat = "png";

// A KEY=TEXT of --note.
bool ReadNote(const std::string& argument, std::vector<NamedField>& texts, std::string& why) {
    const size_t equals = argument.find('=');
    if (equals == std::string::npos) {
        why = "--note takes KEY=TEXT, such as notes=Draft";
        return false;
    }
    const std::string_view key = FindCalsKey(argument.substr(0, equals));
    if (key.empty()) {
        why = "--note takes one of the keys " + CalsKeys();
        return false;
    }
    texts.push_back({std::string(key), argument.substr(equals + 1)});
    return true;
}

// What doesn't go together, whatever IN is; empty if all does.
std::string Misuse(const ConvertOptions& options, const OutputFormat& format) {
    const bool tiffOnly =
        !options.compression.empty() || !options.byteOrder.empty() || options.append;
    if (tiffOnly && !IsTiff(format)) {
        return "--compression, --byte-order and --append are for TIFF files";
    }
    if (!options.notes.empty() && !HoldsCalsTexts(format)) return "--note is for CALS files";
    if (options.append && options.force) return "--append and --force exclude one another";
    return {};
}

bool IsBareStream(const PageSource& source) {
    return !source.tiff && source.format == nullptr;
}

// What is told of a bare stream although IN is none and OUT neither, or can't be told so much.
std::string MisusedHints(const SourceHints& hints, const OutputFormat& format) {
    if (hints.width != 0 || hints.height != 0) {
        return "--width and --height tell of a bare stream, and IN is none";
    }
    if (hints.coding && !IsBare(format)) {
        return "--coding tells of a bare stream, and neither IN nor OUT is one";
    }
    if (hints.fillOrder != 0 && !IsBare(format) && !IsTiff(format)) {
        return "--fill-order is for TIFF files and bare streams";
    }
    return {};
}

}  // namespace

const OutputFormat* ChooseFormat(const ConvertOptions& options) {
    if (!options.format.empty()) return FindFormat(options.format);
    return options.output == "-" ? FindFormat(kDefaultFormat) : FormatOfPath(options.output);
}

std::optional<WriteOptions> ChooseWriting(const ConvertOptions& options, const OutputFormat& format,
                                          std::string& why) {
    why = Misuse(options, format);
    if (!why.empty()) return {};
    WriteOptions writing;
    writing.coding = format.coding;
    for (const std::string& note : options.notes) {
        if (!ReadNote(note, writing.calsTexts, why)) return {};
    }
    return writing;
}

bool ChooseCoding(const ConvertOptions& options, const OutputFormat& format,
                  const PageSource& source, WriteOptions& writing, std::string& why) {
    if (!IsBareStream(source)) {
        why = MisusedHints(options.hints, format);
        if (!why.empty()) return false;
        if (options.hints.coding) writing.coding = options.hints.coding;
        if (options.hints.fillOrder != 0) writing.fillOrder = options.hints.fillOrder;
    }
    if (writing.coding == FaxCoding::Mmr && writing.fillOrder != TIFF_FILL_MSB_FIRST) {
        why = "mmr has the leftmost pixel in the high bit always; --fill-order 2 is for the others";
        return false;
    }
    const bool hasK =
        IsTiff(format) ? options.compression == "g3-2d" : writing.coding == FaxCoding::G3TwoD;
    if (options.kFactor == 0 || hasK) return true;
    why = "--k is for --compression g3-2d of a TIFF file and --coding g3-2d of a bare OUT";
    return false;
}

}  // namespace vellim::tool
