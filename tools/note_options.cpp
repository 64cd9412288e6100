#include "note_options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <string>
#include <string_view>

#include "vellim/files.h"

namespace vellim::tool {

const char* const kAboutNote = R"(Examples:
  vellim note scan.tif show
  vellim note scan.tif set "Approved, J. D." --at 120,80
  vellim note scan.tif --image 2 set "Page is missing" --at 0,0 --opaque -o noted.tif
  vellim note scan.tif --image 2 delete
  vellim note noted.tif --image 2 burn -o burned.tif

ACTION is show, set, delete or burn. An image of a TIFF file has one note at most: a text
that viewers on the library draw over the picture, which stays as it is. vellim paint shows
it too.

show prints the notes of all images, or of one: whether the text stands on a white
background (opaque) or on the picture itself (transparent), where its box is, and the text.

set stores a note in place of one that is there, its upper left corner at X,Y, counted in
pixels of the image as it is stored. Line ends in TEXT begin new lines. The letters have a
size of their own, 16 pixels a line, whatever the image's resolution. A note is kept in
Windows-1252, and its tag, HostComputer (316), has room for 1024 bytes: what doesn't fit is
refused. Of a line, viewers show 40 characters. A name that another program has put into
that tag is replaced with --force alone. In front of a TEXT that begins with a dash stands
"--".

burn makes the text black pixels of the page, on white for an opaque note, and takes the
note away. The page is coded anew in the compression and depth that it has, with its tags;
pixels outside the note's box and all other pages stay as they are. This can't be undone:
burn writes to -o OUT, or in place with --force.

set and delete write the file itself anew, byte order II, and put it in the old one's place
in one step; with -o it stays as it is and OUT gets the change. An OUT that is there is
replaced with --force alone. What can't be carried over (Exif data, sub-images, images behind
a broken chain, lines of a damaged page that is burned into) is lost with --accept-loss
alone.
)";

namespace {

// X,Y, as numbers from 0 to the highest that a note has.
bool ReadPlace(std::string_view text, POINT& place) {
    const char* const end = text.data() + text.size();
    const auto [comma, error] = std::from_chars(text.data(), end, place.x);
    if (error != std::errc() || comma == end || *comma != ',') return false;
    const auto [rest, secondError] = std::from_chars(comma + 1, end, place.y);
    return secondError == std::errc() && rest == end && place.x >= 0 && place.y >= 0;
}

void ReadAt(const std::string& text, NoteOptions& options) {
    POINT place = {};
    if (!ReadPlace(text, place)) {
        throw CLI::ValidationError(
            "--at", "takes X,Y such as 120,80, in pixels from the upper left corner, from 0 on");
    }
    options.at = place;
}

}  // namespace

void AddNoteOptions(CLI::App& command, NoteOptions& options) {
    command.add_option("FILE", options.file, "A TIFF file")->required();
    command.add_option("ACTION", options.action, "show, set, delete or burn")
        ->required()
        ->check(CLI::IsMember({"show", "set", "delete", "burn"}));
    command.add_option("TEXT", options.text, "The note that is set");
    command.add_option("--image", options.image, "The image, counted from 1")
        ->check(CLI::Range(1U, uint32_t{TIFF_MAX_IMAGES}));
    command.add_option_function<std::string>(
        "--at", [&options](const std::string& text) { ReadAt(text, options); },
        "X,Y, the note's upper left corner in pixels of the image");
    command.add_flag("--opaque", options.opaque, "The note has a white background");
    command.add_option("-o,--output", options.output, "The file to write, or - (FILE itself)");
    command.add_flag("--force", options.force,
                     "Replace OUT, burn into FILE itself, or set in place of another's name");
    command.add_flag("--accept-loss", options.acceptLoss, "Lose what can't be carried over");
}

}  // namespace vellim::tool
