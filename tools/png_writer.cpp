// PNG through libpng, row by row.
//
// libpng leaves a failed call by longjmp. Each call therefore stands in a function of its own that
// sets the place to return to and holds nothing that would have to be destroyed.
#include <png.h>

#include <array>
#include <csetjmp>
#include <cstring>

#include "output_formats.h"

namespace vellim::tool {
namespace {

constexpr int kCompressionLevel = 6;

struct PngWriter {
    png_structp png = nullptr;
    png_infop info = nullptr;
    OutputFile* output = nullptr;
    std::array<char, 128> message{};

    PngWriter() = default;
    ~PngWriter() { png_destroy_write_struct(&png, &info); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
};

void OnError(png_structp png, png_const_charp message) {
    auto* writer = static_cast<PngWriter*>(png_get_error_ptr(png));
    std::strncpy(writer->message.data(), message, writer->message.size() - 1);
    png_longjmp(png, 1);
}

void OnWarning(png_structp /*png*/, png_const_charp /*message*/) {}

void WriteBytes(png_structp png, png_bytep bytes, size_t count) {
    auto* writer = static_cast<PngWriter*>(png_get_io_ptr(png));
    if (!Write(*writer->output, bytes, count)) png_error(png, "");
}

void FlushBytes(png_structp /*png*/) {}

int PngColourType(Colour colour) {
    switch (colour) {
        case Colour::Palette:
            return PNG_COLOR_TYPE_PALETTE;
        case Colour::Rgb:
            return PNG_COLOR_TYPE_RGB;
        default:
            return PNG_COLOR_TYPE_GRAY;
    }
}

void SetPalette(const PngWriter& w, const Picture& picture) {
    std::array<png_color, 256> colours{};
    for (size_t i = 0; i < picture.palette.size(); ++i) {
        const RGBQUAD& quad = picture.palette[i];
        colours[i] = {quad.rgbRed, quad.rgbGreen, quad.rgbBlue};
    }
    png_set_PLTE(w.png, w.info, colours.data(), static_cast<int>(picture.palette.size()));
}

bool WriteHeader(const PngWriter& w, const Picture& picture) {
    if (setjmp(png_jmpbuf(w.png)) != 0) return false;
    // libpng's own limit of a million lines is below what fax rolls come to.
    png_set_user_limits(w.png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_compression_level(w.png, kCompressionLevel);
    const bool smooth = picture.type.colour != Colour::Palette && picture.type.bits >= 8;
    png_set_filter(w.png, PNG_FILTER_TYPE_BASE, smooth ? PNG_FAST_FILTERS : PNG_FILTER_NONE);
    const int depth = static_cast<int>(picture.type.bits == 24 ? 8 : picture.type.bits);
    png_set_IHDR(w.png, w.info, picture.width, picture.height, depth,
                 PngColourType(picture.type.colour), PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (picture.type.colour == Colour::Palette) SetPalette(w, picture);
    if (picture.pelsPerMetreX != 0 && picture.pelsPerMetreY != 0) {
        png_set_pHYs(w.png, w.info, picture.pelsPerMetreX, picture.pelsPerMetreY,
                     picture.absoluteResolution ? PNG_RESOLUTION_METER : PNG_RESOLUTION_UNKNOWN);
    }
    png_write_info(w.png, w.info);
    return true;
}

bool WriteRow(const PngWriter& w, const uint8_t* row) {
    if (setjmp(png_jmpbuf(w.png)) != 0) return false;
    png_write_row(w.png, row);
    return true;
}

bool WriteEnd(const PngWriter& w) {
    if (setjmp(png_jmpbuf(w.png)) != 0) return false;
    png_write_end(w.png, w.info);
    return true;
}

// A failure of the file has its reason already; libpng's own has not.
bool Told(const PngWriter& w, bool good) {
    if (!good && w.output->failure.empty()) w.output->failure = w.message.data();
    return good;
}

bool WriteLine(PngWriter& w, const uint8_t* row) {
    return Told(w, WriteRow(w, row));
}
bool FinishFile(PngWriter& w) {
    return Told(w, WriteEnd(w));
}

}  // namespace

std::optional<LineSink> BeginPng(const Picture& picture, const WriteOptions& /*options*/,
                                 OutputFile& output) {
    auto w = std::make_unique<PngWriter>();
    w->output = &output;
    w->png = png_create_write_struct(PNG_LIBPNG_VER_STRING, w.get(), OnError, OnWarning);
    if (w->png != nullptr) w->info = png_create_info_struct(w->png);
    if (w->info == nullptr) {
        output.failure = "not enough memory to write a PNG file";
        return {};
    }
    png_set_write_fn(w->png, w.get(), WriteBytes, FlushBytes);
    if (!Told(*w, WriteHeader(*w, picture))) return {};
    return MakeSink<WriteLine, FinishFile>(std::move(w));
}

}  // namespace vellim::tool
