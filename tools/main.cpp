// The command line: what can be asked, and how it is told.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>

#include "commands.h"
#include "fax_options.h"
#include "messages.h"
#include "note_options.h"
#include "paint_options.h"
#include "stamp_options.h"
#include "vellim/files.h"

namespace vellim::tool {
namespace {

constexpr const char* kAbout = R"(Examples:
  vellim info fax.tif                     what is in it, a line an image
  vellim info --tags fax.tif              every tag
  vellim info --json *.tif                the same for programs
  vellim convert fax.tif fax.png          every page: fax-1.png, fax-2.png, ...
  vellim convert --pages 2 fax.tif p.pbm  one page
  vellim convert scan.png fax.tif         a picture as a TIFF file
  vellim convert plan.tif plan.cal        a drawing as a CALS file
  vellim check *.tif                      decode all and tell what is damaged
  vellim pages a.tif b.tif -o both.tif    pages put together, data as it is stored
  vellim tag fax.tif set Artist "J. Doe"  a tag changed
  vellim paint fax.tif view.png --window 800x600 --fit
  vellim fax letter.txt -o fax.tif        pages made of a plain text
  vellim stamp fax.tif out.tif --text "Copy" --at 90,40  text laid over pages
  vellim note fax.tif set "Approved" --at 90,40  a note over the picture

vellim reads scanned documents and faxes: TIFF, CALS, IOCA and MO:DCA files, and bare
streams of fax code.
)";

constexpr const char* kExitCodes = R"(A FILE of "-" is standard input. Pages count from 1.
Data goes to standard output, messages go to standard error.

Exit codes:
  0   all well
  1   done, but an image was damaged and recovered only in part
  2   failed
  64  wrong usage
Of several files, the worst counts.)";

constexpr const char* kAboutInfo = R"(Examples:
  vellim info fax.tif
  vellim info --tags fax.tif
  vellim info --json a.tif b.tif
  vellim info plan.cal scan.ica report.afp
  curl -s https://example.org/fax.tif | vellim info -

Tells what is in files: of TIFF size, resolution, depth, colour, compression, strips and
title, on a line an image; of the other kinds what stands in their headers too (the
records of CALS, the fields of IOCA and MO:DCA). With --json all there is to know.
)";

constexpr const char* kAboutConvert = R"(Examples:
  vellim convert fax.tif fax.png              fax-1.png, fax-2.png, ...
  vellim convert --pages 1-3,7 fax.tif p.png  p-1.png, p-2.png, p-3.png, p-7.png
  vellim convert --square fax.tif fax.png     a 204 x 98 fax in its true shape
  vellim convert --pages 1 - - <a.tif >a.png  from and to a pipe
  vellim convert scan.png scan.tif            colours with LZW, black and white as Group 4
  vellim convert photo.bmp f.tif --compression g4 --dpi 204
  vellim convert more.png doc.tif --append    behind the pages that are there
  vellim convert plan.tif plan.cal --note "figid=F 17"
  vellim convert fax.g3 fax.tif --width 2432  a bare stream of long lines

Reads TIFF, CALS, IOCA, MO:DCA, PNG, BMP (not compressed) and PNM files, told by their
content, and bare streams, told by the ending g3, fax, g4 or mmr or by what is said of
them. Writes by the ending of OUT: TIFF (tif, tiff), CALS (cal, cals, ct1, mil), IOCA
(ica, ioca), MO:DCA (mda, modca, afp), PNG, BMP, PBM, PGM, PPM, or a bare stream (g3,
fax, g4, mmr). TIFF takes all pages into one file; else several pages go to numbered
files, and a single page keeps the name.

A TIFF page is compressed as suits it, unless --compression chooses: black and white
with g4, greys of 8 bits and RGB with lzw-diff, the rest with lzw. The CCITT
compressions (g3: without EOL; g3-eol; g3-2d; g4) and PBM are black and white: shades
become dots, which is best for pictures, or by --dither threshold what is lighter than
half of white becomes white, which is best for clean text. PGM makes colours grey. A
page of unknown resolution gets none, unless --dpi gives one. Titles, dates and the
like go from TIFF to TIFF.

