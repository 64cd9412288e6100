// PNG through libpng, row by row. An interlaced picture comes in seven passes over all of its rows,
// so that it alone is held whole.
//
// Samples of 16 bits are brought to 8; pixels of 2 bits become pixels of 4; what is translucent is
// laid over white paper. Gamma and colour profiles are left aside.
//
// libpng leaves a failed call by longjmp. Each call therefore stands in a function of its own that
// sets the place to return to and holds nothing that would have to be destroyed.
#include <png.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstring>
#include <string_view>

#include "byte_source.h"
#include "handles.h"
#include "raster_formats.h"
#include "vellim/files.h"

namespace vellim::tool {
namespace {

// What a chunk beside the pixels may take, and how many texts may be kept.
constexpr size_t kMostChunkBytes = 8UL << 20U;
constexpr uint32_t kMostKeptChunks = 128;
// Deflate makes at most 1032 bytes of one (RFC 1951), so that a picture beyond that isn't there.
constexpr uint64_t kMostDeflated = 1032;
constexpr uint64_t kMostHeldBytes = 1ULL << 31U;
constexpr uint32_t kWhite = 255;

struct PngReader {
    png_structp png = nullptr;
    png_infop info = nullptr;
    ByteSource source;
    std::array<char, 128> message{};
    uint32_t width = 0, height = 0;
    int depth = 0, colourType = 0;
    bool interlaced = false;
    bool deep = false;         // stored with samples of 16 bits
    bool alpha = false;        // rows come with an alpha sample behind each pixel
    std::vector<uint8_t> row;  // as libpng gives it
    OwnedBlock picture;        // of an interlaced one, all rows
    uint32_t line = 0;

