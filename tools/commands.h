// The commands, what each is asked, and how the process ends.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "source_hints.h"
#include "vellim/graphics.h"

namespace vellim::tool {

// Exit codes. A worse one has the higher number, so that the worst of several is their maximum.
enum class Outcome : int {
    Well = 0,
    Damaged = 1,  // done, but something was damaged and recovered only in part
    Failed = 2,
    Usage = 64
};

inline Outcome Worse(Outcome a, Outcome b) {
    return a < b ? b : a;
}

struct InfoOptions {
    std::vector<std::string> files;
    SourceHints hints;
    bool json = false;
    bool tags = false;
};

struct CheckOptions {
    std::vector<std::string> files;
    SourceHints hints;
};

struct ConvertOptions {
    std::string input;
    std::string output;
    std::string pages;   // empty: all
    std::string format;  // empty: by the output's ending
    std::string dither;  // fs or threshold; empty: fs
    SourceHints hints;   // of a bare stream: IN, or else OUT
    uint32_t dpi = 0;    // 0: what the page has
    bool square = false;
    bool force = false;
    std::vector<std::string> notes;  // KEY=TEXT of CALS text records
    int32_t kFactor = 0;             // of Group 3 2-D; 0: not chosen

    // For TIFF; empty or 0: not chosen.
    std::string compression;
    std::string byteOrder;  // ii or mm
    bool append = false;
    bool acceptLoss = false;
};

struct PagesOptions {
    std::vector<std::string> inputs;
    SourceHints hints;
    std::string output;              // empty: `split` is set
    std::string split;               // a pattern of names, as "page-%03d.tif"
    std::vector<std::string> pages;  // empty: all; one for all inputs, or one for each
    bool append = false;
    bool force = false;
    bool acceptLoss = false;
};

struct TagOptions {
    std::string file;
    std::string action;               // list, get, set or delete
    std::string tag;                  // its number or name; empty: none given
    std::vector<std::string> values;  // for set
    uint32_t image = 0;               // counted from 1; 0: not chosen
    std::string type;                 // empty: not chosen
    bool force = false;
    bool acceptLoss = false;
};

struct PaintOptions {
    std::string input;
    std::string output;
    uint32_t width = 0;  // of the window
    uint32_t height = 0;
    uint32_t page = 1;

    // Times real size. Neither this nor `fit`: a pixel of the page is one of the window.
    struct Zoom {
        uint32_t numerator = 1;
        uint32_t denominator = 1;
    };
    std::optional<Zoom> zoom;
    bool fit = false;
    uint32_t degrees = 0;  // clockwise: 0, 90, 180 or 270
    bool invert = false;
    uint32_t scrollX = 0;
    uint32_t scrollY = 0;
    bool noNotes = false;
    uint32_t dpi = 96;
    bool force = false;
};

struct FaxOptions {
    std::string input;
    std::string output;
    double paperWidth = 210;  // in millimetres, as all lengths
    double paperHeight = 297;
    uint32_t xResolution = 204;  // dots an inch
    uint32_t yResolution = 196;
    bool resolutionGiven = false;
    std::string font = "Courier New";
    int32_t pointSize = 10;
    bool bold = false;
    bool italic = false;
    double sideMargin = 15;
    double topMargin = 15;
    std::vector<double> tabs;  // from the left margin, ascending; empty: not chosen
    double spacing = 0;        // between lines, besides the font's own
    std::string compression = "g4";
    std::string form;  // empty: none
    bool force = false;
};

struct StampOptions {
    std::string input;
    std::string output;
    std::string text;  // as typed: \n ends a line
    uint32_t x = 0;    // in pixels of the page
    uint32_t y = 0;
    std::string font = "Arial";
    int32_t pointSize = 12;
    std::string pages;  // empty: all
    bool force = false;
    bool acceptLoss = false;
};

struct NoteOptions {
    std::string file;
    std::string action;               // show, set, delete or burn
    std::optional<std::string> text;  // for set
    uint32_t image = 0;               // counted from 1; 0: not chosen
    std::optional<POINT> at;
    bool opaque = false;
    std::string output;  // empty: the file itself
    bool force = false;
    bool acceptLoss = false;
};

Outcome RunInfo(const InfoOptions& options);
Outcome RunCheck(const CheckOptions& options);
Outcome RunConvert(const ConvertOptions& options);
Outcome RunPages(const PagesOptions& options);
Outcome RunTag(const TagOptions& options);
Outcome RunPaint(const PaintOptions& options);
Outcome RunNote(const NoteOptions& options);
Outcome RunFax(const FaxOptions& options);
Outcome RunStamp(const StampOptions& options);

}  // namespace vellim::tool
