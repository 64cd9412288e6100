// The road of a page: the decoder gives a stored line, which is brought to its right sense in
// place; then it goes through the stages that this page needs (pixels made scalable, scaled, made
// what the format wants) to the writer. Each stage holds a line or two, so that memory doesn't grow
// with the page's height.
//
// The output is begun with the first line that comes: an image that gives none leaves no file, and
// memory for a line's width is taken only after the library has accepted that width.
#include "convert_page.h"

#include <new>

#include "line_scaler.h"
#include "messages.h"
#include "pixel_format.h"
#include "stored_picture.h"
#include "vellim/decode.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

// Missing lines are made white up to this many bytes. A damaged page is far below it (A0 at 600
// dots per inch is 70 MB); beyond it, a few bytes of rubbish ask for a disk full of nothing.
constexpr uint64_t kMostFilledBytes = 4ULL << 30U;

struct PageRun {
    const PageRequest* request = nullptr;
    StoredPicture stored;
    Picture shape;  // what it is to be drawn out to
    std::unique_ptr<OutputFile> output;
    LineSink stages;
    uint32_t linesCame = 0;
    std::string failure;  // on the output's side
    Progress progress;
};

// Makes the stages, from the writer back to the decoder.
bool BeginOutput(PageRun& run) {
    const PageRequest& request = *run.request;
    run.output = CreateOutput(request.path, run.failure);
    if (!run.output) return false;

    const Picture& source = run.stored.picture;
    const bool scaled = run.shape.width != source.width || run.shape.height != source.height;
    Picture scalable = source;
    if (scaled) scalable.type = ScalableType(source.type);
    Picture written = run.shape;
    written.type = scalable.type;
    Picture target = written;
    target.type = request.format->written(written.type);

    auto writer = request.format->begin(target, *run.output);
    if (!writer) {
        run.failure = run.output->failure;
        return false;
    }
    LineSink stages = ConvertPixels(written, target.type, std::move(*writer));
    if (scaled) {
        stages = ScaleLines(scalable, run.shape.width, run.shape.height, std::move(stages));
        stages = ConvertPixels(source, scalable.type, std::move(stages));
    }
    run.stages = std::move(stages);
    return true;
}

bool TakeLine(PageRun& run, uint8_t* line) {
    if (!run.output && !BeginOutput(run)) return false;
    const Picture& source = run.stored.picture;
    NormaliseLine(line, source.width, source.type, run.stored.whiteIsZero);
    if (!run.stages.Put(line)) {
        run.failure = run.output->failure;
        return false;
    }
    return true;
}

uint32_t OnLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) noexcept {
    auto& run = *reinterpret_cast<PageRun*>(callbackData);
    bool taken = false;
    try {
        taken = TakeLine(run, line);
    } catch (const std::bad_alloc&) {
        run.failure = FailureMessage(TIFF_NO_MEMORY);
    }
    if (!taken) return TIFF_IO_ERROR;
    run.linesCame = lineNumber + 1;
    run.progress.Step(run.linesCame);
    return TIFF_LINE_GO_ON;
}

bool FillWithWhite(PageRun& run) {
    const Picture& source = run.stored.picture;
    const uint32_t missing = source.height - run.linesCame;
    if (RowBytes(source) * uint64_t{missing} > kMostFilledBytes) {
        run.failure = "too many lines are missing to fill them with white";
        return false;
    }
    const std::vector<uint8_t> white = WhiteLine(source);
    for (uint32_t i = 0; i < missing; ++i) {
        if (run.stages.Put(white.data())) continue;
        run.failure = run.output->failure;
        return false;
    }
    return true;
}

bool FinishOutput(PageRun& run) {
    if (run.stages.Finish() && Commit(*run.output)) return true;
    run.failure = run.output->failure;
    return false;
}

// What the page is drawn out to; the page as it is where nothing can be made square.
Picture ShapeOf(const Document& document, const PageRequest& request, const Picture& picture,
                const ImageFacts& facts) {
    if (!request.square) return picture;
    if (!facts.resolution) {
        Say(document.name, request.image, "it has no resolution, so its shape is left as it is");
        return picture;
    }
    const auto squared = Squared(picture, *facts.resolution);
    if (squared) return *squared;
    Say(document.name, request.image,
        "its resolutions make no sense, so its shape is left as it is");
    return picture;
}

Outcome Fail(const Document& document, const PageRequest& request, const std::string& why) {
    Say(document.name, request.image, why);
    return Outcome::Failed;
}

Outcome FailOutput(const PageRequest& request, const std::string& why) {
    Say(request.path == "-" ? "standard output" : request.path, kWholeFile, why);
    return Outcome::Failed;
}

}  // namespace

Outcome ConvertPage(const Document& document, const PageRequest& request) {
    const LoadedImage loaded(document.File(), request.image);
    if (!loaded) return Fail(document, request, FailureInWords(TiffError()));
    const ImageFacts facts = GatherFacts(document.File(), request.image);
    std::string why;
    auto stored = DescribePicture(document.File(), request.image, facts, why);
    if (!stored) return Fail(document, request, why);

    const Picture shape = ShapeOf(document, request, stored->picture, facts);
    const uint32_t due = stored->picture.height;
    PageRun run{&request, std::move(*stored),
                shape,    nullptr,
                {},       0,
                "",       Progress(document.name, request.image, due)};
    const bool whole = DecodeTiffImage(document.File(), request.image, 0, 0,
                                       reinterpret_cast<uintptr_t>(&run), OnLine) != 0;
    const int32_t code = whole ? int32_t{TIFF_UNEXPECTED_END} : TiffError();
    if (!run.failure.empty()) return FailOutput(request, run.failure);

    const bool damaged = run.linesCame < due;
    if (damaged) {
        Say(document.name, request.image,
            FailureMessage(code) + " (" + LinesOf(run.linesCame, due) + " came)");
    }
    if (run.linesCame == 0) return Outcome::Failed;
    if (damaged && !FillWithWhite(run)) return FailOutput(request, run.failure);
    if (!FinishOutput(run)) return FailOutput(request, run.failure);
    return damaged || !whole ? Outcome::Damaged : Outcome::Well;
}

}  // namespace vellim::tool
