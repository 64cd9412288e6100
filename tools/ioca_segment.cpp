#include "ioca_segment.h"

#include <algorithm>
#include <array>

namespace vellim::tool {
namespace {

enum FieldCode : uint32_t {
    kBeginSegment = 0x70,
    kEndSegment = 0x71,
    kBeginTile = 0x8C,
    kEndTile = 0x8D,
    kBeginMask = 0x8E,
    kEndMask = 0x8F,
    kBeginContent = 0x91,
    kEndContent = 0x93,
    kImageSize = 0x94,
    kImageEncoding = 0x95,
    kPixelSize = 0x96,
    kLookUpTable = 0x97,
    kBandImage = 0x98,
    kPixelStructure = 0x9B,
    kLongForm = 0xFE,  // a second byte of code, and two bytes of length
    kImageData = 0xFE92,
    kBandData = 0xFE9C,
};

constexpr size_t kComponentsAt = 5;          // in the data of the structure
constexpr uint8_t kSubtractive = 0x80;       // in its flags
constexpr uint64_t kMostBlockBytes = 32767;  // what the MMR encoder writes
constexpr int kPictureMark = 0xD3;           // D3 EE FB before a head, D3 A9 C7 behind a tail
constexpr std::array<std::array<int, 2>, 2> kBehindPictureMark = {{{0xEE, 0xFB}, {0xA9, 0xC7}}};

struct FieldHead {
    uint32_t code = 0;
    uint32_t length = 0;
    uint64_t at = 0;  // in the file
};

bool ReadFieldHead(ImageBytes& bytes, FieldHead& head) {
    const int code = ReadByte(bytes);
    head.at = bytes.source.position - 1;
    const bool isLong = code == kLongForm;
    std::array<int, 3> rest{};
    std::generate_n(rest.begin(), isLong ? 3 : 1, [&] { return ReadByte(bytes); });
    // Behind the end there is nothing but the end.
    if (code < 0 || *std::min_element(rest.begin(), rest.end()) < 0) return false;
    const auto number = [&rest](size_t i) { return static_cast<uint32_t>(rest[i]); };
    head.code = isLong ? kLongForm << 8U | number(0) : static_cast<uint32_t>(code);
    head.length = isLong ? number(1) << 8U | number(2) : number(0);
    return true;
}

// False if there is less data than `length`.
bool ReadData(ImageBytes& bytes, uint32_t length, std::vector<uint8_t>& data) {
    data.clear();
    while (data.size() < length) {
        const int byte = ReadByte(bytes);
        if (byte < 0) return false;
        data.push_back(static_cast<uint8_t>(byte));
    }
    return true;
}

bool BeginSegment(SegmentWalk& walk, uint64_t at, uint32_t nameBytes) {
    walk.inSegment = true;
    walk.segmentAt = at;
    return ReadData(walk.bytes, nameBytes, walk.segmentName);
}

bool FindSegment(SegmentWalk& walk) {
    for (;;) {
        const int byte = ReadByte(walk.bytes);
        const uint64_t at = walk.bytes.source.position - 1;
        if (byte == kPictureMark) {
            std::array<int, 2> rest{};
            std::generate(rest.begin(), rest.end(), [&] { return ReadByte(walk.bytes); });
            if (rest != kBehindPictureMark[0] && rest != kBehindPictureMark[1]) return false;
        } else if (byte == kBeginSegment) {
            const int nameBytes = ReadByte(walk.bytes);
            return nameBytes >= 0 && BeginSegment(walk, at, static_cast<uint32_t>(nameBytes));
        } else if (byte != 0) {
            return false;
        }
    }
}

void TakeEncoding(ImageContent& content, const std::vector<uint8_t>& data) {
    if (!data.empty()) content.compression = data[0];
    if (data.size() > 1) content.recording = data[1];
    if (data.size() > 2) content.bitOrder = data[2];
}

void TakeStructure(ImageContent& content, const std::vector<uint8_t>& data) {
    if (data.size() < 2) return;
    content.structured = true;
    content.subtractive = (data[0] & kSubtractive) != 0;
    content.colour = data[1];
    if (data.size() <= kComponentsAt) return;
    content.componentBits.assign(data.begin() + kComponentsAt, data.end());
}

void TakeField(ImageContent& content, uint32_t code, const std::vector<uint8_t>& data) {
    switch (code) {
        case kImageSize:
            content.sized = data.size() >= kStatedSizeBytes;
            if (content.sized) content.size = ReadStatedSize(data.data());
            break;
        case kImageEncoding:
            TakeEncoding(content, data);
            break;
        case kPixelSize:
            if (!data.empty()) content.pixelBits = data[0];
            break;
        case kLookUpTable:
            if (!data.empty()) content.lookUpTable = data[0];
            break;
        case kPixelStructure:
            TakeStructure(content, data);
            break;
        default: {
            auto& skipped = content.skipped;
            if (std::find(skipped.begin(), skipped.end(), code) == skipped.end())
                skipped.push_back(code);
        }
    }
}

// Blocks of MMR code are cut anew, so that one that the file cuts short has the length that it has.
bool KeepData(const ImageContent& content, int from, uint64_t at, uint64_t count, CodeFile& code,
              std::string& why) {
    if (content.compression == kIocaMmr) {
        const std::array<uint8_t, 4> head = {kImageData >> 8U, kImageData & 0xFFU,
                                             static_cast<uint8_t>(count >> 8U),
                                             static_cast<uint8_t>(count)};
        if (!AddCode(code, head.data(), head.size(), why)) return false;
    } else if (content.compression != kIocaUncompressed && !CodingOf(content.compression)) {
        return true;
    }
    return AddCode(code, from, at, count, why);
}

bool ReadChunk(ImageBytes& bytes, uint64_t length, ImageContent& content, CodeFile& code,
               std::string& why) {
    ++content.chunks;
    while (length > 0) {
        uint64_t at = 0;
        const uint64_t count = TakeStretch(bytes, std::min(length, kMostBlockBytes), at);
        if (count == 0) {
            content.cut = true;
            return true;
        }
        if (!KeepData(content, bytes.source.descriptor, at, count, code, why)) return false;
        content.dataBytes += count;
        length -= count;
    }
    return true;
}

bool EndsContent(uint32_t code) {
    return code == kEndContent || code == kEndSegment || code == kBeginSegment ||
           code == kBeginContent;
}

// What ends the part of a content that begins with `code` and has a size, an encoding and data of
// its own; 0: it begins no such part.
uint32_t EndOfPart(ImageContent& content, uint32_t code) {
    if (code == kBeginTile) content.tiles = true;
    if (code == kBeginMask) content.mask = true;
    return code == kBeginTile ? kEndTile : code == kBeginMask ? kEndMask : 0U;
}

}  // namespace

bool NextContent(SegmentWalk& walk) {
    for (;;) {
        if (!walk.inSegment && !FindSegment(walk)) return false;
        FieldHead head;
        if (!ReadFieldHead(walk.bytes, head)) return false;
        if (head.code == kBeginContent) {
            std::vector<uint8_t> data;
            if (!ReadData(walk.bytes, head.length, data)) return false;
            walk.contentId = data.empty() ? uint8_t{0} : data[0];
            return true;
        }
        const bool passed = head.code == kBeginSegment ? BeginSegment(walk, head.at, head.length)
                                                       : SkipBytes(walk.bytes, head.length);
        if (!passed) return false;
        if (head.code == kEndSegment) walk.inSegment = false;
    }
}

bool GoToContent(SegmentWalk& walk, uint32_t number) {
    for (uint32_t i = 0; i < number; ++i) {
        if (!NextContent(walk)) return false;
    }
    return NextContent(walk);
}

bool ReadContent(SegmentWalk& walk, ImageContent& content, CodeFile& code, std::string& why) {
    content.segmentName = walk.segmentName;
    content.id = walk.contentId;
    FieldHead head;
    std::vector<uint8_t> data;
    uint32_t partEnd = 0;  // 0: not inside a part
    while (!content.cut) {
        if (!ReadFieldHead(walk.bytes, head)) {
            content.cut = true;
        } else if (EndsContent(head.code)) {
            return true;
        } else if (partEnd != 0 || head.code == kBandImage || head.code == kBandData) {
            if (partEnd == 0) content.bands = true;
            if (head.code == partEnd) partEnd = 0;
            content.cut = !SkipBytes(walk.bytes, head.length);
        } else if (head.code == kImageData) {
            if (!ReadChunk(walk.bytes, head.length, content, code, why)) return false;
        } else {
            partEnd = EndOfPart(content, head.code);
            content.cut = !ReadData(walk.bytes, head.length, data);
            if (partEnd == 0) TakeField(content, head.code, data);
        }
    }
    return true;
}

std::optional<FaxCoding> CodingOf(uint8_t compression) {
    switch (compression) {
        case kIocaMmr:
            return FaxCoding::Mmr;
        case kIocaG3:
            return FaxCoding::G3Eol;
        case kIocaG3TwoD:
            return FaxCoding::G3TwoD;
        case kIocaG4:
            return FaxCoding::G4;
        default:
            return {};
    }
}

}  // namespace vellim::tool
