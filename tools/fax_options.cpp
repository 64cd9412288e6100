// Lengths, papers and tab stops are read here, so that what is wrong is told with its option's
// name.
#include "fax_options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <string>
#include <string_view>
#include <vector>

#include "vellim/fax.h"
#include "vellim/text.h"

namespace vellim::tool {

const char* const kAboutFax = R"(Examples:
  vellim fax letter.txt -o letter.tif
  vellim fax report.txt -o report.tif --paper letter --resolution 204x98 --margin 25x20
  vellim fax list.txt -o list.tif --tabs 40,90,130 --font Arial --size 11
  vellim fax order.txt -o order.tif --form form.tif --margin 20x60
  pr -F notes.txt | vellim fax - -o - | vellim convert --pages 1 - first.png

Makes pages of a plain text, black on white. Lines may end as on any system; a form feed
begins a page. Lines too long are wrapped behind spaces and hyphens, and a page ends with
the last line that fits whole. A tab leads to the next stop behind what is written: every
8 digits' width, unless --tabs tells others, of which there may be 16.

Text is UTF-8, or else Windows-1252. Pages can have the characters of ASCII alone:
letters lose their accents (é becomes e, ü becomes u, ß ss, æ ae), quotes, dashes, signs
and fractions are written as one would on a typewriter (€ becomes EUR, ½ 1/2), frames
are made of - | and +. What nothing stands for becomes "?", which is told.

With --form the text of every page is laid over the first page of FORM, a TIFF file, whose
size and resolution are taken; --resolution is for a form that has none, or a wrong one.
Colours become dots, unless --compression is one that keeps them.

The text's size is that of the paper: on a fax of 204x98 dots letters are as wide as on one
of 204x196. A font that isn't there is replaced by one like it; VELLIM is always there.

A file that is there stays, unless --force is given, and a new one takes its name only when
it is whole. A text of more than 1000 pages is refused.
)";

