// The formats that pictures are written in. A new one is a file with a `Begin` function and a row
// in the table.
#pragma once

#include <optional>
#include <string_view>

#include "fax_coding.h"
#include "output_file.h"
#include "page_source.h"
#include "picture.h"

namespace vellim::tool {

// What a format is told beside the picture.
struct WriteOptions {
    std::vector<NamedField> calsTexts;  // keys without their colon; of several, the last counts
    std::string calsOrientation;        // the record's value; empty: 090,270
    std::optional<FaxCoding> coding;    // of a bare stream
    uint32_t fillOrder = 1;             // of a bare stream or a TIFF file
};

struct OutputFormat {
    std::string_view name;
    bool chains;  // pictures may follow one another in one stream
    // The type of pixel that `type` is written as.
    PixelType (*written)(PixelType type);
    // Begins a picture whose type is one that `written` gives. Nothing, with the reason in
    // `output.failure`, if it can't be written.
    std::optional<LineSink> (*begin)(const Picture& picture, const WriteOptions& options,
                                     OutputFile& output);
    // Whether such a picture can be written; if not, the reason is in `why`. What the format can't
    // tell of it goes, in words, to `notes`. Null: every picture can, and whole.
    bool (*prepare)(const Picture& picture, const WriteOptions& options,
                    std::vector<std::string>& notes, std::string& why) = nullptr;
    std::optional<FaxCoding> coding = {};  // of a bare stream, unless another one is chosen
};

// TIFF has no functions: all pages go to one file (tiff_writer.h).
inline bool IsTiff(const OutputFormat& format) {
    return format.begin == nullptr;
}
inline bool IsBare(const OutputFormat& format) {
    return format.coding.has_value();
}
bool HoldsCalsTexts(const OutputFormat& format);

// By name ("png"), case aside; null if there is none.
const OutputFormat* FindFormat(std::string_view name);

// By the ending of a file name.
const OutputFormat* FormatOfPath(std::string_view path);

// "png, bmp, pbm, ..."
std::string FormatNames();

std::optional<LineSink> BeginPng(const Picture& picture, const WriteOptions& options,
                                 OutputFile& output);
std::optional<LineSink> BeginBmp(const Picture& picture, const WriteOptions& options,
                                 OutputFile& output);
std::optional<LineSink> BeginPnm(const Picture& picture, const WriteOptions& options,
                                 OutputFile& output);
std::optional<LineSink> BeginCals(const Picture& picture, const WriteOptions& options,
                                  OutputFile& output);
std::optional<LineSink> BeginIoca(const Picture& picture, const WriteOptions& options,
                                  OutputFile& output);
std::optional<LineSink> BeginModca(const Picture& picture, const WriteOptions& options,
                                   OutputFile& output);
std::optional<LineSink> BeginBare(const Picture& picture, const WriteOptions& options,
                                  OutputFile& output);
bool PrepareCals(const Picture& picture, const WriteOptions& options,
                 std::vector<std::string>& notes, std::string& why);
bool PrepareWrapped(const Picture& picture, const WriteOptions& options,
                    std::vector<std::string>& notes, std::string& why);
bool PrepareBare(const Picture& picture, const WriteOptions& options,
                 std::vector<std::string>& notes, std::string& why);

}  // namespace vellim::tool
