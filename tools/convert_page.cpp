// The road of a page: the source gives a stored line, which is brought to its right sense in place;
// then it goes through the stages that this page needs (pixels made scalable, scaled, made what the
// format wants) to the writer. Each stage holds a line or two, so that memory doesn't grow with the
// page's height.
//
// The output is begun with the first line that comes: an image that gives none leaves no file, and
// memory for a line's width is taken only after the library has accepted that width.
#include "convert_page.h"

#include <cmath>
#include <new>
#include <system_error>

#include "line_scaler.h"
#include "messages.h"
#include "pixel_format.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

// Missing lines are made white up to this many bytes. A damaged page is far below it (A0 at 600
// dots per inch is 70 MB); beyond it, a few bytes of rubbish ask for a disk full of nothing.
constexpr uint64_t kMostFilledBytes = 4ULL << 30U;
constexpr double kMetresPerInch = 0.0254;
constexpr uint32_t kPageNumber = 297;
constexpr std::string_view kCalsOrientation = "rorient";  // the record's name

struct PageRun {
    const PageRequest* request = nullptr;
    const PageInfo* source = nullptr;
    Picture shape;  // what it is to be drawn out to
    std::optional<Resolution> resolution;
    TiffPlan plan;
    WriteOptions writeOptions;
    std::string failure;  // on the output's side; behind it in time come its users
    std::unique_ptr<OutputFile> output;
    LineSink stages;
    uint32_t linesCame = 0;
    Progress* progress = nullptr;
};

bool IsScaled(const PageRun& run) {
    const Picture& source = run.source->picture;
    return run.shape.width != source.width || run.shape.height != source.height;
}

// The page behind the scaler, if there is one.
Picture Scaled(const PageRun& run) {
    Picture scaled = run.shape;
    if (IsScaled(run)) scaled.type = ScalableType(scaled.type);
    return scaled;
}

std::optional<LineSink> BeginTiffPage(PageRun& run, const Picture& target) {
    TiffPage page;
    page.picture = target;
    page.whiteIsZero = run.plan.fax || run.source->whiteIsZero;
    page.resolution = run.resolution;
    page.carried = run.source->carried;
    if (!run.request->keepsPageNumbers) {
        std::erase_if(page.carried, [](const TagValue& v) { return v.tag == kPageNumber; });
    }
    page.plan = run.plan;
    return BeginTiff(page, *run.request->tiff, run.failure);
}

std::optional<LineSink> BeginFile(PageRun& run, const Picture& target) {
    run.output = CreateOutput(run.request->path, run.request->overwrite, run.failure);
    if (!run.output) return {};
    auto writer = run.request->format->begin(target, run.writeOptions, *run.output);
    if (!writer) run.failure = run.output->failure;
    return writer;
}

// Makes the stages, from the writer back to the source.
bool BeginOutput(PageRun& run) {
    const PageRequest& request = *run.request;
    const bool toTiff = request.tiff != nullptr;
    const Picture scaled = Scaled(run);
    Picture target = scaled;
    target.type = toTiff ? run.plan.type : request.format->written(scaled.type);
    auto writer = toTiff ? BeginTiffPage(run, target) : BeginFile(run, target);
    if (!writer) return false;
    run.stages = ConvertShades(scaled, target.type, request.halftone, std::move(*writer));
    if (!IsScaled(run)) return true;
    const Picture& source = run.source->picture;
    Picture scalable = source;
    scalable.type = scaled.type;
    run.stages = ScaleLines(scalable, scaled.width, scaled.height, std::move(run.stages));
    run.stages = ConvertPixels(source, scalable.type, std::move(run.stages));
    return true;
}

// The TIFF writer tells its reason itself.
bool FailWriting(PageRun& run) {
    if (run.output) run.failure = run.output->failure;
    return false;
}