    PngReader() = default;
    ~PngReader() { png_destroy_read_struct(&png, &info, nullptr); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
};

void OnError(png_structp png, png_const_charp message) {
    auto* reader = static_cast<PngReader*>(png_get_error_ptr(png));
    std::strncpy(reader->message.data(), message, reader->message.size() - 1);
    png_longjmp(png, 1);
}

void OnWarning(png_structp /*png*/, png_const_charp /*message*/) {}

void GiveBytes(png_structp png, png_bytep bytes, size_t count) {
    auto* reader = static_cast<PngReader*>(png_get_io_ptr(png));
    if (!ReadBytes(reader->source, bytes, count)) png_error(png, "");
}

bool ReadHeader(PngReader& r) {
    if (setjmp(png_jmpbuf(r.png)) != 0) return false;
    uint32_t linePixels = 0;
    uint32_t lines = 0;
    GetTiffSizeLimits(&linePixels, &lines);
    png_set_user_limits(r.png, linePixels, lines);
    png_set_chunk_malloc_max(r.png, kMostChunkBytes);
    png_set_chunk_cache_max(r.png, kMostKeptChunks);
    png_read_info(r.png, r.info);
    r.width = png_get_image_width(r.png, r.info);
    r.height = png_get_image_height(r.png, r.info);
    r.depth = png_get_bit_depth(r.png, r.info);
    r.colourType = png_get_color_type(r.png, r.info);
    r.interlaced = png_get_interlace_type(r.png, r.info) != PNG_INTERLACE_NONE;
    return true;
}

// Asks for samples of 8 bits and for alpha where something is translucent; a palette keeps its
// indices, and its alpha goes into its colours.
bool SetForm(PngReader& r) {
    if (setjmp(png_jmpbuf(r.png)) != 0) return false;
    const bool palette = r.colourType == PNG_COLOR_TYPE_PALETTE;
    const bool keyed = !palette && png_get_valid(r.png, r.info, PNG_INFO_tRNS) != 0;
    r.alpha = keyed || (r.colourType & PNG_COLOR_MASK_ALPHA) != 0;
    if (keyed) png_set_expand(r.png);
    r.deep = r.depth == 16;
    if (r.deep) png_set_scale_16(r.png);
    if (r.interlaced) png_set_interlace_handling(r.png);
    png_read_update_info(r.png, r.info);
    r.depth = png_get_bit_depth(r.png, r.info);
    return true;
}

bool ReadRow(PngReader& r) {
    if (setjmp(png_jmpbuf(r.png)) != 0) return false;
    png_read_row(r.png, r.row.data(), nullptr);
    return true;
}

bool ReadEnd(PngReader& r) {
    if (setjmp(png_jmpbuf(r.png)) != 0) return false;
    png_read_end(r.png, nullptr);
    return true;
}

bool ReadPasses(PngReader& r, uint8_t* rows) {
    if (setjmp(png_jmpbuf(r.png)) != 0) return false;
    const int passes = png_set_interlace_handling(r.png);
    for (int pass = 0; pass < passes; ++pass) {
        for (uint32_t y = 0; y < r.height; ++y)
            png_read_row(r.png, rows + y * r.row.size(), nullptr);
    }
    return true;
}

// A failure of the file has its reason; libpng's own is in its message.
bool Told(const PngReader& r, bool good, std::string& why) {
    if (!good) why = !r.source.failure.empty() ? r.source.failure : r.message.data();
    return good;
}

bool HoldPicture(PngReader& r, std::string& why) {
    const uint64_t bytes = uint64_t{r.row.size()} * r.height;
    if (bytes > r.source.size * kMostDeflated) {
        why = kEndsTooSoon;
        return false;
    }
    if (bytes < kMostHeldBytes) {
        r.picture.Reset(GlobalAlloc(GHND, static_cast<uint32_t>(bytes)));
    }
    const LockedBlock rows(r.picture.Get());
    if (rows.Bytes() == nullptr) {
        why = "it is interlaced and needs memory for all of it, which there isn't";
        return false;
    }
    return Told(r, ReadPasses(r, rows.Bytes()), why);
}

uint8_t OverWhite(uint32_t sample, uint32_t alpha) {
    return static_cast<uint8_t>((sample * alpha + kWhite * (kWhite - alpha) + kWhite / 2) / kWhite);
}

// Brings a row of libpng's to the form of a picture's line.
void FinishRow(const PngReader& r, const uint8_t* from, uint8_t* to, size_t bytes) {
    if (r.depth == 2) {
        const bool palette = r.colourType == PNG_COLOR_TYPE_PALETTE;
        const unsigned factor = palette ? 1 : 5;  // of 3 becomes of 15
        for (uint32_t x = 0; x < r.width; ++x) {
            const unsigned value = static_cast<unsigned>(from[x / 4]) >> (6 - x % 4 * 2) & 3U;
            const unsigned moved = value * factor << (x % 2 == 0 ? 4U : 0U);
            to[x / 2] = static_cast<uint8_t>(x % 2 == 0 ? moved : to[x / 2] | moved);
        }
        return;
    }
    if (!r.alpha) {
        std::copy_n(from, bytes, to);
        return;
    }
    const size_t samples = bytes / r.width;
    for (uint32_t x = 0; x < r.width; ++x, from += samples + 1) {
        for (size_t i = 0; i < samples; ++i)
            *to++ = OverWhite(from[i], from[samples]);
    }
}

bool NextLine(PngReader& r, uint8_t* line, std::string& why, size_t bytes) {
    if (r.interlaced) {
        if (!r.picture && !HoldPicture(r, why)) return false;
        const LockedBlock rows(r.picture.Get());
        FinishRow(r, rows.Bytes() + size_t{r.line} * r.row.size(), line, bytes);
    } else {
        if (!Told(r, ReadRow(r), why)) return false;
        FinishRow(r, r.row.data(), line, bytes);
    }
    ++r.line;
    return r.line < r.height || Told(r, ReadEnd(r), why);
}

bool NextPngLine(PngReader& r, uint8_t* line, std::string& why) {
    const uint32_t channels =
        (r.colourType & PNG_COLOR_MASK_COLOR) != 0 && r.colourType != PNG_COLOR_TYPE_PALETTE ? 3
                                                                                             : 1;
    return NextLine(r, line, why, r.depth < 8 ? r.row.size() : size_t{r.width} * channels);
}

void ReadPalette(const PngReader& r, Picture& picture) {
    png_colorp colours = nullptr;
    int count = 0;
    png_bytep alphas = nullptr;
    int alphaCount = 0;
    png_get_PLTE(r.png, r.info, &colours, &count);
    png_get_tRNS(r.png, r.info, &alphas, &alphaCount, nullptr);
    picture.palette.resize(size_t{1} << picture.type.bits);
    const size_t given = std::min<size_t>(static_cast<size_t>(count), picture.palette.size());
    for (size_t i = 0; i < given; ++i) {
        const uint32_t alpha = i < static_cast<size_t>(alphaCount) ? alphas[i] : kWhite;
        picture.palette[i] = {OverWhite(colours[i].blue, alpha), OverWhite(colours[i].green, alpha),
                              OverWhite(colours[i].red, alpha), 0};
    }
}

void ReadResolution(const PngReader& r, PageInfo& info) {
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = PNG_RESOLUTION_UNKNOWN;
    if (png_get_pHYs(r.png, r.info, &x, &y, &unit) == 0) return;
    SetPelsPerMetre(info, x, y, unit == PNG_RESOLUTION_METER);
}

bool HasXmp(const PngReader& r) {
    constexpr std::string_view kXmpKey = "XML:com.adobe.xmp";
    png_textp texts = nullptr;
    int count = 0;
    png_get_text(r.png, r.info, &texts, &count);
    return std::any_of(texts, texts + count, [&](const png_text& t) { return kXmpKey == t.key; });
}

void TellGivenUp(const PngReader& r, PageInfo& info) {
    const auto has = [&](uint32_t chunk) { return png_get_valid(r.png, r.info, chunk) != 0; };
    if (r.deep) info.givenUp.emplace_back(kDeepSamples);
    if (r.alpha || has(PNG_INFO_tRNS)) info.givenUp.emplace_back(kTransparency);
    if (has(PNG_INFO_iCCP)) info.givenUp.emplace_back(kColourProfile);
    if (has(PNG_INFO_eXIf)) info.givenUp.emplace_back(kExif);
    if (HasXmp(r)) info.givenUp.emplace_back(kXmp);
}

PageInfo Describe(const PngReader& r) {
    PageInfo info;
    Picture& picture = info.picture;
    picture.width = r.width;
    picture.height = r.height;
    const auto bits = static_cast<uint32_t>(r.depth == 2 ? 4 : r.depth);
    if (r.colourType == PNG_COLOR_TYPE_PALETTE) {
        picture.type = {Colour::Palette, bits};
        ReadPalette(r, picture);
        SimplifyPalette(info);
    } else {
        picture.type =
            (r.colourType & PNG_COLOR_MASK_COLOR) != 0 ? kRgb : PixelType{Colour::Grey, bits};
    }
    ReadResolution(r, info);
    TellGivenUp(r, info);
    return info;
}

}  // namespace

std::optional<RasterPage> OpenPng(int descriptor, uint64_t /*offset*/, std::string& why) {
    auto r = std::make_unique<PngReader>();
    r->source = SourceOf(descriptor);
    r->png = png_create_read_struct(PNG_LIBPNG_VER_STRING, r.get(), OnError, OnWarning);
    if (r->png != nullptr) r->info = png_create_info_struct(r->png);
    if (r->info == nullptr) {
        why = "not enough memory to read a PNG file";
        return {};
    }
    png_set_read_fn(r->png, r.get(), GiveBytes);
    if (!Told(*r, ReadHeader(*r), why) || !IsServedSize(r->width, r->height, why) ||
        !Told(*r, SetForm(*r), why)) {
        return {};
    }
    r->row.resize(png_get_rowbytes(r->png, r->info));
    PageInfo info = Describe(*r);
    return MakeRasterPage<NextPngLine>(std::move(info), std::move(r));
}

}  // namespace vellim::tool
