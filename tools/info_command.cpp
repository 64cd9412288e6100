// `vellim info`: a line an image for people, or all there is to know as JSON.
#include <array>
#include <cstdio>

#include "commands.h"
#include "document.h"
#include "image_facts.h"
#include "losses.h"
#include "messages.h"
#include "page_source.h"
#include "tag_names.h"
#include "text.h"
#include "vellim/failures.h"
#include "vellim/files.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

constexpr size_t kTitleCharacters = 60;
constexpr int kJsonIndent = 2;

void Print(const std::string& line) {
    std::fputs(line.c_str(), stdout);
    std::fputc('\n', stdout);
}

// Two decimals at most, and none where there is nothing to tell.
std::string Decimal(double number) {
    std::array<char, 32> digits{};
    std::snprintf(digits.data(), digits.size(), "%.2f", number);
    std::string text = digits.data();
    while (text.back() == '0')
        text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text;
}

std::string SizeInWords(const ImageFacts& facts) {
    const auto side = [](const std::optional<uint32_t>& size) {
        return size ? std::to_string(*size) : std::string("?");
    };
    std::string words = side(facts.width) + " x " + side(facts.height);
    if (facts.height && *facts.height == 0) {
        words += " (height not known, taken as " + std::to_string(facts.dimensions.biHeight) + ")";
    }
    return words;
}

std::string ResolutionInWords(const std::optional<Resolution>& resolution) {
    if (!resolution) return "no resolution";
    const Resolution& r = *resolution;
    const bool absolute = r.unit == kInch || r.unit == kCentimetre;
    const uint32_t unit = absolute ? r.unit : uint32_t{kInch};
    return Decimal(DotsPerInch(r.x, unit)) + " x " + Decimal(DotsPerInch(r.y, unit)) +
           (absolute ? " dpi" : " (resolution without a unit)");
}

std::string DepthInWords(const ImageFacts& facts) {
    const uint64_t bits = uint64_t{facts.bitsPerSample} * facts.samplesPerPixel;
    std::string words = std::to_string(bits) + (bits == 1 ? " bit" : " bits");
    if (facts.samplesPerPixel > 1) {
        words += " (" + std::to_string(facts.samplesPerPixel) + " x " +
                 std::to_string(facts.bitsPerSample) + ")";
    }
    return words;
}

std::string StripsInWords(const ImageFacts& facts) {
    if (facts.tileWidth != 0) {
        return "tiles of " + std::to_string(facts.tileWidth) + " x " +
               std::to_string(facts.tileLength);
    }
    if (facts.strips == 1) return "1 strip";
    return std::to_string(facts.strips) + " strips of " + std::to_string(facts.rowsPerStrip) +
           " lines";
}

std::string FactsInWords(const ImageFacts& facts) {
    std::string words = SizeInWords(facts) + ", " + ResolutionInWords(facts.resolution) + ", " +
                        DepthInWords(facts) + ", ";
    words += facts.photometric ? PhotometricName(*facts.photometric) : "no photometric";
    words += ", " + CompressionInWords(facts) + ", " + StripsInWords(facts);
    if (facts.orientation != 1) words += ", orientation " + std::to_string(facts.orientation);
    if (!facts.title.empty()) {
        words += ", \"" + Shorten(Printable(facts.title), kTitleCharacters) + "\"";
    }
    const std::string obstacle = Obstacle(facts);
    if (!obstacle.empty()) words += "; can't be decoded: " + obstacle;
    return words;
}

void PrintTags(TiffFileHandle file, int32_t image) {
    for (const uint32_t tag : ReadTagNumbers(file, image)) {
        const auto value = ReadTag(file, image, tag);
        if (value) Print(TagLine(file, image, *value));
    }
}

Json JsonOfResolution(const Resolution& resolution) {
    Json json;
    json["x"] = {resolution.x.numerator, resolution.x.denominator};
    json["y"] = {resolution.y.numerator, resolution.y.denominator};
    json["unit"] = resolution.unit;
    json["dotsPerInchX"] = DotsPerInch(resolution.x, resolution.unit);
    json["dotsPerInchY"] = DotsPerInch(resolution.y, resolution.unit);
    return json;
}

