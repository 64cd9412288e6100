// EncodeTiffImage makes the strips and the directory. Group 3 with EOLs is the exception: its
// closing codes come behind what a strip counts, so that the data is written here as one run of
// code, and the strip counts all of it. The coder leaves out its last byte where bits are missing
// to fill it, so that the last of the closing EOLs may be cut short: no line is affected, and
// readers go by the number of lines.
#include "tiff_writer.h"

#include <algorithm>
#include <array>

#include "line_encoder.h"
#include "pixel_format.h"
#include "vellim/edit.h"
#include "vellim/encode.h"
#include "vellim/failures.h"
#include "vellim/tags.h"

namespace vellim::tool {
namespace {

enum Photometric : uint32_t {
    kWhiteIsZero = 0,
    kBlackIsZero = 1,
    kRgbPhotometric = 2,
    kPalette = 3
};

struct Scheme {
    std::string_view name;
    CompressionKey key;  // Compression in its low 16 bits
    bool bilevel;        // for one bit a pixel alone
    bool twoDimensional;
    bool closingCodes;  // written behind the strip
};

// In the order of TiffCompression.
constexpr std::array<Scheme, 8> kSchemes = {{
    {"none", TIFF_KEY_NONE, false, false, false},
    {"packbits", TIFF_KEY_PACKBITS, false, false, false},
    {"lzw", TIFF_KEY_LZW, false, false, false},
    {"lzw-diff", TIFF_KEY_LZW_DIFFERENCING, false, false, false},
    {"g3", TIFF_KEY_CCITT_1D_BARE, true, false, false},
    {"g3-eol", TIFF_KEY_GROUP3_1D, true, false, true},
    {"g3-2d", TIFF_KEY_GROUP3_2D, true, true, true},
    {"g4", TIFF_KEY_GROUP4, true, true, false},
}};

constexpr uint32_t kCompressionMask = 0xFFFF;
constexpr uint32_t kGroup3 = 3;
constexpr uint32_t kHorizontalDifferencing = 2;
constexpr uint32_t kTwoDimensionalOption = 1;
constexpr uint32_t kMostShort = 65535;
constexpr uint32_t kStripBytes = 8192;
constexpr uint32_t kMostStrips = 8191;  // of which the table can be read back
constexpr uint32_t kWholeByte = 257;    // of 8 bits become of 16

const Scheme& SchemeOf(TiffCompression compression) {
    return kSchemes[static_cast<size_t>(compression)];
}

TiffCompression Suitable(const Picture& picture) {
    if (picture.type == kBilevel && picture.width <= kMostTwoDimensionalPixels) {
        return TiffCompression::G4;
    }
    const bool shades = picture.type == kGrey8 || picture.type == kRgb;
    return shades ? TiffCompression::LzwDifferencing : TiffCompression::Lzw;
}

// ---- Tags. ----

struct TagWriter {
    TiffFileHandle file = 0;
    int32_t image = -1;
    bool good = true;

