// PBM, PGM and PPM, plain (P1 to P3) and raw (P4 to P6). Samples of any highest value are brought
// to 0 to 255. Raw pictures may follow one another in one file; each is a page.
#include <algorithm>
#include <array>

#include "byte_source.h"
#include "raster_formats.h"

namespace vellim::tool {
namespace {

constexpr uint64_t kMostNumber = UINT32_MAX;
constexpr uint32_t kMostSample = 65535;
constexpr const char* kBadHeader = "its header makes no sense";

struct PnmHeader {
    int kind = 0;  // 1 to 6
    uint64_t width = 0, height = 0;
    uint32_t highest = 1;
    uint64_t rowsAt = 0;
};

struct PnmReader {
    ByteSource source;
    PnmHeader header;
    uint32_t samples = 0;  // a line, but for PBM
    std::vector<uint8_t> row;
    std::array<uint8_t, 256> scaled{};  // by sample, for a highest value up to 255
};

bool IsPlain(const PnmHeader& header) {
    return header.kind <= 3;
}
bool IsBitmap(const PnmHeader& header) {
    return header.kind == 1 || header.kind == 4;
}
bool IsColour(const PnmHeader& header) {
    return header.kind == 3 || header.kind == 6;
}

bool IsSpace(int byte) {
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

// The next byte that is neither blank nor in a comment.
int ReadMark(ByteSource& source) {
    int byte = ReadByte(source);
    while (IsSpace(byte) || byte == '#') {
        const bool comment = byte == '#';
        byte = ReadByte(source);
        while (comment && byte != '\n' && byte != '\r' && byte >= 0)
            byte = ReadByte(source);
    }
    return byte;
}

// A number and the one byte behind it.
bool ReadNumber(ByteSource& source, uint64_t& number) {
    int byte = ReadMark(source);
    if (byte < '0' || byte > '9') return false;
    number = 0;
    for (; byte >= '0' && byte <= '9'; byte = ReadByte(source)) {
        number = number * 10 + static_cast<uint64_t>(byte - '0');
        if (number > kMostNumber) return false;
    }
    // The last number of a plain picture may end with the file.
    return IsSpace(byte) || byte < 0;
}

bool ReadHeader(ByteSource& source, PnmHeader& header) {
    std::array<char, 2> magic{};
    if (!ReadBytes(source, magic.data(), magic.size())) return false;
    header.kind = magic[1] - '0';
    uint64_t highest = 1;
    if (magic[0] != 'P' || header.kind < 1 || header.kind > 6 ||
        !ReadNumber(source, header.width) || !ReadNumber(source, header.height) ||
        (!IsBitmap(header) && !ReadNumber(source, highest))) {
        return false;
    }
    header.highest = static_cast<uint32_t>(highest);
    header.rowsAt = source.position;
    return highest > 0 && highest <= kMostSample;
}

uint64_t RawRowBytes(const PnmHeader& header) {
    if (IsBitmap(header)) return (header.width + 7) / 8;
    const uint64_t sampleBytes = header.highest > 255 ? 2 : 1;
    return header.width * (IsColour(header) ? 3 : 1) * sampleBytes;
}

uint8_t Scale(const PnmReader& r, uint64_t sample) {
    const uint64_t highest = r.header.highest;
    return static_cast<uint8_t>((std::min(sample, highest) * 255 + highest / 2) / highest);
}

bool EndsTooSoon(const PnmReader& r, std::string& why) {
    why = r.source.failure.empty() ? "what stands for a pixel is no number" : r.source.failure;
    return false;
}

bool NextRawLine(PnmReader& r, uint8_t* line, std::string& why) {
    if (!ReadBytes(r.source, r.row.data(), r.row.size())) return EndsTooSoon(r, why);
    if (IsBitmap(r.header)) {
        std::copy(r.row.begin(), r.row.end(), line);
    } else if (r.header.highest <= 255) {
        std::transform(r.row.begin(), r.row.end(), line,
                       [&](uint8_t sample) { return r.scaled[sample]; });
    } else {
        for (uint32_t i = 0; i < r.samples; ++i) {
            const uint8_t* sample = r.row.data() + size_t{i} * 2;
            line[i] = Scale(r, uint64_t{sample[0]} << 8U | sample[1]);
        }
    }
    return true;
}

// In a plain PBM the digits need nothing between them.
bool NextPlainBits(PnmReader& r, uint8_t* line, std::string& why) {
    std::fill_n(line, RawRowBytes(r.header), uint8_t{0});
    for (uint32_t x = 0; x < r.header.width; ++x) {
        const int digit = ReadMark(r.source);
        if (digit != '0' && digit != '1') return EndsTooSoon(r, why);
        if (digit == '1') line[x / 8] = static_cast<uint8_t>(line[x / 8] | 0x80U >> x % 8);
    }
    return true;
}

bool NextPlainLine(PnmReader& r, uint8_t* line, std::string& why) {
    for (uint32_t i = 0; i < r.samples; ++i) {
        uint64_t sample = 0;
        if (!ReadNumber(r.source, sample)) return EndsTooSoon(r, why);
        if (sample > r.header.highest) {
            why = "a sample is above the highest value that its header tells";
            return false;
        }
        line[i] = Scale(r, sample);
    }
    return true;
}

bool NextPnmLine(PnmReader& r, uint8_t* line, std::string& why) {
    if (!IsPlain(r.header)) return NextRawLine(r, line, why);
    return IsBitmap(r.header) ? NextPlainBits(r, line, why) : NextPlainLine(r, line, why);
}

}  // namespace

std::vector<uint64_t> FindPnmPictures(int descriptor, Beside& /*beside*/) {
    std::vector<uint64_t> pictures = {0};
    ByteSource source = SourceOf(descriptor);
    for (;;) {
        PnmHeader header;
        if (!ReadHeader(source, header) || IsPlain(header)) return pictures;
        const uint64_t left = BytesLeft(source);
        const uint64_t rowBytes = RawRowBytes(header);
        if (rowBytes == 0 || header.height > left / rowBytes) return pictures;
        source.position += rowBytes * header.height;
        std::array<char, 2> magic{};
        const uint64_t next = source.position;
        if (!ReadBytes(source, magic.data(), magic.size()) || magic[0] != 'P') return pictures;
        source.position = next;
        pictures.push_back(next);
    }
}

std::optional<RasterPage> OpenPnm(int descriptor, uint64_t offset, std::string& why) {
    auto r = std::make_unique<PnmReader>();
    r->source = SourceOf(descriptor);
    r->source.position = offset;
    if (!ReadHeader(r->source, r->header)) {
        why = r->source.failure.empty() ? kBadHeader : r->source.failure;
        return {};
    }
    const PnmHeader& header = r->header;
    if (!IsServedSize(header.width, header.height, why)) return {};
    const bool plain = IsPlain(header);
    // Of a plain picture, a sample takes a digit at least.
    const uint64_t rowBytes =
        plain ? header.width * (IsColour(header) ? 3 : 1) : RawRowBytes(header);
    if (rowBytes * header.height > BytesLeft(r->source)) {
        why = kEndsTooSoon;
        return {};
    }
    PageInfo info;
    info.picture.width = static_cast<uint32_t>(header.width);
    info.picture.height = static_cast<uint32_t>(header.height);
    info.picture.type = IsBitmap(header) ? kBilevel : IsColour(header) ? kRgb : kGrey8;
    info.whiteIsZero = IsBitmap(header);
    if (header.highest > 255) info.givenUp.emplace_back(kDeepSamples);
    r->samples = info.picture.width * (IsColour(header) ? 3 : 1);
    if (!plain) r->row.resize(static_cast<size_t>(rowBytes));
    for (size_t i = 0; i < r->scaled.size(); ++i)
        r->scaled[i] = Scale(*r, i);
    return MakeRasterPage<NextPnmLine>(std::move(info), std::move(r));
}

}  // namespace vellim::tool