Json JsonOfTags(TiffFileHandle file, int32_t image) {
    Json tags = Json::array();
    for (const uint32_t tag : ReadTagNumbers(file, image)) {
        const auto value = ReadTag(file, image, tag);
        if (!value) continue;
        Json json;
        json["tag"] = tag;
        const std::string_view name = TagName(tag);
        json["name"] = name.empty() ? Json(nullptr) : Json(name);
        json["type"] = TypeName(value->type);
        json["count"] = value->count;
        json["value"] = JsonValue(*value);
        tags.push_back(std::move(json));
    }
    return tags;
}

Json JsonOfError(int32_t code) {
    return {{"code", code}, {"message", FailureMessage(code)}, {"meaning", Explanation(code)}};
}

template <typename T>
Json JsonOrNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json(nullptr);
}

Json JsonOfImage(TiffFileHandle file, int32_t image, const ImageFacts& facts) {
    Json json;
    json["image"] = image + 1;
    json["width"] = JsonOrNull(facts.width);
    json["height"] = JsonOrNull(facts.height);
    json["resolution"] = facts.resolution ? JsonOfResolution(*facts.resolution) : Json(nullptr);
    json["bitsPerSample"] = facts.bitsPerSample;
    json["samplesPerPixel"] = facts.samplesPerPixel;
    json["bitsPerPixel"] = uint64_t{facts.bitsPerSample} * facts.samplesPerPixel;
    json["photometric"] = JsonOrNull(facts.photometric);
    json["colour"] = facts.photometric ? Json(PhotometricName(*facts.photometric)) : Json(nullptr);
    json["compression"] = facts.compression;
    json["compressionName"] = CompressionInWords(facts);
    json["t4Options"] = facts.t4Options;
    json["predictor"] = facts.predictor;
    json["fillOrder"] = facts.fillOrder;
    json["orientation"] = facts.orientation;
    json["planarConfiguration"] = facts.planes;
    json["strips"] = facts.strips;
    json["rowsPerStrip"] = facts.rowsPerStrip;
    json["tileWidth"] = facts.tileWidth;
    json["tileLength"] = facts.tileLength;
    json["title"] = facts.title.empty() ? Json(nullptr) : Json(ToUtf8(facts.title));
    const std::string obstacle = Obstacle(facts);
    json["obstacle"] = obstacle.empty() ? Json(nullptr) : Json(obstacle);
    json["tags"] = JsonOfTags(file, image);
    return json;
}

// One image, printed or put behind `images`.
Outcome TellImage(const Document& document, int32_t image, const InfoOptions& options,
                  Json& images) {
    const LoadedImage loaded(document.File(), image);
    if (!loaded) {
        const int32_t code = TiffError();
        Say(document.name, image, FailureInWords(code));
        images.push_back({{"image", image + 1}, {"error", JsonOfError(code)}});
        return Outcome::Failed;
    }
    const ImageFacts facts = GatherFacts(document.File(), image);
    if (options.json) {
        images.push_back(JsonOfImage(document.File(), image, facts));
        return Outcome::Well;
    }
    Print(Place(document.name, image) + ": " + FactsInWords(facts));
    if (options.tags) PrintTags(document.File(), image);
    return Outcome::Well;
}

Outcome TellDocument(const Document& document, const InfoOptions& options, Json& json) {
    TiffFileInfo info = {};
    GetTiffFileInfo(document.File(), &info);
    json["byteOrder"] = info.ByteOrder == TIFF_BIG_ENDIAN ? "MM" : "II";
    json["imageCount"] = document.imageCount;
    json["chainBroken"] = document.chainBroken;
    if (document.imageCount == 0 && !options.json) {
        Print(Place(document.name, kWholeFile) + ": no images");
    }
    Outcome outcome = Outcome::Well;
    Json images = Json::array();
    for (int32_t image = 0; image < document.imageCount; ++image) {
        outcome = Worse(outcome, TellImage(document, image, options, images));
    }
    json["images"] = std::move(images);
    const std::string outOfReach = ImagesOutOfReach(document);
    json["outOfReach"] = outOfReach.empty() ? Json(nullptr) : Json(outOfReach);
    if (!outOfReach.empty()) {
        Say(document.name, kWholeFile, outOfReach);
        outcome = Worse(outcome, Outcome::Damaged);
    }
    return outcome;
}

