// `vellim check`: decodes every image to its end and tells how far that went.
#include <cstdio>

#include "commands.h"
#include "document.h"
#include "image_facts.h"
#include "losses.h"
#include "messages.h"
#include "vellim/decode.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

struct CheckRun {
    uint32_t linesCame = 0;
    Progress progress;
};

uint32_t CountLine(uint8_t* /*line*/, uint32_t lineNumber, uintptr_t callbackData) noexcept {
    auto* run = reinterpret_cast<CheckRun*>(callbackData);
    run->linesCame = lineNumber + 1;
    run->progress.Step(run->linesCame);
    return TIFF_LINE_GO_ON;
}

Outcome Report(const Document& document, int32_t image, Outcome outcome, const std::string& text) {
    std::printf("%s: %s\n", Place(document.name, image).c_str(), text.c_str());
    return outcome;
}

Outcome CheckImage(const Document& document, int32_t image) {
    const LoadedImage loaded(document.File(), image);
    if (!loaded) {
        return Report(document, image, Outcome::Failed, "no lines: " + FailureInWords(TiffError()));
    }
    const ImageFacts facts = GatherFacts(document.File(), image);
    const std::string obstacle = Obstacle(facts);
    if (!obstacle.empty()) return Report(document, image, Outcome::Failed, "no lines: " + obstacle);
    const auto due = static_cast<uint32_t>(facts.dimensions.biHeight);
    CheckRun run{0, Progress(document.name, image, due)};
    const bool whole = DecodeTiffImage(document.File(), image, 0, 0,
                                       reinterpret_cast<uintptr_t>(&run), CountLine) != 0;
    // A run that ends in peace before the last line has lost lines all the same.
    const int32_t code = whole ? int32_t{TIFF_UNEXPECTED_END} : TiffError();
    const std::string lines = LinesOf(run.linesCame, due) + " good";
    if (whole && run.linesCame >= due) return Report(document, image, Outcome::Well, lines);
    return Report(document, image, run.linesCame == 0 ? Outcome::Failed : Outcome::Damaged,
                  lines + ": " + FailureInWords(code));
}

Outcome CheckDocument(const std::string& path) {
    std::string why;
    const auto document = OpenDocument(path, why);
    if (!document) {
        Say(path, kWholeFile, why);
        return Outcome::Failed;
    }
    if (document->imageCount == 0) return Report(*document, kWholeFile, Outcome::Well, "no images");
    Outcome outcome = Outcome::Well;
    for (int32_t image = 0; image < document->imageCount; ++image) {
        outcome = Worse(outcome, CheckImage(*document, image));
    }
    const std::string outOfReach = ImagesOutOfReach(*document);
    if (!outOfReach.empty()) {
        outcome = Worse(outcome, Report(*document, kWholeFile, Outcome::Damaged, outOfReach));
    }
    return outcome;
}

}  // namespace

Outcome RunCheck(const CheckOptions& options) {
    Outcome outcome = Outcome::Well;
    for (const std::string& path : options.files)
        outcome = Worse(outcome, CheckDocument(path));
    return outcome;
}

}  // namespace vellim::tool
