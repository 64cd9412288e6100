// `vellim paint`: what a window would show of a page, as a picture.
#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "convert_page.h"
#include "halftone.h"
#include "handles.h"
#include "messages.h"
#include "note_dialog_answer.h"
#include "paint_subject.h"
#include "vellim/decode.h"
#include "vellim/failures.h"
#include "vellim/notes.h"
#include "vellim/queries.h"
#include "vellim/screen.h"
#include "vellim/windows.h"

namespace vellim::tool {
namespace {

constexpr const char* kFormatOfPipes = "png";
constexpr const char* kFormatNames = "png, bmp, pbm, pgm and ppm";
constexpr double kMetresPerInch = 0.0254;
constexpr int32_t kDisplayBits = 24;
constexpr uint32_t kDegreesPerTurn = 90;

using OwnedWindow = Owned<WindowHandle, 0U, &DestroyWindow>;

class WindowContext {
  public:
    explicit WindowContext(WindowHandle window) : window_(window), context_(GetDC(window)) {}
    ~WindowContext() {
        if (context_ != 0) ReleaseDC(window_, context_);
    }
    WindowContext(const WindowContext&) = delete;
    WindowContext& operator=(const WindowContext&) = delete;

    [[nodiscard]] DeviceContextHandle Get() const { return context_; }

