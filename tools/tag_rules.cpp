// Types and counts are those of TIFF 6.0 (sections 8 to 22), TIFF/FX (RFC 3949), Exif for its
// dates, and GeoTIFF. A tag that may be SHORT or LONG has the smaller one first.
#include "tag_rules.h"

#include <algorithm>
#include <array>

#include "vellim/streams.h"

namespace vellim::tool {
namespace {

constexpr auto kByte = uint32_t{TIFF_TYPE_BYTE};
constexpr auto kAscii = uint32_t{TIFF_TYPE_ASCII};
constexpr auto kShort = uint32_t{TIFF_TYPE_SHORT};
constexpr auto kLong = uint32_t{TIFF_TYPE_LONG};
constexpr auto kRational = uint32_t{TIFF_TYPE_RATIONAL};
constexpr TagRole kFree = TagRole::Free;
constexpr TagRole kData = TagRole::DescribesData;
constexpr TagRole kPlace = TagRole::PointsIntoFile;

constexpr auto kRules = std::to_array<TagRule>({
    {254, kFree, kLong, 0, 1},                 // NewSubfileType
    {255, kFree, kShort, 0, 1},                // SubfileType
    {256, kData, kShort, kLong, 1},            // ImageWidth
    {257, kData, kShort, kLong, 1},            // ImageLength
    {258, kData, kShort, 0, 0},                // BitsPerSample
    {259, kData, kShort, 0, 1},                // Compression
    {262, TagRole::Needed, kShort, 0, 1},      // PhotometricInterpretation
    {263, kFree, kShort, 0, 1, 1, 3},          // Threshholding
    {264, kFree, kShort, 0, 1},                // CellWidth
    {265, kFree, kShort, 0, 1},                // CellLength
    {266, kData, kShort, 0, 1},                // FillOrder
    {269, kFree, kAscii, 0, 0},                // DocumentName
    {270, kFree, kAscii, 0, 0},                // ImageDescription
    {271, kFree, kAscii, 0, 0},                // Make
    {272, kFree, kAscii, 0, 0},                // Model
    {273, kData, kShort, kLong, 0},            // StripOffsets
    {274, kFree, kShort, 0, 1, 1, 8},          // Orientation
    {277, kData, kShort, 0, 1},                // SamplesPerPixel
    {278, kData, kShort, kLong, 1},            // RowsPerStrip
    {279, kData, kShort, kLong, 0},            // StripByteCounts
    {280, kFree, kShort, 0, 0},                // MinSampleValue
    {281, kFree, kShort, 0, 0},                // MaxSampleValue
    {282, kFree, kRational, 0, 1},             // XResolution
    {283, kFree, kRational, 0, 1},             // YResolution
    {284, kData, kShort, 0, 1},                // PlanarConfiguration
    {285, kFree, kAscii, 0, 0},                // PageName
    {286, kFree, kRational, 0, 1},             // XPosition
    {287, kFree, kRational, 0, 1},             // YPosition
    {288, kPlace, kLong, 0, 0},                // FreeOffsets
    {289, kPlace, kLong, 0, 0},                // FreeByteCounts
    {290, kFree, kShort, 0, 1, 1, 5},          // GrayResponseUnit
    {291, kFree, kShort, 0, 0},                // GrayResponseCurve
    {292, kData, kLong, 0, 1},                 // T4Options
    {293, kData, kLong, 0, 1},                 // T6Options
    {296, kFree, kShort, 0, 1, 1, 3},          // ResolutionUnit
    {297, kFree, kShort, 0, 2},                // PageNumber
    {300, kFree, kShort, 0, 1, 1, 5},          // ColorResponseUnit
    {301, kFree, kShort, 0, 0},                // TransferFunction
    {305, kFree, kAscii, 0, 0},                // Software
    {306, kFree, kAscii, 0, 20},               // DateTime
    {315, kFree, kAscii, 0, 0},                // Artist
    {316, kFree, kAscii, 0, 0},                // HostComputer
    {317, kData, kShort, 0, 1},                // Predictor
    {318, kFree, kRational, 0, 2},             // WhitePoint
    {319, kFree, kRational, 0, 6},             // PrimaryChromaticities
    {320, kData, kShort, 0, 0},                // ColorMap
    {321, kFree, kShort, 0, 2},                // HalftoneHints
    {322, kData, kShort, kLong, 1},            // TileWidth
    {323, kData, kShort, kLong, 1},            // TileLength
    {324, kData, kLong, 0, 0},                 // TileOffsets
    {325, kData, kShort, kLong, 0},            // TileByteCounts
    {326, kFree, kShort, kLong, 1},            // BadFaxLines
    {327, kFree, kShort, 0, 1, 0, 2},          // CleanFaxData
    {328, kFree, kShort, kLong, 1},            // ConsecutiveBadFaxLines
    {330, kPlace, kLong, 0, 0},                // SubIFDs
    {332, kData, kShort, 0, 1},                // InkSet
    {333, kFree, kAscii, 0, 0},                // InkNames
    {334, kData, kShort, 0, 1},                // NumberOfInks
    {336, kFree, kByte, kShort, 0},            // DotRange
    {337, kFree, kAscii, 0, 0},                // TargetPrinter
    {338, kData, kShort, 0, 0},                // ExtraSamples
    {339, kData, kShort, 0, 0},                // SampleFormat
    {342, kFree, kShort, 0, 6},                // TransferRange
    {347, kData, kFieldUndefined, 0, 0},       // JPEGTables
    {400, kPlace, kLong, 0, 1},                // GlobalParametersIFD
    {401, kFree, kLong, 0, 1},                 // ProfileType
    {402, kFree, kByte, 0, 1},                 // FaxProfile
    {403, kFree, kLong, 0, 1},                 // CodingMethods
    {404, kFree, kByte, 0, 4},                 // VersionYear
    {405, kFree, kByte, 0, 1},                 // ModeNumber
    {433, kData, kFieldSignedRational, 0, 0},  // Decode
    {434, kFree, kShort, 0, 0},                // DefaultImageColor
    {512, kData, kShort, 0, 1},                // JPEGProc
    {513, kPlace, kLong, 0, 1},                // JPEGInterchangeFormat
    {514, kPlace, kLong, 0, 1},                // JPEGInterchangeFormatLength
    {515, kData, kShort, 0, 1},                // JPEGRestartInterval
    {517, kData, kShort, 0, 0},                // JPEGLosslessPredictors
    {518, kData, kShort, 0, 0},                // JPEGPointTransforms
    {519, kPlace, kLong, 0, 0},                // JPEGQTables
    {520, kPlace, kLong, 0, 0},                // JPEGDCTables
    {521, kPlace, kLong, 0, 0},                // JPEGACTables
    {529, kFree, kRational, 0, 3},             // YCbCrCoefficients
    {530, kData, kShort, 0, 2},                // YCbCrSubSampling
    {531, kFree, kShort, 0, 1, 1, 2},          // YCbCrPositioning
    {532, kFree, kRational, 0, 0},             // ReferenceBlackWhite
    {559, kData, kLong, 0, 0},                 // StripRowCounts
    {700, kFree, kByte, 0, 0},                 // XMP
    {32781, kFree, kAscii, 0, 0},              // ImageID
    {32932, kFree, kByte, 0, 0},               // WangAnnotation
    {32995, kData, kShort, 0, 1},              // Matteing
    {32996, kData, kShort, 0, 0},              // DataType
    {33432, kFree, kAscii, 0, 0},              // Copyright
    {33550, kFree, kFieldDouble, 0, 3},        // ModelPixelScale
    {33723, kFree, kFieldUndefined, 0, 0},     // IPTC
    {33922, kFree, kFieldDouble, 0, 0},        // ModelTiepoint
    {34264, kFree, kFieldDouble, 0, 16},       // ModelTransformation
    {34377, kFree, kByte, 0, 0},               // PhotoshopResources
    {34665, kPlace, kLong, 0, 1},              // ExifIFD
    {34675, kFree, kFieldUndefined, 0, 0},     // ICCProfile
    {34735, kFree, kShort, 0, 0},              // GeoKeyDirectory
    {34736, kFree, kFieldDouble, 0, 0},        // GeoDoubleParams
    {34737, kFree, kAscii, 0, 0},              // GeoAsciiParams
    {34853, kPlace, kLong, 0, 1},              // GPSIFD
    {34908, kFree, kLong, 0, 1},               // FaxRecvParams
    {34909, kFree, kAscii, 0, 0},              // FaxSubAddress
    {34910, kFree, kLong, 0, 1},               // FaxRecvTime
    {34911, kFree, kAscii, 0, 0},              // FaxDCS
    {36867, kFree, kAscii, 0, 20},             // DateTimeOriginal
    {36868, kFree, kAscii, 0, 20},             // DateTimeDigitized
    {40965, kPlace, kLong, 0, 1},              // InteroperabilityIFD
    {42016, kFree, kAscii, 0, 33},             // ImageUniqueID
    {42112, kFree, kAscii, 0, 0},              // GDALMetadata
    {42113, kFree, kAscii, 0, 0},              // GDALNoData
});

constexpr bool Before(const TagRule& a, const TagRule& b) {
    return a.tag < b.tag;
}

static_assert(std::is_sorted(kRules.begin(), kRules.end(), Before), "the look-up halves the table");

}  // namespace

TagRule RuleOf(uint32_t tag) {
    const TagRule wanted{tag};
    const auto* const found = std::lower_bound(kRules.begin(), kRules.end(), wanted, Before);
    return found != kRules.end() && found->tag == tag ? *found : wanted;
}

}  // namespace vellim::tool