namespace {

constexpr double kMostMillimetres = 2000;
constexpr double kLeastPaper = 10;
constexpr uint32_t kLeastDots = 20;
constexpr uint32_t kMostDots = 2400;
constexpr int32_t kMostPoints = 1000;
constexpr std::string_view kEvery = "every";

struct Paper {
    std::string_view name;
    double width, height;  // in millimetres
};
constexpr auto kPapers = std::to_array<Paper>(
    {{"a4", 210, 297}, {"a3", 297, 420}, {"letter", 215.9, 279.4}, {"legal", 215.9, 355.6}});

template <typename Number>
bool Read(std::string_view text, Number least, Number most, Number& number) {
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end && number >= least && number <= most;
}

// "20" for both, or "20x15".
template <typename Number>
bool ReadOneOrTwo(std::string_view text, Number least, Number most, Number& first, Number& second) {
    const size_t middle = text.find('x');
    if (!Read(text.substr(0, middle), least, most, first)) return false;
    if (middle != std::string_view::npos) {
        return Read(text.substr(middle + 1), least, most, second);
    }
    second = first;
    return true;
}

void TakeOff(std::string_view& text, std::string_view ending) {
    if (text.ends_with(ending)) text.remove_suffix(ending.size());
}

void ReadPaper(const std::string& text, FaxOptions& options) {
    for (const Paper& paper : kPapers) {
        if (paper.name != CLI::detail::to_lower(text)) continue;
        options.paperWidth = paper.width;
        options.paperHeight = paper.height;
        return;
    }
    std::string_view sides = text;
    TakeOff(sides, "mm");
    const bool both = sides.find('x') != std::string_view::npos;
    if (both && ReadOneOrTwo(sides, kLeastPaper, kMostMillimetres, options.paperWidth,
                             options.paperHeight)) {
        return;
    }
    throw CLI::ValidationError(
        "--paper", "takes a4, a3, letter, legal, or a size such as 148x210mm, from 10 to 2000");
}

void ReadResolution(const std::string& text, FaxOptions& options) {
    options.resolutionGiven = true;
    if (ReadOneOrTwo(text, kLeastDots, kMostDots, options.xResolution, options.yResolution)) return;
    throw CLI::ValidationError("--resolution",
                               "takes dots an inch such as 204x98 or 300, from 20 to 2400");
}

void ReadMargin(const std::string& text, FaxOptions& options) {
    if (ReadOneOrTwo(text, 0.0, kMostMillimetres, options.sideMargin, options.topMargin)) return;
    throw CLI::ValidationError("--margin",
                               "takes millimetres such as 20, or 25x15 for left and "
                               "right by top and bottom");
}

bool ReadStops(std::string_view text, std::vector<double>& stops) {
    while (!text.empty()) {
        const size_t comma = text.find(',');
        double stop = 0;
        const double before = stops.empty() ? 0 : stops.back();
        if (!Read(text.substr(0, comma), before, kMostMillimetres, stop) || stop == before) {
            return false;
        }
        stops.push_back(stop);
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    return !stops.empty() && stops.size() <= FAX_TAB_STOPS;
}

bool ReadEvery(std::string_view text, std::vector<double>& stops) {
    constexpr double kLeastStep = 1;
    double step = 0;
    text.remove_prefix(std::min(text.find_first_not_of(" ="), text.size()));
    if (!Read(text, kLeastStep, kMostMillimetres, step)) return false;
    for (int i = 1; i <= FAX_TAB_STOPS; ++i)
        stops.push_back(i * step);
    return true;
}

void ReadTabs(const std::string& text, FaxOptions& options) {
    const bool every = text.starts_with(kEvery);
    if (every && ReadEvery(std::string_view(text).substr(kEvery.size()), options.tabs)) return;
    if (!every && ReadStops(text, options.tabs)) return;
    throw CLI::ValidationError("--tabs",
                               "takes up to 16 places from the left margin in millimetres, such as "
                               "30,60,100, or \"every 25\"");
}

// An option that `read` takes from its word.
template <auto read>
CLI::Option* AddRead(CLI::App& command, const char* name, const char* line, FaxOptions& options) {
    return command.add_option_function<std::string>(
        name, [&options](const std::string& text) { read(text, options); }, line);
}

}  // namespace

void AddFaxOptions(CLI::App& command, FaxOptions& options) {
    command.add_option("TEXT", options.input, "The text, or - for standard input")->required();
    command.add_option("-o,--output", options.output, "The TIFF file to write, or -")->required();
    CLI::Option* paper =
        AddRead<ReadPaper>(command, "--paper", "a4, a3, letter, legal, or WxHmm (a4)", options);
    AddRead<ReadResolution>(command, "--resolution", "Dots an inch, XxY or one number (204x196)",
                            options);
    command.add_option("--font", options.font, "The font's name (Courier New)")
        ->check([](const std::string& name) {
            const bool fits = !name.empty() && name.size() < LF_FACESIZE;
            return std::string(fits ? "" : "a font's name has 1 to 31 bytes");
        });
    command.add_option("--size", options.pointSize, "The font's size in points (10)")
        ->check(CLI::Range(1, kMostPoints));
    command.add_flag("--bold", options.bold, "Bold letters");
    command.add_flag("--italic", options.italic, "Italic letters");
    AddRead<ReadMargin>(command, "--margin",
                        "Millimetres, MM or left and right by top and bottom, MMxMM (15)", options);
    AddRead<ReadTabs>(command, "--tabs",
                      "Tab stops, MM,MM,... from the left margin, or \"every MM\"", options);
    command.add_option("--spacing", options.spacing, "Millimetres more from line to line (0)")
        ->check(CLI::Range(0.0, kMostMillimetres));
    command.add_option("--compression", options.compression, "How pages are compressed (g4)")
        ->transform(
            CLI::IsMember({"none", "packbits", "lzw", "lzw-diff", "g3", "g3-eol", "g3-2d", "g4"},
                          CLI::ignore_case));
    command.add_option("--form", options.form, "A TIFF file whose first page lies under the text")
        ->excludes(paper);
    command.add_flag("--force", options.force, "Replace a file that is there already");
}

}  // namespace vellim::tool