    void Define(uint32_t tag, uint32_t type, const void* value, uint32_t count) {
        good = good && DefineTiffImageInfoBuffer(file, image, tag, value, type, count) != 0;
    }
    void Short(uint32_t tag, uint32_t value) {
        good = good && DefineTiffImageInfo(file, image, tag, TIFF_TYPE_SHORT, value) != 0;
    }
    void Long(uint32_t tag, uint32_t value) {
        good = good && DefineTiffImageInfo(file, image, tag, TIFF_TYPE_LONG, value) != 0;
    }
};

// As DefineGeneralTags does it, for sides that no SHORT can hold.
void DefineLongSides(TagWriter& tags, const TiffPage& page) {
    const Picture& picture = page.picture;
    uint32_t rows = picture.height;
    if (!SchemeOf(page.plan.compression).bilevel) {
        const uint32_t least = (picture.height + kMostStrips - 1) / kMostStrips;
        const auto fitting = static_cast<uint32_t>(kStripBytes / RowBytes(picture));
        rows = std::min(std::max({fitting, least, 1U}), picture.height);
    }
    tags.Long(TIFF_TAG_IMAGE_WIDTH, picture.width);
    tags.Long(TIFF_TAG_IMAGE_LENGTH, picture.height);
    tags.Short(TIFF_TAG_BITS_PER_SAMPLE, picture.type.bits);
    tags.Long(TIFF_TAG_ROWS_PER_STRIP, rows);
}

void DefineSides(TagWriter& tags, const TiffPage& page) {
    const Picture& picture = page.picture;
    if (std::max(picture.width, picture.height) > kMostShort) {
        DefineLongSides(tags, page);
        return;
    }
    BITMAP bitmap = {};
    bitmap.bmWidth = static_cast<int32_t>(picture.width);
    bitmap.bmHeight = static_cast<int32_t>(picture.height);
    bitmap.bmWidthBytes = static_cast<int32_t>(RowBytes(picture));
    bitmap.bmPlanes = 1;
    bitmap.bmBitsPixel = static_cast<uint16_t>(picture.type.bits);
    tags.good = tags.good && DefineGeneralTags(tags.file, tags.image, bitmap) == 0;
}

void DefineCompression(TagWriter& tags, const TiffPlan& plan) {
    const Scheme& scheme = SchemeOf(plan.compression);
    const uint32_t compression = scheme.key & kCompressionMask;
    tags.Short(TIFF_TAG_COMPRESSION, compression);
    if (plan.fillOrder != TIFF_FILL_MSB_FIRST) tags.Short(TIFF_TAG_FILL_ORDER, plan.fillOrder);
    if (compression == kGroup3) {
        tags.Long(TIFF_TAG_T4_OPTIONS, scheme.twoDimensional ? kTwoDimensionalOption : 0);
    }
    if (plan.compression == TiffCompression::LzwDifferencing) {
        tags.Short(TIFF_TAG_PREDICTOR, kHorizontalDifferencing);
    }
}

// TIFF 6.0, section 5: all reds, then all greens, then all blues.
void DefineColours(TagWriter& tags, const Picture& picture) {
    std::vector<uint16_t> map;
    map.reserve(picture.palette.size() * 3);
    for (const RGBQUAD& quad : picture.palette)
        map.push_back(static_cast<uint16_t>(quad.rgbRed * kWholeByte));
    for (const RGBQUAD& quad : picture.palette)
        map.push_back(static_cast<uint16_t>(quad.rgbGreen * kWholeByte));
    for (const RGBQUAD& quad : picture.palette)
        map.push_back(static_cast<uint16_t>(quad.rgbBlue * kWholeByte));
    tags.Define(TIFF_TAG_COLOR_MAP, TIFF_TYPE_SHORT, map.data(), static_cast<uint32_t>(map.size()));
}

// The sense of the pixels. Other readers want a depth for each sample of a colour.
void DefinePixels(TagWriter& tags, const TiffPage& page) {
    switch (page.picture.type.colour) {
        case Colour::Grey:
            tags.Short(TIFF_TAG_PHOTOMETRIC, page.whiteIsZero ? kWhiteIsZero : kBlackIsZero);
            tags.Short(TIFF_TAG_SAMPLES_PER_PIXEL, 1);
            break;
        case Colour::Palette:
            tags.Short(TIFF_TAG_PHOTOMETRIC, kPalette);
            tags.Short(TIFF_TAG_SAMPLES_PER_PIXEL, 1);
            DefineColours(tags, page.picture);
            break;
        case Colour::Rgb: {
            constexpr std::array<uint16_t, 3> kDepths = {8, 8, 8};
            tags.Short(TIFF_TAG_PHOTOMETRIC, kRgbPhotometric);
            tags.Short(TIFF_TAG_SAMPLES_PER_PIXEL, kDepths.size());
            tags.Define(TIFF_TAG_BITS_PER_SAMPLE, TIFF_TYPE_SHORT, kDepths.data(), kDepths.size());
            tags.Short(TIFF_TAG_PLANAR_CONFIGURATION, 1);
            break;
        }
    }
}

// A page of which nothing is known gets no resolution: readers have a stand-in of their own, and
// one made up here would be taken for the truth.
void DefineResolution(TagWriter& tags, const std::optional<Resolution>& resolution) {
    if (!resolution || resolution->unit < kNoUnit || resolution->unit > kCentimetre) return;
    const std::array<uint32_t, 2> x = {resolution->x.numerator, resolution->x.denominator};
    const std::array<uint32_t, 2> y = {resolution->y.numerator, resolution->y.denominator};
    tags.Define(TIFF_TAG_X_RESOLUTION, TIFF_TYPE_RATIONAL, x.data(), 1);
    tags.Define(TIFF_TAG_Y_RESOLUTION, TIFF_TYPE_RATIONAL, y.data(), 1);
    tags.Short(TIFF_TAG_RESOLUTION_UNIT, resolution->unit);
}

bool DefineTags(TiffFileHandle file, int32_t image, const TiffPage& page) {
    TagWriter tags{file, image};
    DefineCompression(tags, page.plan);
    DefineSides(tags, page);
    DefinePixels(tags, page);
    DefineResolution(tags, page.resolution);
    for (const TagValue& value : page.carried)
        tags.Define(value.tag, value.type, value.bytes.data(), value.count);
    return tags.good;
}

// ---- The encoder. ----

using OwnedFile = Owned<int32_t, -1, &_lclose>;

struct TiffWriter {
    TiffOutput* output = nullptr;
    int32_t image = -1;
    TiffPlan plan;
    uint32_t width = 0, height = 0;
    bool invert = false;
    std::string* failure = nullptr;
    std::vector<uint8_t> row;
    LineEncoder encoder;

