// A document to read: a TIFF file, or one of the raster formats, recognised by its content; or a
// bare stream of fax code, recognised by its ending or by what the user tells of it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "document.h"
#include "image_facts.h"
#include "picture.h"
#include "source_hints.h"
#include "tag_values.h"

namespace vellim::tool {

struct RasterFormat;
struct SourcePage;

// What a file holds beside its pictures, in words.
struct Beside {
    std::vector<std::string> kinds;  // "fonts (9 fields)"
    std::string stray;               // bytes that make no sense, so that pictures may be lost there
};

struct PageSource {
    std::string name;                      // as the user named it; "-" is standard input
    OwnedDescriptor descriptor;            // of a raster file, or of what came through a pipe
    std::optional<Document> tiff;          // behind what it reads from
    const RasterFormat* format = nullptr;  // of a raster file
    std::vector<uint64_t> pictures;        // where each begins, in a raster file
    Beside beside;
    SourceHints hints;
    uint32_t pageCount = 0;

    // Whether a page that can't be had leaves the others alone.
    [[nodiscard]] bool IsDocument() const;
    // "TIFF", "CALS", "bare stream", ...
    [[nodiscard]] std::string_view Kind() const;
};

struct NamedField {
    std::string name;
    std::string value;
};

// What conversion gives up, in words.
constexpr const char* kDeepSamples = "samples of 16 bits become samples of 8 bits";
constexpr const char* kTransparency = "what is transparent is laid on white";
constexpr const char* kColourProfile = "the colour profile isn't carried over";
constexpr const char* kXmp = "XMP data isn't carried over";
constexpr const char* kExif = "Exif and GPS data isn't carried over";

// What is known of a page before its first line.
struct PageInfo {
    Picture picture;           // that the lines make when they are turned as `whiteIsZero` says
    bool whiteIsZero = false;  // lines are stored the other way round
    std::optional<Resolution> resolution;
    std::vector<TagValue> carried;     // what a TIFF file tells of a page besides its pixels
    std::vector<std::string> givenUp;  // what there is of it that no output gets

    // Of a page of no TIFF file:
    std::string storage;                // how it is stored: "Group 4", for people
    std::vector<NamedField> fields;     // what its header says, as it stands there
    std::vector<NamedField> calsTexts;  // the text records of a CALS file, without those of "NONE"
};

// How the lines of a page ended.
struct LinesEnd {
    bool whole = true;
    bool worthKeeping = true;  // what came is of use: damage is the normal case for faxes
    std::string reason;        // why it ended, should lines be missing
};

// Takes a line, which it may change. False ends the lines.
struct LineTaker {
    bool (*take)(void* data, uint8_t* line) noexcept;
    void* data;
};

// Opens `path`, or standard input for "-". Nothing, with the reason in `why`, if it can't be.
std::optional<PageSource> OpenPageSource(const std::string& path, const SourceHints& hints,
                                         std::string& why);

// "it holds fonts (9 fields), presentation text (3 fields)", or nothing: what a file has beside its
// pictures.
std::string BesideInWords(const PageSource& source);

// "there are no images in it", and what it has in their place.
std::string NoImagesInWords(const PageSource& source);

// What there is that can't be read as pictures but may have been some, in words; empty if there is
// nothing.
std::string OutOfReach(const PageSource& source);

struct PageCloser {
    void operator()(SourcePage* page) const;
};
using OwnedPage = std::unique_ptr<SourcePage, PageCloser>;

// Makes a page, counted from 0, ready. Null, with the reason in `why`, if it can't be converted.
OwnedPage OpenPage(const PageSource& source, uint32_t page, std::string& why);

const PageInfo& InfoOf(const SourcePage& page);

// Gives the page's lines, from the top, to `taker`.
LinesEnd PushLines(SourcePage& page, const LineTaker& taker);

}  // namespace vellim::tool