bool TakeLine(PageRun& run, uint8_t* line) {
    if (run.linesCame == 0 && !BeginOutput(run)) return false;
    const Picture& source = run.source->picture;
    NormaliseLine(line, source.width, source.type, run.source->whiteIsZero);
    if (!run.stages.Put(line)) return FailWriting(run);
    ++run.linesCame;
    run.progress->Step(run.linesCame);
    return true;
}

bool OnLine(void* data, uint8_t* line) noexcept {
    auto& run = *static_cast<PageRun*>(data);
    try {
        return TakeLine(run, line);
    } catch (const std::bad_alloc&) {
        run.failure = FailureMessage(TIFF_NO_MEMORY);
    } catch (const std::system_error& error) {  // no thread to be had
        run.failure = error.what();
    }
    return false;
}

bool TooManyMissing(const PageRun& run) {
    const Picture& source = run.source->picture;
    const uint32_t missing = source.height - run.linesCame;
    return RowBytes(source) * uint64_t{missing} > kMostFilledBytes;
}

bool FillWithWhite(PageRun& run) {
    const Picture& source = run.source->picture;
    const std::vector<uint8_t> white = WhiteLine(source);
    for (uint32_t y = run.linesCame; y < source.height; ++y) {
        if (!run.stages.Put(white.data())) return FailWriting(run);
    }
    return true;
}

bool FinishOutput(PageRun& run) {
    if (!run.stages.Finish()) return FailWriting(run);
    return !run.output || Commit(*run.output) || FailWriting(run);
}

// Draws out the page to square pixels; leaves it as it is where that can't be.
void MakeSquare(const PageSource& source, PageRun& run) {
    const auto image = static_cast<int32_t>(run.request->page);
    if (!run.resolution) {
        Say(source.name, image, "it has no resolution, so its shape is left as it is");
        return;
    }
    const auto squared = Squared(run.shape, *run.resolution);
    if (!squared) {
        Say(source.name, image, "its resolutions make no sense, so its shape is left as it is");
        return;
    }
    const bool widened = squared->width != run.shape.width;
    run.shape = *squared;
    (widened ? run.resolution->x : run.resolution->y) =
        widened ? run.resolution->y : run.resolution->x;
}

void SetDotsPerInch(PageRun& run, uint32_t dpi) {
    run.resolution = Resolution{{dpi, 1}, {dpi, 1}, kInch};
    run.shape.pelsPerMetreX = static_cast<uint32_t>(std::lround(dpi / kMetresPerInch));
    run.shape.pelsPerMetreY = run.shape.pelsPerMetreX;
    run.shape.absoluteResolution = true;
}

// A raster file that can't be read to its end is no document with a damaged page in it.
PageResult Fail(const PageSource& source, const PageRequest& request, const std::string& why) {
    Say(source.name, static_cast<int32_t>(request.page), why);
    return {Outcome::Failed, false, !source.IsDocument()};
}

PageResult FailOutput(const PageRequest& request, const std::string& why) {
    const std::string& path = request.tiff != nullptr ? request.tiff->target : request.path;
    Say(path == "-" ? "standard output" : path, kWholeFile, why);
    return {Outcome::Failed, false, true};
}

// What is to be done at the end of the lines.
PageResult Finish(const PageSource& source, PageRun& run, const LinesEnd& end) {
    const PageRequest& request = *run.request;
    if (!run.failure.empty()) return FailOutput(request, run.failure);
    const uint32_t due = run.source->picture.height;
    const bool damaged = run.linesCame < due;
    if (damaged) {
        const PageResult failed =
            Fail(source, request, end.reason + " (" + LinesOf(run.linesCame, due) + " came)");
        if (!end.worthKeeping || run.linesCame == 0) return failed;
        if (TooManyMissing(run)) {
            return Fail(source, request, "too many lines are missing to fill them with white");
        }
        if (!FillWithWhite(run)) return FailOutput(request, run.failure);
    }
    if (!damaged && !end.whole) Say(source.name, static_cast<int32_t>(request.page), end.reason);
    const bool loses = damaged || !end.whole || HoldsMore(source);
    if (loses && request.sparesInput && run.output && IsInput(source, run.output->passing)) {
        return FailOutput(request, kInputStays);
    }
    if (!FinishOutput(run)) return FailOutput(request, run.failure);
    return {damaged || !end.whole ? Outcome::Damaged : Outcome::Well, true, false};
}

