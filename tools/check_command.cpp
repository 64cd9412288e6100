// `vellim check`: decodes every image to its end and tells how far that went.
#include <cstdio>

#include "commands.h"
#include "document.h"
#include "image_facts.h"
#include "losses.h"
#include "messages.h"
#include "page_source.h"
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

Outcome Report(const std::string& name, int32_t image, Outcome outcome, const std::string& text) {
    std::printf("%s: %s\n", Place(name, image).c_str(), text.c_str());
    return outcome;
}

// What `came` of the lines that were `due`, and why there weren't more.
Outcome ReportLines(const std::string& name, int32_t image, uint32_t came, uint32_t due,
                    const std::string& why) {
    const std::string lines = LinesOf(came, due) + " good";
    if (why.empty()) return Report(name, image, Outcome::Well, lines);
    return Report(name, image, came == 0 ? Outcome::Failed : Outcome::Damaged, lines + ": " + why);
}

Outcome CheckImage(const Document& document, int32_t image) {
    const LoadedImage loaded(document.File(), image);
    if (!loaded) {
        return Report(document.name, image, Outcome::Failed,
                      "no lines: " + FailureInWords(TiffError()));
    }
    const ImageFacts facts = GatherFacts(document.File(), image);
    const std::string obstacle = Obstacle(facts);
    if (!obstacle.empty()) {
        return Report(document.name, image, Outcome::Failed, "no lines: " + obstacle);
    }
    const auto due = static_cast<uint32_t>(facts.dimensions.biHeight);
    CheckRun run{0, Progress(document.name, image, due)};
    const bool whole = DecodeTiffImage(document.File(), image, 0, 0,
                                       reinterpret_cast<uintptr_t>(&run), CountLine) != 0;
    // A run that ends in peace before the last line has lost lines all the same.
    const int32_t code = whole ? int32_t{TIFF_UNEXPECTED_END} : TiffError();
    return ReportLines(document.name, image, run.linesCame, due,
                       whole && run.linesCame >= due ? "" : FailureInWords(code));
}

Outcome CheckDocument(const Document& document) {
    if (document.imageCount == 0) {
        return Report(document.name, kWholeFile, Outcome::Well, "no images");
    }
    Outcome outcome = Outcome::Well;
    for (int32_t image = 0; image < document.imageCount; ++image) {
        outcome = Worse(outcome, CheckImage(document, image));
    }
    const std::string outOfReach = ImagesOutOfReach(document);
    if (!outOfReach.empty()) {
        outcome = Worse(outcome, Report(document.name, kWholeFile, Outcome::Damaged, outOfReach));
    }
    return outcome;
}

bool PassLine(void* data, uint8_t* /*line*/) noexcept {
    auto& run = *static_cast<CheckRun*>(data);
    run.progress.Step(++run.linesCame);
    return true;
}

Outcome CheckPage(const PageSource& source, uint32_t number) {
    const auto image = static_cast<int32_t>(number);
    std::string why;
    const OwnedPage page = OpenPage(source, number, why);
    if (!page) return Report(source.name, image, Outcome::Failed, "no lines: " + why);
    const uint32_t due = InfoOf(*page).picture.height;
    CheckRun run{0, Progress(source.name, image, due)};
    const LinesEnd end = PushLines(*page, {PassLine, &run});
    return ReportLines(source.name, image, run.linesCame, due,
                       end.whole && run.linesCame >= due ? "" : end.reason);
}

Outcome CheckFile(const std::string& path, const SourceHints& hints) {
    std::string why;
    const auto source = OpenPageSource(path, hints, why);
    if (!source) {
        Say(path, kWholeFile, why);
        return Outcome::Failed;
    }
    if (source->tiff) return CheckDocument(*source->tiff);
    if (source->pageCount == 0) {
        Report(path, kWholeFile, Outcome::Well, NoImagesInWords(*source));
    }
    Outcome outcome = Outcome::Well;
    for (uint32_t page = 0; page < source->pageCount; ++page)
        outcome = Worse(outcome, CheckPage(*source, page));
    const std::string stray = OutOfReach(*source);
    if (stray.empty()) return outcome;
    return Worse(outcome, Report(path, kWholeFile, Outcome::Damaged, stray));
}

}  // namespace

Outcome RunCheck(const CheckOptions& options) {
    Outcome outcome = Outcome::Well;
    for (const std::string& path : options.files)
        outcome = Worse(outcome, CheckFile(path, options.hints));
    return outcome;
}

}  // namespace vellim::tool