CALS, IOCA, MO:DCA and bare streams are black and white too. CALS states 200 dots an
inch where nothing is known; its text records go from CALS to CALS, and --note sets one,
or with no TEXT takes it out. A bare stream is nothing but code, so that its size has to
be kept elsewhere: --coding, --width, --height and --fill-order say what IN is where IN
is one; else --coding and --fill-order say what OUT becomes (g3 and fax: g3-eol).

A file that is there stays, unless --force or --append is given, and a new one takes its
name only when it is whole. Of a damaged page the lines that came are kept, the rest is
white; a damaged PNG, BMP or PNM file is refused. A page that gives nothing is left out,
which is told. If OUT is IN, a file that can't be read whole is replaced with
--accept-loss alone.

In TIFF, pages have the order of the LIST, and come as often as it names them; numbered
files have the page's own number. Colour profiles, XMP and Exif data, sub-images and
private tags aren't carried over, samples of 16 bits become 8, and what is transparent is
laid on white: that is told once a run.
)";

constexpr const char* kAboutCheck = R"(Examples:
  vellim check fax.tif
  vellim check archive/*

Decodes every image to its end and tells how many of its lines came, and why the
others didn't.
)";

constexpr const char* kAboutPages = R"(Examples:
  vellim pages a.tif b.tif -o both.tif                    put together
  vellim pages fax.tif --pages 2- -o rest.tif             without the first page
  vellim pages doc.tif --pages 3,1-2,9-7 -o new.tif       in another order
  vellim pages a.tif b.tif --pages 1 --pages 2- -o c.tif  a list for each file
  vellim pages more.tif -o doc.tif --append               behind what is there
  vellim pages doc.tif --split page-%03d.tif              page-001.tif, page-002.tif, ...

Copies pages with all their tags and their data as it is stored, which costs no
quality. A LIST keeps the order in which it is written; a page may come twice and a
range may run backwards. Given once, it applies to every IN. With --split, %d is the
page's number, counted on from file to file. A new file has the byte order of the
first IN. Pages of CALS, IOCA and MO:DCA files and of bare streams are decoded and stored
as suits them, black and white with Group 4.

Directories that a tag points to (Exif data, sub-images) and images behind a broken
chain or the thousandth can't be copied: nothing is written, unless --accept-loss is
given. A file takes its name only when it is whole; of a --split that is stopped, the
files that were whole by then stay.
)";

constexpr const char* kAboutTag = R"(Examples:
  vellim tag fax.tif list
  vellim tag fax.tif get XResolution
  vellim tag fax.tif set Artist "Jane Doe" --image 2
  vellim tag fax.tif set XResolution 204
  vellim tag fax.tif set 65000 1 2 3 --type SHORT
  vellim tag fax.tif delete Software

ACTION is list, get, set or delete. A tag is named as "vellim info --tags" does, in
any case, or by its number. A new value has the type given with --type, else the one
that the tag has, else the one that is laid down for it. In front of a first value
that begins with a dash stands "--".

Setting and deleting write the file anew, byte order II, and put it in the old one's
place in one step. A tag that tells how the image is stored, or a value that TIFF gives
no meaning, is written with --force alone. Directories that a tag points to (Exif data, sub-images) and images behind a
broken chain or the thousandth would be lost: the file is left as it is, unless
--accept-loss is given. Deleting a tag that isn't there changes nothing.
)";

// A command is told in one line in the list of commands, and by `about` in its own help, which is
// printed after the command's name has been read.
CLI::App* AddCommand(CLI::App& app, const char* name, const char* line, const char* about) {
    CLI::App* command = app.add_subcommand(name, line);
    command->preparse_callback([command, about](size_t) { command->description(about); });
    command->footer(kExitCodes);
    return command;
}

// What a bare stream can't tell.
void AddStreamOptions(CLI::App& command, SourceHints& hints) {
    constexpr uint32_t kMostPixels = 1U << 20U;
    constexpr uint32_t kMostLines = 1U << 24U;
    command.add_option("--width", hints.width, "Pixels a line of a bare stream (found out)")
        ->check(CLI::Range(1U, kMostPixels));
    command.add_option("--height", hints.height, "Lines of a bare stream (as many as come)")
        ->check(CLI::Range(1U, kMostLines));
    command
        .add_option_function<std::string>(
            "--coding", [&hints](const std::string& name) { hints.coding = FindFaxCoding(name); },
            "How a bare stream is coded: g3 (no EOL), g3-eol, g3-2d, g4, mmr (found out)")
        ->check(CLI::IsMember({"g3", "g3-eol", "g3-2d", "g4", "mmr"}));
    command
        .add_option("--fill-order", hints.fillOrder,
                    "2: the leftmost pixel of a bare stream is in the low bit (found out)")
        ->check(CLI::Range(1, 2));
}

CLI::App* AddInfo(CLI::App& app, InfoOptions& options) {
    CLI::App* command = AddCommand(app, "info", "Tell what is in files", kAboutInfo);
    command->add_option("FILE", options.files, "The files, or - for standard input")->required();
    command->add_flag("--json", options.json, "Print JSON, with every tag");
    command->add_flag("--tags", options.tags, "List every tag with its type, count and value");
    AddStreamOptions(*command, options.hints);
    return command;
}

// What TIFF alone has.
void AddTiffOptions(CLI::App& command, ConvertOptions& options) {
    constexpr int32_t kMostK = 1000000;
    command.add_option("--compression", options.compression, "How pages are compressed (TIFF)")
        ->transform(
            CLI::IsMember({"none", "packbits", "lzw", "lzw-diff", "g3", "g3-eol", "g3-2d", "g4"},
                          CLI::ignore_case));
    command.add_flag("--append", options.append, "Keep the pages that the file has already (TIFF)");
    command
        .add_option("--byte-order", options.byteOrder,
                    "ii or mm (TIFF; ii, or that of the file appended to)")
        ->check(CLI::IsMember({"ii", "mm"}, CLI::ignore_case));
    command
        .add_option("--k", options.kFactor, "With g3-2d, code every Nth line by itself, from 2 (2)")
        ->check(CLI::Range(2, kMostK));
}

CLI::App* AddConvert(CLI::App& app, ConvertOptions& options) {
    constexpr uint32_t kMostDotsPerInch = 65535;
    CLI::App* command =
        AddCommand(app, "convert", "Write pages as TIFF, CALS, PNG and more", kAboutConvert);
    command->add_option("IN", options.input, "The file to read, or - for standard input")
        ->required();
    command->add_option("OUT", options.output, "The file to write, or - for standard output")
        ->required();
    command->add_option("--pages", options.pages, "Pages to convert, such as 1-3,7 or 5- (all)");
    command->add_option("--format", options.format,
                        "An ending such as png or cal, whatever that of OUT is (for -: png)");
    command->add_flag("--force", options.force, "Replace files that are there already");
    command->add_flag("--accept-loss", options.acceptLoss,
                      "Replace IN by itself without what can't be read of it");
    command->add_flag("--square", options.square,
                      "Draw out the axis of lower resolution, so that pixels become square");
    command->add_option("--dpi", options.dpi, "Dots an inch of the pages, whatever IN says")
        ->check(CLI::Range(1U, kMostDotsPerInch));
    command
        ->add_option("--dither", options.dither,
                     "How shades become black and white (fs: Floyd-Steinberg)")
        ->check(CLI::IsMember({"fs", "threshold"}));
    command
        ->add_option("--note", options.notes,
                     "KEY=TEXT of a text record (CALS): srcdocid, dstdocis, txtfileid, figid, "
                     "scrgph, doccls or notes")
        ->allow_extra_args(false);
    AddTiffOptions(*command, options);
    AddStreamOptions(*command, options.hints);
    command->get_option("--coding")
        ->description(
            "How a bare IN (found out), or else OUT, is coded: g3 (no EOL), g3-eol, g3-2d, g4, "
            "mmr");
    command->get_option("--fill-order")
        ->description(
            "2: the leftmost pixel is in the low bit of a bare IN (found out), or else of OUT "
            "(TIFF and bare, black and white)");
    return command;
}

CLI::App* AddCheck(CLI::App& app, CheckOptions& options) {
    CLI::App* command =
        AddCommand(app, "check", "Decode everything and tell what is damaged", kAboutCheck);
    command->add_option("FILE", options.files, "The files, or - for standard input")->required();
    AddStreamOptions(*command, options.hints);
    return command;
}

CLI::App* AddPages(CLI::App& app, PagesOptions& options) {
    CLI::App* command =
        AddCommand(app, "pages", "Put together, take out, reorder and split pages", kAboutPages);
    command->add_option("IN", options.inputs, "The files, or - for standard input")->required();
    command->add_option("-o,--output", options.output, "The file to write");
    command->add_option("--split", options.split, "Names of a file for each page, with %d or %03d");
    command->add_option("--pages", options.pages, "Pages to copy, such as 3,1-2,9-7 or 5- (all)")
        ->allow_extra_args(false);
    command->add_flag("--append", options.append, "Keep the pages that the file has already");
    command->add_flag("--force", options.force, "Replace files that are there already");
    command->add_flag("--accept-loss", options.acceptLoss, "Leave behind what can't be copied");
    AddStreamOptions(*command, options.hints);
    return command;
}

CLI::App* AddTag(CLI::App& app, TagOptions& options) {
    CLI::App* command =
        AddCommand(app, "tag", "List, show, set and delete tags of an image", kAboutTag);
    command->add_option("FILE", options.file, "A TIFF file")->required();
    command->add_option("ACTION", options.action, "list, get, set or delete")
        ->required()
        ->check(CLI::IsMember({"list", "get", "set", "delete"}));
    command->add_option("TAG", options.tag, "A tag, by its name or number");
    command->add_option("VALUE", options.values, "What to set the tag to");
    command->add_option("--image", options.image, "The image, counted from 1")
        ->check(CLI::Range(1U, uint32_t{TIFF_MAX_IMAGES}));
    command->add_option("--type", options.type, "The type of the new value: ASCII, SHORT, ...");
    command->add_flag("--force", options.force, "Change what tells how the image is stored");
    command->add_flag("--accept-loss", options.acceptLoss, "Lose what can't be carried over");
    return command;
}

CLI::App* AddPaint(CLI::App& app, PaintOptions& options) {
    CLI::App* command =
        AddCommand(app, "paint", "Show what a window would show of a page", kAboutPaint);
    AddPaintOptions(*command, options);
    return command;
}

CLI::App* AddNote(CLI::App& app, NoteOptions& options) {
    CLI::App* command =
        AddCommand(app, "note", "Show, set and delete notes, and burn them in", kAboutNote);
    AddNoteOptions(*command, options);
    return command;
}

CLI::App* AddFax(CLI::App& app, FaxOptions& options) {
    CLI::App* command = AddCommand(app, "fax", "Make pages of a plain text", kAboutFax);
    AddFaxOptions(*command, options);
    return command;
}

CLI::App* AddStamp(CLI::App& app, StampOptions& options) {
    CLI::App* command = AddCommand(app, "stamp", "Lay text over pages", kAboutStamp);
    AddStampOptions(*command, options);
    return command;
}

std::string VersionText() {
    constexpr int kEnough = 64;
    std::array<char, kEnough> version{};
    GetTiffVersion(version.data(), kEnough);
    return std::string("vellim, on libvellim ") + version.data();
}

// Help and version are no failures; any other way out of the parser is a wrong usage. A word in
// the place of a command, which the parser leaves over, is named.
Outcome LeaveParser(const CLI::App& app, const CLI::ParseError& way) {
    if (way.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        app.exit(way);
        return Outcome::Well;
    }
    const std::vector<std::string> left = app.remaining();
    const bool unknown = app.get_subcommands().empty() && !left.empty();
    const char* kind = unknown && left.front().front() == '-' ? "option " : "command ";
    const std::string what =
        unknown ? std::string("there is no ") + kind + Place(left.front(), kWholeFile) : way.what();
    Say("", kWholeFile, what + "; vellim --help tells more");
    return Outcome::Usage;
}

// The parser takes a word in brackets for a list and would break "[draft]" up. A zero, which no
// argument can hold, stands behind such words until they have been told apart.
std::vector<std::string> ShieldedArguments(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    for (std::string& argument : arguments) {
        if (argument.starts_with('[') && argument.ends_with(']')) argument += '\0';
    }
    std::reverse(arguments.begin(), arguments.end());  // as the parser wants them
    return arguments;
}

void UnshieldArguments(CLI::App& app) {
    for (CLI::App* command : app.get_subcommands({})) {
        for (CLI::Option* option : command->get_options())
            option->transform(
                [](const std::string& word) { return word.substr(0, word.find('\0')); });
    }
}

Outcome Run(int argc, char** argv) {
    CLI::App app{kAbout, "vellim"};
    app.footer(kExitCodes);
    app.set_version_flag("--version", VersionText(), "Print the version of the library");
    app.require_subcommand(1);

    InfoOptions info;
    ConvertOptions convert;
    CheckOptions check;
    PagesOptions pages;
    TagOptions tag;
    PaintOptions paint;
    NoteOptions note;
    FaxOptions fax;
    StampOptions stamp;
    const CLI::App* infoCommand = AddInfo(app, info);
    const CLI::App* convertCommand = AddConvert(app, convert);
    const CLI::App* checkCommand = AddCheck(app, check);
    const CLI::App* pagesCommand = AddPages(app, pages);
    const CLI::App* tagCommand = AddTag(app, tag);
    const CLI::App* paintCommand = AddPaint(app, paint);
    const CLI::App* noteCommand = AddNote(app, note);
    const CLI::App* faxCommand = AddFax(app, fax);
    const CLI::App* stampCommand = AddStamp(app, stamp);

    try {
        UnshieldArguments(app);
        app.parse(ShieldedArguments(argc, argv));
    } catch (const CLI::ParseError& way) {
        return LeaveParser(app, way);
    }
    if (infoCommand->parsed()) return RunInfo(info);
    if (convertCommand->parsed()) return RunConvert(convert);
    if (pagesCommand->parsed()) return RunPages(pages);
    if (tagCommand->parsed()) return RunTag(tag);
    if (paintCommand->parsed()) return RunPaint(paint);
    if (noteCommand->parsed()) return RunNote(note);
    if (faxCommand->parsed()) return RunFax(fax);
    if (stampCommand->parsed()) return RunStamp(stamp);
    return checkCommand->parsed() ? RunCheck(check) : Outcome::Usage;
}

// What was printed counts only if it arrived.
Outcome CloseStandardOutput(Outcome outcome) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return outcome;
    Say("standard output", kWholeFile, std::strerror(errno));
    return Worse(outcome, Outcome::Failed);
}

}  // namespace
}  // namespace vellim::tool

int main(int argc, char** argv) {
    using namespace vellim::tool;
    // A closed pipe or a limit of size then fails the write, and what was begun is taken away.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        return static_cast<int>(CloseStandardOutput(Run(argc, argv)));
    } catch (const std::bad_alloc&) {
        Say("", kWholeFile, "not enough memory");
    } catch (const std::exception& error) {
        Say("", kWholeFile, error.what());
    }
    return static_cast<int>(Outcome::Failed);
}