// Each once a run.
void TellNotes(const PageSource& source, const PageRequest& request,
               const std::vector<std::string>& notes) {
    for (const std::string& note : notes) {
        if (!request.notes->insert(note).second) continue;
        Say(source.name, static_cast<int32_t>(request.page), note);
    }
}

// A CALS file keeps what another said of the page, as far as nothing else was asked for.
void CarryRecords(PageRun& run) {
    std::vector<NamedField>& texts = run.writeOptions.calsTexts;
    texts.insert(texts.begin(), run.source->calsTexts.begin(), run.source->calsTexts.end());
    for (const NamedField& field : run.source->fields) {
        if (field.name == kCalsOrientation) run.writeOptions.calsOrientation = field.value;
    }
}

// Whether a CALS file asks for its picture to be turned. Of the two ways in which an upright one is
// told, the second is that of this library.
bool IsTurned(const PageInfo& page) {
    return std::any_of(page.fields.begin(), page.fields.end(), [](const NamedField& field) {
        return field.name == kCalsOrientation && field.value != "000,270" &&
               field.value != "090,270";
    });
}

// Settles how the page is written, and adds what the output can't tell of it to `notes`. False,
// with the reason in `why`, if it can't be written.
bool PlanOutput(PageRun& run, std::vector<std::string>& notes, std::string& why) {
    const PageRequest& request = *run.request;
    const bool keepsTexts = request.format != nullptr && HoldsCalsTexts(*request.format);
    if (!keepsTexts && !run.source->calsTexts.empty()) {
        notes.emplace_back("its CALS text records aren't carried over");
    }
    if (!keepsTexts && IsTurned(*run.source)) {
        notes.emplace_back("it is to be turned as its rorient record says, which isn't done");
    }
    if (request.tiff != nullptr) {
        auto plan = PlanTiffPage(Scaled(run), request.tiffOptions, why);
        if (!plan) return false;
        notes.insert(notes.end(), plan->notes.begin(), plan->notes.end());
        run.plan = std::move(*plan);
        return true;
    }
    run.writeOptions = request.writeOptions;
    if (keepsTexts) CarryRecords(run);
    const auto prepare = request.format->prepare;
    return prepare == nullptr || prepare(Scaled(run), run.writeOptions, notes, why);
}

}  // namespace

bool IsInput(const PageSource& source, const PassingFile& file) {
    const OwnedDescriptor& input = source.tiff ? source.tiff->descriptor : source.descriptor;
    struct stat status = {};
    return file.replaced.st_mode != 0 && fstat(input.Get(), &status) == 0 &&
           status.st_dev == file.replaced.st_dev && status.st_ino == file.replaced.st_ino;
}

bool HoldsMore(const PageSource& source) {
    return !source.beside.kinds.empty() || !OutOfReach(source).empty();
}

PageResult ConvertPage(const PageSource& source, const PageRequest& request) {
    std::string why;
    const OwnedPage page = OpenPage(source, request.page, why);
    if (!page) return Fail(source, request, why);
    const PageInfo& info = InfoOf(*page);

    Progress progress(source.name, static_cast<int32_t>(request.page), info.picture.height);
    PageRun run;
    run.request = &request;
    run.source = &info;
    run.shape = info.picture;
    run.resolution = info.resolution;
    run.progress = &progress;
    if (request.square) MakeSquare(source, run);
    if (request.dpi != 0) SetDotsPerInch(run, request.dpi);
    std::vector<std::string> notes;
    if (!PlanOutput(run, notes, why)) return Fail(source, request, why);
    TellNotes(source, request, notes);
    TellNotes(source, request, info.givenUp);
    const LinesEnd end = PushLines(*page, {OnLine, &run});
    return Finish(source, run, end);
}

}  // namespace vellim::tool