std::string ColourInWords(const PageInfo& info) {
    const PixelType& type = info.picture.type;
    if (type.colour == Colour::Palette) return "palette";
    if (type.colour == Colour::Rgb) return "RGB";
    return info.whiteIsZero ? "white is zero" : "black is zero";
}

// A page of no TIFF file: a line, and a line for each field of its header.
void PrintPage(const PageSource& source, int32_t image, const PageInfo& info) {
    const Picture& picture = info.picture;
    std::string words = std::to_string(picture.width) + " x " + std::to_string(picture.height) +
                        ", " + ResolutionInWords(info.resolution) + ", " +
                        std::to_string(picture.type.bits) +
                        (picture.type.bits == 1 ? " bit, " : " bits, ") + ColourInWords(info) +
                        ", " + std::string(source.Kind());
    if (!info.storage.empty()) words += ", " + info.storage;
    Print(Place(source.name, image) + ": " + words);
    for (const NamedField& field : info.fields)
        Print("  " + Printable(field.name) + ": " + Printable(field.value));
}

Json JsonOfPage(int32_t image, const PageInfo& info) {
    Json fields = Json::array();
    for (const NamedField& field : info.fields)
        fields.push_back({{"name", ToUtf8(field.name)}, {"value", ToUtf8(field.value)}});
    return {{"image", image + 1},
            {"width", info.picture.width},
            {"height", info.picture.height},
            {"resolution", info.resolution ? JsonOfResolution(*info.resolution) : Json(nullptr)},
            {"bitsPerPixel", info.picture.type.bits},
            {"colour", ColourInWords(info)},
            {"storage", info.storage.empty() ? Json(nullptr) : Json(info.storage)},
            {"fields", std::move(fields)}};
}

Outcome TellPage(const PageSource& source, uint32_t number, const InfoOptions& options,
                 Json& images) {
    const auto image = static_cast<int32_t>(number);
    std::string why;
    const OwnedPage page = OpenPage(source, number, why);
    if (!page) {
        Say(source.name, image, why);
        images.push_back({{"image", image + 1}, {"error", {{"message", why}}}});
        return Outcome::Failed;
    }
    if (options.json) {
        images.push_back(JsonOfPage(image, InfoOf(*page)));
    } else {
        PrintPage(source, image, InfoOf(*page));
    }
    return Outcome::Well;
}

Outcome TellPages(const PageSource& source, const InfoOptions& options, Json& json) {
    json["imageCount"] = source.pageCount;
    json["beside"] = source.beside.kinds;
    const std::string beside = BesideInWords(source);
    const std::string place = Place(source.name, kWholeFile) + ": ";
    if (!options.json && source.pageCount == 0) {
        Print(place + NoImagesInWords(source));
    } else if (!options.json && !beside.empty()) {
        Print(place + beside);
    }
    Outcome outcome = Outcome::Well;
    Json images = Json::array();
    for (uint32_t page = 0; page < source.pageCount; ++page)
        outcome = Worse(outcome, TellPage(source, page, options, images));
    json["images"] = std::move(images);
    const std::string stray = OutOfReach(source);
    json["outOfReach"] = stray.empty() ? Json(nullptr) : Json(stray);
    if (stray.empty()) return outcome;
    Say(source.name, kWholeFile, stray);
    return Worse(outcome, Outcome::Damaged);
}

Outcome TellFile(const std::string& path, const InfoOptions& options, Json& json) {
    std::string why;
    json["file"] = ToUtf8(path);
    const auto source = OpenPageSource(path, options.hints, why);
    if (!source) {
        Say(path, kWholeFile, why);
        json["error"] = why;
        return Outcome::Failed;
    }
    json["kind"] = source->Kind();
    return source->tiff ? TellDocument(*source->tiff, options, json)
                        : TellPages(*source, options, json);
}

}  // namespace

Outcome RunInfo(const InfoOptions& options) {
    Outcome outcome = Outcome::Well;
    Json files = Json::array();
    for (const std::string& path : options.files) {
        Json file;
        outcome = Worse(outcome, TellFile(path, options, file));
        if (options.json) files.push_back(std::move(file));
    }
    if (options.json) Print(Json{{"files", std::move(files)}}.dump(kJsonIndent));
    return outcome;
}

}  // namespace vellim::tool
