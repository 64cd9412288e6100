// Sizes, places and fractions are read here, so that what is wrong is told with its option's name.
#include "paint_options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "vellim/files.h"

namespace vellim::tool {

const char* const kAboutPaint = R"(Examples:
  vellim paint fax.tif view.png --window 800x600 --fit
  vellim paint plan.cal part.png --window 800x600 --scroll 1200,400
  vellim paint fax.tif view.png --window 800x1100 --zoom 1 --dpi 96
  vellim paint doc.tif view.png --window 300x400 --page 3 --zoom 1/4 --rotate 90

Paints a page of a TIFF or a CALS file into a window of that size, as a viewer on the
library would, and writes what is seen there. The page begins at the window's upper left
corner; what it leaves free is white. OUT is PNG, BMP, PBM, PGM or PPM, by its ending; for
- it is PNG.

The view is one of three. --actual shows a pixel of the page as one of the window. --zoom
shows the page in its real size, by its resolution and that of --dpi, times the fraction
A/B or the number A, so that a fax whose pixels aren't square has its true shape. --fit
draws the page out over the whole window, whatever its shape becomes.

--scroll tells how much of the page, as it is zoomed and turned, lies left of the window
and above it, in pixels. What is beyond the end of the page means its end, and where the
page is no larger than the window there is nothing to scroll.

A page on its side keeps its resolutions where they were: --zoom takes the horizontal one
for the window's horizontal. A CALS file is shown as it is stored, whichever way up it asks
to be.

A note that is kept apart from the page (vellim note) is drawn over it, unless --no-notes is
given: its corner where the view has that place of the page, its letters and its box in their
own size whatever the zoom. On a turned page it isn't shown, which is told.

A file that is there stays, unless --force is given; FILE itself is never replaced. Of a
damaged page the lines that came are painted.
)";

namespace {

constexpr uint32_t kMostSide = 32767;
constexpr uint32_t kMostRatio = 65535;
constexpr uint32_t kMostScroll = INT32_MAX;
constexpr uint32_t kMostDotsPerInch = 4800;

struct Limits {
    uint32_t least;
    uint32_t most;
};

bool ReadNumber(std::string_view text, Limits limits, uint32_t& number) {
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end && number >= limits.least && number <= limits.most;
}

// Two numbers with `sign` between them.
bool ReadPair(std::string_view text, char sign, Limits limits, uint32_t& first, uint32_t& second) {
    const size_t middle = text.find(sign);
    return middle != std::string_view::npos && ReadNumber(text.substr(0, middle), limits, first) &&
           ReadNumber(text.substr(middle + 1), limits, second);
}

void ReadWindow(const std::string& text, PaintOptions& options) {
    if (ReadPair(text, 'x', {1, kMostSide}, options.width, options.height)) return;
    throw CLI::ValidationError("--window",
                               "takes WxH such as 800x600, each side from 1 to 32767 pixels");
}

void ReadZoom(const std::string& text, PaintOptions& options) {
    constexpr Limits kLimits = {1, kMostRatio};
    PaintOptions::Zoom zoom;
    const bool whole = ReadNumber(text, kLimits, zoom.numerator);
    if (!whole && !ReadPair(text, '/', kLimits, zoom.numerator, zoom.denominator)) {
        throw CLI::ValidationError(
            "--zoom", "takes a fraction such as 1/2 or a number such as 2, of numbers from 1 to " +
                          std::to_string(kMostRatio));
    }
    options.zoom = zoom;
}

void ReadScroll(const std::string& text, PaintOptions& options) {
    if (ReadPair(text, ',', {0, kMostScroll}, options.scrollX, options.scrollY)) return;
    throw CLI::ValidationError(
        "--scroll", "takes X,Y such as 0,600, each from 0 to " + std::to_string(kMostScroll));
}

// An option that `read` takes from its word.
template <auto read>
CLI::Option* AddRead(CLI::App& command, const char* name, const char* line, PaintOptions& options) {
    return command.add_option_function<std::string>(
        name, [&options](const std::string& text) { read(text, options); }, line);
}

}  // namespace

void AddPaintOptions(CLI::App& command, PaintOptions& options) {
    command.add_option("FILE", options.input, "The file to paint, or - for standard input")
        ->required();
    command.add_option("OUT", options.output, "The picture to write, or - for standard output")
        ->required();
    AddRead<ReadWindow>(command, "--window", "WxH, the window's size in pixels", options)
        ->required();
    command.add_option("--page", options.page, "The page, counted from 1 (1)")
        ->check(CLI::Range(1U, uint32_t{TIFF_MAX_IMAGES}));
    CLI::Option* actual =
        command.add_flag("--actual")
            ->description("A pixel of the page is one of the window (the default)");
    CLI::Option* zoom = AddRead<ReadZoom>(
        command, "--zoom", "A/B or A, times the page's real size by its resolution", options);
    CLI::Option* fit =
        command.add_flag("--fit", options.fit, "Draw the page out over the whole window");
    actual->excludes(zoom)->excludes(fit);
    zoom->excludes(fit);
    command.add_option("--rotate", options.degrees, "0, 90, 180 or 270 degrees clockwise (0)")
        ->check(CLI::IsMember({0, 90, 180, 270}));
    command.add_flag("--invert", options.invert, "Exchange black and white, and colours likewise");
    AddRead<ReadScroll>(command, "--scroll", "X,Y, how far the page is scrolled (0,0)", options);
    command.add_flag("--no-notes", options.noNotes, "Leave out the note of a TIFF page");
    command.add_option("--dpi", options.dpi, "Dots an inch of the display (96)")
        ->check(CLI::Range(1U, kMostDotsPerInch));
    command.add_flag("--force", options.force, "Replace a file that is there already");
}

}  // namespace vellim::tool
