#include "stamp_options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <string>
#include <string_view>

#include "vellim/text.h"

namespace vellim::tool {

const char* const kAboutStamp = R"(Examples:
  vellim stamp fax.tif out.tif --text "Copy" --at 1200,60
  vellim stamp doc.tif out.tif --text "Received\n3 May" --at 100,80 --size 18 --page 1
  vellim stamp doc.tif doc.tif --force --text "Page 2" --at 800,3200 --page 2

Lays black text over pages of a TIFF file, all or those of the LIST, and writes a new one.
--at is the upper left corner of the text in pixels of the page as it is stored, counted
from its own upper left corner. In TEXT, \n begins a new line and \\ is a backslash;
characters outside of Windows-1252 become "?", which is told. The size is that on paper, by
the page's resolution, or for 200 dots an inch where it has none.

A stamped page keeps its size, depth, tags and compression; other pages are copied as they
are stored. A page that can't be decoded (JPEG) can't be stamped. Where a page that is to be
stamped is damaged, or something can't be carried over (Exif data, sub-images, images that
can't be reached), nothing is written, unless --accept-loss is given: then missing lines are
white. A file that is there stays, unless --force is given.
)";

namespace {

constexpr int32_t kMostPoints = 1000;
constexpr uint32_t kMostPlace = INT32_MAX;

bool ReadNumber(std::string_view text, uint32_t& number) {
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && rest == end && number <= kMostPlace;
}

void ReadPlace(const std::string& text, StampOptions& options) {
    const std::string_view words = text;
    const size_t comma = words.find(',');
    if (comma != std::string_view::npos && ReadNumber(words.substr(0, comma), options.x) &&
        ReadNumber(words.substr(comma + 1), options.y)) {
        return;
    }
    throw CLI::ValidationError("--at", "takes X,Y in pixels of the page, such as 120,80");
}

}  // namespace

void AddStampOptions(CLI::App& command, StampOptions& options) {
    command.add_option("IN", options.input, "The TIFF file to read, or -")->required();
    command.add_option("OUT", options.output, "The TIFF file to write, or -")->required();
    command.add_option("--text", options.text, "The text; \\n begins a new line")->required();
    command
        .add_option_function<std::string>(
            "--at", [&options](const std::string& text) { ReadPlace(text, options); },
            "X,Y, the place of its upper left corner in pixels")
        ->required();
    command.add_option("--font", options.font, "The font's name (Arial)")
        ->check([](const std::string& name) {
            const bool fits = !name.empty() && name.size() < LF_FACESIZE;
            return std::string(fits ? "" : "a font's name has 1 to 31 bytes");
        });
    command.add_option("--size", options.pointSize, "The font's size in points (12)")
        ->check(CLI::Range(1, kMostPoints));
    command.add_option("--page,--pages", options.pages, "Pages to stamp, such as 1-3,7 (all)");
    command.add_flag("--force", options.force, "Replace a file that is there already");
    command.add_flag("--accept-loss", options.acceptLoss,
                     "Go on without what is damaged or can't be carried over");
}

}  // namespace vellim::tool
