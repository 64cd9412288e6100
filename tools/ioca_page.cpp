// Uncompressed pixels are served as black and white, greys of 4 and 8 bits, and RGB; of coded ones,
// the fax codings. Data is gathered from its chunks before anything is read of it.
#include "ioca_page.h"

#include <algorithm>

#include "vellim/streams.h"

namespace vellim::tool {
namespace {

constexpr uint8_t kRidic = 0x01;
constexpr size_t kMostCodesTold = 16;
constexpr double kUnitsPerMetre = 10;  // ten centimetres are a unit
constexpr double kTenInchesInMetres = 0.254;

struct RawLines {
    CodeFile code;
    ByteSource source;
    size_t rowBytes = 0;
    uint32_t height = 0;
    bool mirrored = false;  // the leftmost pixel in a byte's low bit
    std::string flaw;       // why the page isn't whole though all its lines come
};

std::string Hex(uint64_t number) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (; number != 0 || text.size() < 2; number >>= 4U)
        text.insert(text.begin(), kDigits[number & 0xFU]);
    return "0x" + text;
}

std::string CompressionInWords(uint8_t compression) {
    if (compression == kIocaUncompressed) return "uncompressed";
    if (const auto coding = CodingOf(compression)) return std::string(FaxCodingInWords(*coding));
    switch (compression) {
        case 0x06:
            return "RL4";
        case 0x08:
            return "ABIC";
        case 0x0A:
            return "concatenated ABIC";
        case 0x0D:
            return "LZW";
        case 0x83:
            return "JPEG";
        case 0x84:
            return "JBIG2";
        default:
            return "unknown";
    }
}

std::string ColourInWords(uint8_t colour) {
    switch (colour) {
        case kIocaRgb:
            return "RGB";
        case kIocaYCrCb:
            return "YCrCb";
        case kIocaCmyk:
            return "CMYK";
        case kIocaYCbCr:
            return "YCbCr";
        default:
            return "colours " + Hex(colour);
    }
}

// Whether the first component is all that there is of a pixel: what is called YCbCr then is grey.
bool HasOneComponent(const ImageContent& content) {
    const auto& bits = content.componentBits;
    return bits.empty() || std::all_of(bits.begin() + 1, bits.end(), [](auto b) { return b == 0; });
}

std::optional<PixelType> PixelTypeOf(const ImageContent& content) {
    if (content.pixelBits == 1) return kBilevel;
    if (content.pixelBits == 4 || content.pixelBits == 8) {
        if (!HasOneComponent(content)) return {};
        return PixelType{Colour::Grey, content.pixelBits};
    }
    const std::vector<uint8_t> eights = {8, 8, 8};
    const bool rgb = content.colour == kIocaRgb && content.componentBits == eights;
    if (content.pixelBits == kRgb.bits && rgb && !content.subtractive) return kRgb;
    return {};
}

std::string PixelsInWords(const ImageContent& content) {
    std::string words =
        std::to_string(content.pixelBits) + (content.pixelBits == 1 ? " bit" : " bits");
    if (content.structured) {
        words += content.subtractive ? ", subtractive " : ", additive ";
        words += ColourInWords(content.colour);
    }
    return words;
}

// Why a content can't be served; empty if it can.
std::string Obstacle(const ImageContent& content) {
    const uint8_t compression = content.compression;
    const bool coded = CodingOf(compression).has_value();
    const std::string name = CompressionInWords(compression);
    if (!coded && compression != kIocaUncompressed)
        return "its " + name + " compression (" + Hex(compression) + ") isn't served";
    if (content.tiles) return "its tiles aren't served";
    if (content.bands) return "its bands aren't served";
    if (content.recording != kRidic)
        return "its order of recording (" + Hex(content.recording) + ") isn't served";
    if (coded ? content.pixelBits != 1 : !PixelTypeOf(content))
        return "its " + name + " pixels (" + PixelsInWords(content) + ") aren't served";
    if (content.size.width == 0) return "it doesn't state its width";
    if (content.dataBytes == 0) return "it has no image data";
    return {};
}

bool SetResolution(PageInfo& info, const StatedSize& size) {
    if (size.unitBase > 1) return false;
    const auto perMetre = [&](uint32_t resolution) {
        return static_cast<uint32_t>(size.unitBase == 1 ? resolution * kUnitsPerMetre
                                                        : resolution / kTenInchesInMetres + 0.5);
    };
    SetPelsPerMetre(info, perMetre(size.xResolution), perMetre(size.yResolution), true);
    return info.resolution.has_value();
}

std::string SizeInWords(const StatedSize& size) {
    std::string words = std::to_string(size.width) + " x " + std::to_string(size.height) +
                        " pixels, " + std::to_string(size.xResolution) + " x " +
                        std::to_string(size.yResolution);
    if (size.unitBase == 0) return words + " to 10 inches";
    if (size.unitBase == 1) return words + " to 10 cm";
    return words + " without a unit";
}

void TellFields(PageInfo& info, const ImageContent& content, const ImageBytes& bytes) {
    const auto tell = [&](std::string name, std::string value) {
        info.fields.push_back({std::move(name), std::move(value)});
    };
    uint64_t name = 0;
    for (size_t i = 0; i < std::min(content.segmentName.size(), sizeof name); ++i)
        name = name << 8U | content.segmentName[i];
    if (!content.segmentName.empty()) tell("segment name", Hex(name));
    tell("image content", Hex(content.id));
    if (content.sized) tell("image size", SizeInWords(content.size));
    if (bytes.descriptor) tell("image data descriptor", SizeInWords(*bytes.descriptor));
    tell("compression", Hex(content.compression) + ", " + CompressionInWords(content.compression));
    tell("recording", Hex(content.recording));
    tell("leftmost pixel", content.bitOrder == 0 ? "in the high bit" : "in the low bit");
    tell("pixels", PixelsInWords(content));
    tell("look-up table", std::to_string(content.lookUpTable));
    tell("data", std::to_string(content.dataBytes) + " bytes in " + std::to_string(content.chunks) +
                     (content.chunks == 1 ? " chunk" : " chunks"));
    std::string codes;
    for (size_t i = 0; i < std::min(content.skipped.size(), kMostCodesTold); ++i)
        codes.append(i == 0 ? "" : ", ").append(Hex(content.skipped[i]));
    if (!codes.empty()) tell("other fields", codes);
}

PageInfo Describe(const ImageContent& content, const ImageBytes& bytes) {
    PageInfo info;
    info.storage = CompressionInWords(content.compression);
    TellFields(info, content, bytes);
    if (!SetResolution(info, content.size) && bytes.descriptor) {
        SetResolution(info, *bytes.descriptor);
    }
    if (content.mask) info.givenUp.emplace_back("its transparency mask isn't applied");
    if (content.lookUpTable != 0) info.givenUp.emplace_back("its look-up table isn't applied");
    return info;
}

LinesEnd PushRaw(RawLines& raw, const LineTaker& taker) {
    std::vector<uint8_t> row(raw.rowBytes);
    for (uint32_t y = 0; y < raw.height; ++y) {
        if (!ReadBytes(raw.source, row.data(), row.size())) return {false, true, kEndsTooSoon};
        if (raw.mirrored) std::transform(row.begin(), row.end(), row.begin(), Mirrored);
        if (!taker.take(taker.data, row.data())) break;
    }
    return {raw.flaw.empty(), true, raw.flaw};
}

// What the data of a page of whole rows has beyond them is padding or a loss.
std::string FlawOf(const ImageContent& content, const RawLines& raw, uint64_t bytes,
                   PageInfo& info) {
    const uint64_t wanted = uint64_t{raw.rowBytes} * raw.height;
    if (content.cut) return kEndsTooSoon;
    if (bytes <= wanted) return {};
    const uint64_t beyond = bytes - wanted;
    if (content.size.height == 0) return "its data ends inside a line";
    const std::string amount = std::to_string(beyond) + (beyond == 1 ? " byte" : " bytes");
    if (beyond >= raw.rowBytes) return "its data goes on behind the last line (" + amount + ")";
    info.givenUp.push_back("the data behind the last line (" + amount + ") is left out");
    return {};
}

std::optional<RasterPage> OpenRaw(const ImageContent& content, CodeFile code, PageInfo info,
                                  std::string& why) {
    auto raw = std::make_unique<RawLines>();
    Picture& picture = info.picture;
    picture.type = *PixelTypeOf(content);
    picture.width = content.size.width;
    raw->rowBytes = RowBytes(picture);
    const uint64_t rows = code.size / raw->rowBytes;
    const uint64_t height = content.size.height != 0 ? content.size.height : rows;
    if (!IsServedSize(picture.width, height, why)) return {};
    picture.height = static_cast<uint32_t>(height);
    info.whiteIsZero = picture.type == kBilevel || content.subtractive;
    raw->height = picture.height;
    raw->mirrored = content.bitOrder != 0;
    raw->flaw = FlawOf(content, *raw, code.size, info);
    raw->source = SourceOf(code.descriptor.Get());
    raw->code = std::move(code);
    return MakePushingPage<PushRaw>(std::move(info), std::move(raw));
}

// Code may come to its last line and be cut all the same, as far as one can tell.
LinesEnd PushCut(RasterPage& page, const LineTaker& taker) {
    LinesEnd end = page.push(page.state.get(), taker);
    if (end.whole) end = {false, true, kEndsTooSoon};
    return end;
}

std::optional<RasterPage> OpenCoded(const ImageContent& content, CodeFile code, PageInfo info,
                                    std::string& why) {
    CodedPage page;
    page.code = std::move(code);
    page.coding = *CodingOf(content.compression);
    const bool mirrored = content.bitOrder != 0 && page.coding != FaxCoding::Mmr;
    page.fillOrder = mirrored ? TIFF_FILL_LSB_FIRST : TIFF_FILL_MSB_FIRST;
    page.width = content.size.width;
    page.height = content.size.height;
    auto opened = OpenCodedPage(std::move(page), std::move(info), why);
    if (!opened || !content.cut) return opened;
    PageInfo cut = opened->info;
    return MakePushingPage<PushCut>(std::move(cut),
                                    std::make_unique<RasterPage>(std::move(*opened)));
}

}  // namespace

std::optional<RasterPage> OpenContent(SegmentWalk& walk, std::string& why) {
    if (!NextContent(walk)) {
        why = kEndsTooSoon;
        return {};
    }
    CodeFile code;
    ImageContent content;
    if (!ReadContent(walk, content, code, why)) return {};
    const auto& descriptor = walk.bytes.descriptor;
    // A height that the segment leaves open is that of the lines that come.
    PageInfo info = Describe(content, walk.bytes);
    if (content.size.width == 0 && descriptor) content.size.width = descriptor->width;
    why = Obstacle(content);
    if (!why.empty()) return {};
    const bool coded = content.compression != kIocaUncompressed;
    return (coded ? OpenCoded : OpenRaw)(content, std::move(code), std::move(info), why);
}

}  // namespace vellim::tool
