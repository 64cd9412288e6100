// The command line: what can be asked, and how it is told.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>

#include "commands.h"
#include "messages.h"
#include "vellim/files.h"

namespace vellim::tool {
namespace {

constexpr const char* kAbout = R"(Examples:
  vellim info fax.tif                     what is in it, a line an image
  vellim info --tags fax.tif              every tag
  vellim info --json *.tif                the same for programs
  vellim convert fax.tif fax.png          every page: fax-1.png, fax-2.png, ...
  vellim convert --pages 2 fax.tif p.pbm  one page
  vellim check *.tif                      decode all and tell what is damaged

vellim reads scanned documents and faxes in TIFF files.
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
  curl -s https://example.org/fax.tif | vellim info -

Tells what is in TIFF files: size, resolution, depth, colour, compression, strips
and title, on a line an image; with --json all there is to know, tags included.
)";

constexpr const char* kAboutConvert = R"(Examples:
  vellim convert fax.tif fax.png              fax-1.png, fax-2.png, ...
  vellim convert --pages 1-3,7 fax.tif p.png  p-1.png, p-2.png, p-3.png, p-7.png
  vellim convert --square fax.tif fax.png     a 204 x 98 fax in its true shape
  vellim convert --pages 1 - - <a.tif >a.png  from and to a pipe

Writes the pages of a TIFF file as PNG, BMP, PBM, PGM or PPM, by the ending of OUT.
Several pages go to numbered files; a single page keeps the name. PBM makes colours
grey and grey black or white; PGM makes colours grey. A file takes its name only
when it is whole. Of a damaged image the lines that came are kept, the rest is white.
)";

constexpr const char* kAboutCheck = R"(Examples:
  vellim check fax.tif
  vellim check archive/*.tif

Decodes every image to its end and tells how many of its lines came, and why the
others didn't.
)";

// A command is told in one line in the list of commands, and by `about` in its own help, which is
// printed after the command's name has been read.
CLI::App* AddCommand(CLI::App& app, const char* name, const char* line, const char* about) {
    CLI::App* command = app.add_subcommand(name, line);
    command->preparse_callback([command, about](size_t) { command->description(about); });
    command->footer(kExitCodes);
    return command;
}

CLI::App* AddInfo(CLI::App& app, InfoOptions& options) {
    CLI::App* command = AddCommand(app, "info", "Tell what is in TIFF files", kAboutInfo);
    command->add_option("FILE", options.files, "TIFF files, or - for standard input")->required();
    command->add_flag("--json", options.json, "Print JSON, with every tag");
    command->add_flag("--tags", options.tags, "List every tag with its type, count and value");
    return command;
}

CLI::App* AddConvert(CLI::App& app, ConvertOptions& options) {
    CLI::App* command =
        AddCommand(app, "convert", "Write pages as PNG, BMP, PBM, PGM or PPM", kAboutConvert);
    command->add_option("IN", options.input, "A TIFF file, or - for standard input")->required();
    command->add_option("OUT", options.output, "The file to write, or - for standard output")
        ->required();
    command->add_option("--pages", options.pages, "Pages to convert, such as 1-3,7 or 5- (all)");
    command->add_option("--format", options.format,
                        "png, bmp, pbm, pgm or ppm, whatever the ending of OUT (for -: png)");
    command->add_flag("--square", options.square,
                      "Draw out the axis of lower resolution, so that pixels become square");
    return command;
}

CLI::App* AddCheck(CLI::App& app, CheckOptions& options) {
    CLI::App* command =
        AddCommand(app, "check", "Decode everything and tell what is damaged", kAboutCheck);
    command->add_option("FILE", options.files, "TIFF files, or - for standard input")->required();
    return command;
}

std::string VersionText() {
    constexpr int kEnough = 64;
    std::array<char, kEnough> version{};
    GetTiffVersion(version.data(), kEnough);
    return std::string("vellim, on libvellim ") + version.data();
}

// Help and version are no failures; any other way out of the parser is a wrong usage.
Outcome LeaveParser(const CLI::App& app, const CLI::ParseError& way) {
    if (way.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        app.exit(way);
        return Outcome::Well;
    }
    Say("", kWholeFile, std::string(way.what()) + "; vellim --help tells more");
    return Outcome::Usage;
}

Outcome Run(int argc, char** argv) {
    CLI::App app{kAbout, "vellim"};
    app.footer(kExitCodes);
    app.set_version_flag("--version", VersionText(), "Print the version of the library");
    app.require_subcommand(1);

    InfoOptions info;
    ConvertOptions convert;
    CheckOptions check;
    const CLI::App* infoCommand = AddInfo(app, info);
    const CLI::App* convertCommand = AddConvert(app, convert);
    const CLI::App* checkCommand = AddCheck(app, check);

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& way) {
        return LeaveParser(app, way);
    }
    if (infoCommand->parsed()) return RunInfo(info);
    if (convertCommand->parsed()) return RunConvert(convert);
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
    try {
        return static_cast<int>(CloseStandardOutput(Run(argc, argv)));
    } catch (const std::bad_alloc&) {
        Say("", kWholeFile, "not enough memory");
    } catch (const std::exception& error) {
        Say("", kWholeFile, error.what());
    }
    return static_cast<int>(Outcome::Failed);
}