    TiffWriter() = default;
    ~TiffWriter() {
        StopEncoder(encoder);
        if (image >= 0) DropTiffImage(output->File(), image);
    }
    TiffWriter(const TiffWriter&) = delete;
    TiffWriter& operator=(const TiffWriter&) = delete;
};

int32_t EncodeImage(const TiffWriter& w, uintptr_t lines) {
    const bool good = EncodeTiffImage(w.output->File(), w.image, lines, OnLineWanted) != 0;
    return good ? 0 : TiffError();
}

int32_t EncodeWithClosingCodes(const TiffWriter& w, uintptr_t lines) {
    const TiffFileHandle tiff = w.output->File();
    OwnedFile file(OpenFile(w.output->Path().c_str(), nullptr, OF_READWRITE));
    const int32_t start = file ? _llseek(file.Get(), 0, SEEK_END) : -1;
    if (start < 0) return TIFF_IO_ERROR;
    if (EncodeCcittImageTo(file.Get(), static_cast<int32_t>(w.width),
                           static_cast<int32_t>(w.height), w.plan.fillOrder, w.output->byteOrder,
                           SchemeOf(w.plan.compression).key, lines, OnLineWanted) == 0) {
        return TiffError();
    }
    const int32_t end = _llseek(file.Get(), 0, SEEK_CUR);
    if (end < start || _lclose(file.Release()) != 0) return TIFF_IO_ERROR;
    TagWriter tags{tiff, w.image};
    tags.Long(TIFF_TAG_STRIP_OFFSETS, static_cast<uint32_t>(start));
    tags.Long(TIFF_TAG_STRIP_BYTE_COUNTS, static_cast<uint32_t>(end - start));
    return tags.good ? WriteTiffImageDirectory(tiff, w.image) : TiffError();
}

bool WriteLine(TiffWriter& w, const uint8_t* row) {
    if (w.invert) {
        std::copy_n(row, w.row.size(), w.row.begin());
        NormaliseLine(w.row.data(), w.width, w.plan.type, true);
        row = w.row.data();
    }
    return EncodeLine(w.encoder, row, *w.failure);
}

bool FinishImage(TiffWriter& w) {
    return FinishEncoder(w.encoder, *w.failure);
}

}  // namespace

std::optional<TiffCompression> FindTiffCompression(std::string_view name) {
    const auto* const found = std::find_if(kSchemes.begin(), kSchemes.end(),
                                           [name](const Scheme& s) { return s.name == name; });
    if (found == kSchemes.end()) return {};
    return static_cast<TiffCompression>(found - kSchemes.begin());
}

std::string TiffCompressionNames() {
    std::string names;
    for (const Scheme& scheme : kSchemes) {
        if (!names.empty()) names += ", ";
        names += scheme.name;
    }
    return names;
}

// Other orders of bits than the usual one are known for bilevel data alone (TIFF 6.0, section 8).
std::optional<TiffPlan> PlanTiffPage(const Picture& picture, const TiffOptions& options,
                                     std::string& why) {
    TiffPlan plan;
    plan.compression = options.compression.value_or(Suitable(picture));
    const Scheme& scheme = SchemeOf(plan.compression);
    plan.fax = scheme.bilevel;
    plan.type = scheme.bilevel ? kBilevel : picture.type;
    if (scheme.twoDimensional && picture.width > kMostTwoDimensionalPixels) {
        why = "lines of more than " + std::to_string(kMostTwoDimensionalPixels) +
              " pixels can't be coded as " + std::string(scheme.name) + "; g3 or lzw can";
        return {};
    }
    if (plan.compression == TiffCompression::LzwDifferencing && plan.type.bits < 8) {
        plan.compression = TiffCompression::Lzw;
        plan.notes.emplace_back("differencing is for 8 and 24 bits a pixel; stored as plain lzw");
    }
    const bool bitwise =
        scheme.bilevel || (plan.compression == TiffCompression::None && plan.type.bits == 1);
    plan.fillOrder = options.fillOrder;
    if (plan.fillOrder != TIFF_FILL_MSB_FIRST && !bitwise) {
        plan.fillOrder = TIFF_FILL_MSB_FIRST;
        plan.notes.emplace_back(
            "the low bit can stand first in black and white alone, as none, g3 or g4; stored in "
            "the usual order");
    }
    return plan;
}

std::optional<LineSink> BeginTiff(const TiffPage& page, TiffOutput& output, std::string& failure) {
    auto w = std::make_unique<TiffWriter>();
    w->output = &output;
    w->plan = page.plan;
    w->width = page.picture.width;
    w->height = page.picture.height;
    w->invert = page.whiteIsZero && page.picture.type.colour == Colour::Grey;
    w->failure = &failure;
    w->image = DefineTiffImage(output.File());
    if (w->image < 0 || !DefineTags(output.File(), w->image, page)) {
        failure = FailureInEncoding(TiffError());
        return {};
    }
    w->row.resize(RowBytes(page.picture));
    StartEncoder(w->encoder, w->row.size(), [&writer = *w](uintptr_t lines) {
        return SchemeOf(writer.plan.compression).closingCodes
                   ? EncodeWithClosingCodes(writer, lines)
                   : EncodeImage(writer, lines);
    });
    return MakeSink<WriteLine, FinishImage>(std::move(w));
}

}  // namespace vellim::tool
