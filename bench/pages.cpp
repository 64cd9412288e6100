// Loading the pages and converting them in memory, so that nothing but the originals is stored.
#include "bench/pages.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

namespace vellim::bench {

namespace {

// Fine fax resolution: with it libtiff writes Group 3 2-D lines with a K factor of 4.
constexpr double kDotsPerInchX = 204;
constexpr double kDotsPerInchY = 196;

// An image as libtiff decodes it.
struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t rowsPerStrip = 0;
    uint16_t bitsPerSample = 1;
    uint16_t samplesPerPixel = 1;
    uint16_t photometric = PHOTOMETRIC_MINISWHITE;
    std::array<std::vector<uint16_t>, 3> colorMap;
    size_t rowBytes = 0;
    Bytes rows;
};

Bytes ReadWholeFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// Size and depth of the first image, or nothing for a file without one.
std::optional<Picture> Describe(TIFF* tiff) {
    if (tiff == nullptr) return std::nullopt;
    Picture picture;
    if (TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &picture.width) == 0) return std::nullopt;
    if (TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &picture.height) == 0) return std::nullopt;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_BITSPERSAMPLE, &picture.bitsPerSample);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLESPERPIXEL, &picture.samplesPerPixel);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_PHOTOMETRIC, &picture.photometric);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &picture.rowsPerStrip);
    picture.rowsPerStrip = std::min(picture.rowsPerStrip, picture.height);
    picture.rowBytes = static_cast<size_t>(TIFFScanlineSize(tiff));
    uint16_t* red = nullptr;
    uint16_t* green = nullptr;
    uint16_t* blue = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue) != 0) {
        const size_t colors = size_t{1} << picture.bitsPerSample;
        picture.colorMap[0].assign(red, red + colors);
        picture.colorMap[1].assign(green, green + colors);
        picture.colorMap[2].assign(blue, blue + colors);
    }
    return picture;
}

bool ReadRows(TIFF* tiff, Picture& picture) {
    picture.rows.resize(picture.rowBytes * picture.height);
    for (uint32_t row = 0; row < picture.height; ++row)
        if (TIFFReadScanline(tiff, &picture.rows[row * picture.rowBytes], row) != 1) return false;
    return true;
}

void DefineTags(TIFF* tiff, const Picture& picture, const Coding& coding) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bitsPerSample);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.samplesPerPixel);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, picture.photometric);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, picture.rowsPerStrip);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, kDotsPerInchX);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, kDotsPerInchY);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    if (!picture.colorMap[0].empty())
        TIFFSetField(tiff, TIFFTAG_COLORMAP, picture.colorMap[0].data(), picture.colorMap[1].data(),
                     picture.colorMap[2].data());
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, coding.compression);
    if (coding.compression == COMPRESSION_CCITTFAX3)
        TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, uint32_t{coding.option});
    if (coding.compression == COMPRESSION_LZW) TIFFSetField(tiff, TIFFTAG_PREDICTOR, coding.option);
}

Bytes Write(Picture& picture, const Coding& coding) {
    Bytes bytes;
    MemoryFile file{&bytes};
    bool whole = true;
    {
        const TiffPointer tiff = OpenForWriting(file);
        if (tiff == nullptr) return {};
        DefineTags(tiff.get(), picture, coding);
        for (uint32_t row = 0; whole && row < picture.height; ++row)
            whole = TIFFWriteScanline(tiff.get(), &picture.rows[row * picture.rowBytes], row) == 1;
    }
    return whole ? bytes : Bytes{};
}

PageKind KindOf(std::string_view name, uint32_t bitsPerPixel) {
    if (bitsPerPixel > 1) return PageKind::Colour;
    const bool halftone = name.starts_with("halftone") || name.starts_with("fs");
    return halftone ? PageKind::Halftone : PageKind::Document;
}

}  // namespace

std::string PageFolder() {
    if (const char* named = std::getenv("VELLIM_PAGES")) return named;
    if (std::filesystem::is_directory(VELLIM_BENCH_PAGES)) return VELLIM_BENCH_PAGES;
    return VELLIM_BENCH_SAMPLES;
}

std::vector<Page> LoadPages(const std::string& folder) {
    std::vector<std::filesystem::path> paths;
    std::error_code failure;
    for (const auto& entry : std::filesystem::directory_iterator(folder, failure))
        if (entry.path().extension() == ".tif") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());

    std::vector<Page> pages;
    for (const auto& path : paths) {
        Bytes bytes = ReadWholeFile(path);
        MemoryFile file{&bytes};
        const auto picture = Describe(OpenForReading(file).get());
        if (!picture) continue;
        const uint32_t bits = uint32_t{picture->bitsPerSample} * picture->samplesPerPixel;
        const std::string name = path.stem().string();
        pages.push_back(
            {name, KindOf(name, bits), picture->width, picture->height, bits, std::move(bytes)});
    }
    return pages;
}

Page Convert(const Page& page, const Coding& coding) {
    Page converted{page.name, page.kind, page.width, page.height, page.bitsPerPixel, {}};
    Bytes bytes = page.file;
    MemoryFile file{&bytes};
    const TiffPointer tiff = OpenForReading(file);
    auto picture = Describe(tiff.get());
    if (picture && ReadRows(tiff.get(), *picture)) converted.file = Write(*picture, coding);
    return converted;
}

}  // namespace vellim::bench