  private:
    WindowHandle window_;
    DeviceContextHandle context_;
};

Outcome Fail(const std::string& name, const std::string& why) {
    Say(name, kWholeFile, why);
    return Outcome::Failed;
}

Overwrite OverwriteOf(const PaintOptions& options) {
    return options.force ? Overwrite::Allow : Overwrite::Refuse;
}

// The formats that take any picture, whole.
const OutputFormat* FormatOf(const std::string& output) {
    const OutputFormat* format = output == "-" ? FindFormat(kFormatOfPipes) : FormatOfPath(output);
    return format == nullptr || IsTiff(*format) || format->prepare != nullptr ? nullptr : format;
}

uint32_t ViewFlagsOf(const PaintOptions& options) {
    uint32_t flags = options.degrees / kDegreesPerTurn;
    if (options.zoom) flags |= uint32_t{VIEW_ZOOM};
    if (options.fit) flags |= uint32_t{VIEW_FIT};
    if (options.invert) flags |= uint32_t{VIEW_INVERTED};
    return flags;
}

ZoomRatios RatiosOf(const PaintOptions& options) {
    const PaintOptions::Zoom zoom = options.zoom.value_or(PaintOptions::Zoom{});
    const auto numerator = static_cast<int32_t>(zoom.numerator);
    const auto denominator = static_cast<int32_t>(zoom.denominator);
    return {numerator, denominator, numerator, denominator};
}

// A position is a pixel.
void Scroll(WindowHandle window, int32_t bar, int32_t picture, uint32_t side, uint32_t position) {
    const int32_t beyond = std::max(picture - static_cast<int32_t>(side), 0);
    SetScrollRange(window, bar, 0, beyond, 0);
    SetScrollPos(window, bar, std::min(static_cast<int32_t>(position), beyond), 0);
}

struct Painted {
    bool begun = false;  // the decoder was; else nothing of the page is there
    int32_t failure = TIFF_SUCCESS;
    RECT whole = {};  // the size of the picture as it is shown
};

// How the view lies on the picture.
struct Shown {
    RECT whole = {};  // the size of the picture as it is shown
    int32_t width = 0;
    int32_t height = 0;  // of the picture as it is stored
};

// Draws a note that an image in memory has, as a context has it that nothing was painted on: the
// picture is cut out of that of its paint. Where the view begins, right and below, is all that the
// note's place depends on.
void DrawNote(const PaintOptions& options, WindowHandle window, const NoteRecord& note,
              const Shown& shown) {
    constexpr POINT kCorner = {0, 0};
    constexpr ColorRef kWhite = 0xFFFFFF, kBlack = 0;
    const WindowContext context(window);
    if (context.Get() == 0) return;
    SetTextColor(context.Get(), options.invert ? kWhite : kBlack);
    SetBkColor(context.Get(), options.invert ? kBlack : kWhite);
    const double scaleX = double{1} * shown.whole.right / shown.width;
    const double scaleY = double{1} * shown.whole.bottom / shown.height;
    const POINT target = {-GetScrollPos(window, SB_HORZ), -GetScrollPos(window, SB_VERT)};
    PaintNotePlus(window, context.Get(), &kCorner, scaleX, scaleY, &target, &note);
}

// Shows the note of a TIFF page.
void PaintNote(const PaintOptions& options, const PageSource& source, const PaintSubject& subject,
               WindowHandle window, const RECT& whole) {
    if (options.noNotes || !source.tiff) return;
    const TiffFileHandle file = source.tiff->File();
    const LoadedImage loaded(file, subject.image);
    TiffDimensions size = {};
    OwnedNote note;
    if (!loaded || GetTiffDimensions(file, subject.image, &size) != 0 || size.biWidth <= 0 ||
        size.biHeight <= 0 ||
        GetNoteTagFromTiff(file, static_cast<uint32_t>(subject.image), &note.record) == 0) {
        return;
    }
    if (options.degrees != 0) {
        Say(source.name, subject.image, "its note isn't shown, for the page is turned");
        return;
    }
    DrawNote(options, window, note.record, {whole, size.biWidth, size.biHeight});
}

Painted PaintPage(const PaintOptions& options, const PaintSubject& subject, WindowHandle window) {
    const WindowContext context(window);
    if (context.Get() == 0) return {false, TIFF_NO_MEMORY, {}};
    const uint32_t flags = ViewFlagsOf(options);
    const ZoomRatios ratios = RatiosOf(options);
    const char* path = subject.path.c_str();
    RECT whole = {};
    if (GetScreenViewSize(subject.format, window, context.Get(), path, subject.image, &ratios,
                          flags, &whole) == 0) {
        return {false, TiffError(), {}};
    }
    Scroll(window, SB_HORZ, whole.right, options.width, options.scrollX);
    Scroll(window, SB_VERT, whole.bottom, options.height, options.scrollY);
    if (DecompressToScreen(subject.format, window, context.Get(), path, subject.image, &ratios,
                           flags) != 0) {
        return {true, TIFF_SUCCESS, whole};
    }
    return {TiffError() != TIFF_NO_MEMORY, TiffError(), whole};
}

uint32_t CountLine(uint8_t* /*line*/, uint32_t lineNumber, uintptr_t callbackData) noexcept {
    *reinterpret_cast<uint32_t*>(callbackData) = lineNumber + 1;
    return TIFF_LINE_GO_ON;
}

struct Lines {
    uint32_t came = 0;
    uint32_t due = 0;
};

Lines CountTiffLines(TiffFileHandle file, int32_t image) {
    Lines lines;
    const LoadedImage loaded(file, image);
    TiffDimensions size = {};
    if (!loaded || GetTiffDimensions(file, image, &size) != 0) return lines;
    lines.due = static_cast<uint32_t>(std::max(size.biHeight, 0));
    DecodeTiffImage(file, image, 0, 0, reinterpret_cast<uintptr_t>(&lines.came), CountLine);
    return lines;
}

bool PassLine(void* data, uint8_t* /*line*/) noexcept {
    ++static_cast<Lines*>(data)->came;
    return true;
}

// The library doesn't tell how many lines of a paint came, so they are counted by decoding them
// once more. Without any, there may be a reason in `why`.
Lines CountLines(const PageSource& source, const PaintSubject& subject, std::string& why) {
    if (source.tiff) return CountTiffLines(source.tiff->File(), subject.image);
    if (subject.format != SCREEN_FORMAT_CALS) return {};
    const OwnedPage page = OpenPage(source, static_cast<uint32_t>(subject.image), why);
    if (!page) return {};
    Lines lines{0, InfoOf(*page).picture.height};
    PushLines(*page, {PassLine, &lines});
    return lines;
}

// Tells why a page was painted in part or not at all, in the words of the other commands.
Outcome TellFailure(const PageSource& source, const PaintSubject& subject, const Painted& painted) {
    std::string why;
    const Lines lines = CountLines(source, subject, why);
    if (why.empty() && (!painted.begun || lines.due == 0)) {
        why = FailureInWords(painted.failure);
    } else if (why.empty()) {
        why = FailureMessage(painted.failure);
        if (lines.came < lines.due) why += " (" + LinesOf(lines.came, lines.due) + " came)";
    }
    Say(source.name, subject.image, why);
    return painted.begun && lines.came > 0 ? Outcome::Damaged : Outcome::Failed;
}

// Pixels of a window are blue, green, red.
bool PutRow(const LineSink& lines, const uint8_t* pixels, std::vector<uint8_t>& row) {
    for (size_t i = 0; i + 2 < row.size(); i += 3) {
        row[i] = pixels[i + 2];
        row[i + 1] = pixels[i + 1];
        row[i + 2] = pixels[i];
    }
    return lines.Put(row.data());
}

// False with the reason in `output.failure`.
bool WritePixels(const WindowPixels& pixels, uint32_t dpi, const OutputFormat& format,
                 OutputFile& output) {
    Picture picture;
    picture.width = static_cast<uint32_t>(pixels.Width);
    picture.height = static_cast<uint32_t>(pixels.Height);
    picture.type = kRgb;
    picture.pelsPerMetreX = static_cast<uint32_t>(std::lround(dpi / kMetresPerInch));
    picture.pelsPerMetreY = picture.pelsPerMetreX;
    Picture written = picture;
    written.type = format.written(picture.type);
    auto writer = format.begin(written, {}, output);
    if (!writer) return false;
    const LineSink lines =
        ConvertShades(picture, written.type, Halftone::FloydSteinberg, std::move(*writer));
    std::vector<uint8_t> row(RowBytes(picture));
    for (uint32_t y = 0; y < picture.height; ++y) {
        if (!PutRow(lines, pixels.Bits + size_t{y} * pixels.RowBytes, row)) return false;
    }
    return lines.Finish() && Commit(output);
}

Outcome WriteWindow(const PaintOptions& options, const PageSource& source,
                    const OutputFormat& format, WindowHandle window) {
    const std::string name = options.output == "-" ? "standard output" : options.output;
    WindowPixels pixels = {};
    if (GetWindowPixels(window, &pixels) == 0) return Fail(name, FailureMessage(TIFF_NO_MEMORY));
    std::string why;
    const auto output = CreateOutput(options.output, OverwriteOf(options), why);
    if (!output) return Fail(name, why);
    if (IsInput(source, output->passing)) {
        return Fail(name, "it is the input too, and a view of it doesn't replace it");
    }
    return WritePixels(pixels, options.dpi, format, *output) ? Outcome::Well
                                                             : Fail(name, output->failure);
}

}  // namespace

Outcome RunPaint(const PaintOptions& options) {
    const OutputFormat* format = FormatOf(options.output);
    if (format == nullptr) {
        Say("", kWholeFile,
            "a view can't be written as \"" + Place(options.output, kWholeFile) +
                "\"; served are " + kFormatNames);
        return Outcome::Usage;
    }
    std::string why;
    const auto source = OpenPaintSource(options.input, why);
    if (!source) return Fail(options.input, why);
    const auto subject = FindPaintSubject(*source, options.page, why);
    if (!subject) return Fail(options.input, why);
    if (!MayWrite(options.output, OverwriteOf(options), why)) return Fail(options.output, why);

    const auto dots = static_cast<int32_t>(options.dpi);
    const DisplaySettings display = {dots, dots, kDisplayBits};
    SetDisplay(&display);
    const OwnedWindow window(CreateMemoryWindow(static_cast<int32_t>(options.width),
                                                static_cast<int32_t>(options.height), 0));
    if (!window) return Fail("", "not enough memory for a window of that size");
    const Painted painted = PaintPage(options, *subject, window.Get());
    Outcome outcome = Outcome::Well;
    if (painted.failure != TIFF_SUCCESS) outcome = TellFailure(*source, *subject, painted);
    if (outcome == Outcome::Failed) return outcome;
    PaintNote(options, *source, *subject, window.Get(), painted.whole);
    return Worse(outcome, WriteWindow(options, *source, *format, window.Get()));
}

}  // namespace vellim::tool
