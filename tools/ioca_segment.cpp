#include "ioca_segment.h"

#include <algorithm>
#include <array>

#include "ioca_codes.h"
#include "segment_start.h"

namespace vellim::tool {
namespace {

constexpr size_t kComponentsAt = 5;          // in the data of the structure
constexpr uint8_t kSubtractive = 0x80;       // in its flags
constexpr uint64_t kMostBlockBytes = 32767;  // what the MMR encoder writes

struct FieldHead {
    uint32_t code = 0;
    uint32_t length = 0;
    uint64_t at = 0;  // its place
};

bool ReadFieldHead(ImageBytes& bytes, FieldHead& head) {
    const int code = ReadByte(bytes);
    head.at = LastPlace(bytes);
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
    walk.inContent = false;
    walk.segmentAt = at;
    return ReadData(walk.bytes, nameBytes, walk.segmentName);
}

// What may follow in a segment outside of a content; if it doesn't, the segment's end is missing.
bool IsFieldAhead(ImageBytes& bytes) {
    const std::string ahead = Peek(bytes, kPictureMarkBytes);
    return !ahead.empty() && static_cast<uint8_t>(ahead[0]) >= kBeginSegment &&
           !IsPictureMark(ahead);
}

bool FindSegment(SegmentWalk& walk) {
    for (int byte = ReadByte(walk.bytes); byte >= 0; byte = ReadByte(walk.bytes)) {
        if (MayBegin(byte)) {
            const uint64_t at = LastPlace(walk.bytes);
            const std::string head =
                static_cast<char>(byte) + Peek(walk.bytes, kSegmentHeadBytes - 1);
            const bool due = walk.stray.passed == 0;
            if (due ? BeginsSegment(head) : IsSegmentHead(head)) {
                CloseGap(walk.stray);
                return BeginSegment(walk, at, static_cast<uint32_t>(ReadByte(walk.bytes)));
            }
            if (IsPictureMark(head)) {
                CloseGap(walk.stray);
                SkipBytes(walk.bytes, kPictureMarkBytes - 1);
                continue;
            }
        }
        PassByte(walk.stray, byte);
    }
    CloseLastGap(walk.stray);
    return false;
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

bool AddMirrored(ByteSource& source, uint64_t at, uint64_t count, CodeFile& code,
                 std::string& why) {
    std::vector<uint8_t> bytes(static_cast<size_t>(count));
    source.position = at;
    if (!ReadBytes(source, bytes.data(), bytes.size())) {
        why = source.failure;
        return false;
    }
    std::transform(bytes.begin(), bytes.end(), bytes.begin(), Mirrored);
    return AddCode(code, bytes.data(), bytes.size(), why);
}

// Blocks of MMR code are cut anew, so that one that the file cuts short has the length that it has.
// Their decoder knows of one order of bits alone.
bool KeepData(const ImageContent& content, ByteSource& source, uint64_t at, uint64_t count,
              CodeFile& code, std::string& why) {
    const bool blocks = content.compression == kIocaMmr;
    if (content.compression != kIocaUncompressed && !CodingOf(content.compression)) return true;
    if (!code.descriptor && !BeginCode(code, why)) return false;
    if (blocks) {
        const std::array<uint8_t, 4> head = {kImageData >> 8U, kImageData & 0xFFU,
                                             static_cast<uint8_t>(count >> 8U),
                                             static_cast<uint8_t>(count)};
        if (!AddCode(code, head.data(), head.size(), why)) return false;
    }
    return blocks && content.bitOrder != 0 ? AddMirrored(source, at, count, code, why)
                                           : AddCode(code, source.descriptor, at, count, why);
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
        if (!KeepData(content, bytes.source, at, count, code, why)) return false;
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
        if (walk.inSegment && !walk.inContent) walk.inSegment = IsFieldAhead(walk.bytes);
        if (!walk.inSegment && !FindSegment(walk)) return false;
        FieldHead head;
        if (!ReadFieldHead(walk.bytes, head)) return false;
        if (head.code == kBeginContent) {
            std::vector<uint8_t> data;
            if (!ReadData(walk.bytes, head.length, data)) return false;
            walk.inContent = true;
            walk.contentAt = walk.segmentAt.value_or(head.at);
            walk.segmentAt.reset();
            walk.contentId = data.empty() ? uint8_t{0} : data[0];
            return true;
        }
        const bool passed = head.code == kBeginSegment ? BeginSegment(walk, head.at, head.length)
                                                       : SkipBytes(walk.bytes, head.length);
        if (!passed) return false;
        if (head.code == kEndContent) walk.inContent = false;
        if (head.code == kEndSegment) walk.inSegment = walk.inContent = false;
    }
}

void AddPlaces(SegmentWalk& walk, std::vector<uint64_t>& places) {
    while (NextContent(walk))
        places.push_back(walk.contentAt);
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
