// IOCA segments and MO:DCA documents as they are read: every coding and kind of pixels, data that
// is cut into chunks and fields anywhere, several images in a file, and damage.
#include <gtest/gtest.h>

#include "run_tool.h"
#include "support/reference_ccitt.h"

namespace vellim::test {
namespace {

constexpr uint32_t kFieldHead = 8;
constexpr uint8_t kMmrId = 1, kRawId = 3, kG4Id = 0x82;

Bytes Joined(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::vector<Bytes> Pieces(const Bytes& bytes, size_t size) {
    std::vector<Bytes> pieces;
    for (size_t at = 0; at < bytes.size(); at += size) {
        const auto first = bytes.begin() + static_cast<ptrdiff_t>(at);
        pieces.emplace_back(first,
                            first + static_cast<ptrdiff_t>(std::min(size, bytes.size() - at)));
    }
    return pieces;
}

Bytes Chunks(const Bytes& code, size_t size) {
    std::vector<Bytes> parts;
    for (const Bytes& piece : Pieces(code, size)) {
        const size_t n = piece.size();
        parts.push_back({0xFE, 0x92, static_cast<uint8_t>(n >> 8), static_cast<uint8_t>(n)});
        parts.push_back(piece);
    }
    return Joined(parts);
}

// An image content: 40 x 6 dots a centimetre, and what follows the Image Size.
Bytes Content(uint8_t width, uint8_t height, const std::vector<Bytes>& rest) {
    const Bytes head = {0x91, 1, 0xFF, 0x94, 9, 1, 1, 0x90, 0, 60, 0, width, 0, height};
    return Joined({head, Joined(rest), {0x93, 0}});
}

Bytes Segment(const std::vector<Bytes>& contents, const Bytes& name = {}) {
    return Joined({{0x70, static_cast<uint8_t>(name.size())}, name, Joined(contents), {0x71, 0}});
}

Bytes Encoding(uint8_t compression, uint8_t recording = 1, uint8_t bitOrder = 0) {
    return {0x95, 3, compression, recording, bitOrder};
}

Bytes Raw(uint8_t width, uint8_t height, uint8_t bits, const Bytes& fields, const Bytes& data) {
    return Content(width, height, {Encoding(kRawId), {0x96, 1, bits}, fields, Chunks(data, 3)});
}

Bytes Field(uint32_t id, const Bytes& data = {}, uint8_t flags = 0) {
    const size_t length = kFieldHead + data.size();
    const Bytes head = {0x5A,
                        static_cast<uint8_t>(length >> 8),
                        static_cast<uint8_t>(length),
                        static_cast<uint8_t>(id >> 16),
                        static_cast<uint8_t>(id >> 8),
                        static_cast<uint8_t>(id),
                        flags,
                        0,
                        0};
    return Joined({head, data});
}

// `gap` stands behind every field but the last.
Bytes Object(const std::vector<Bytes>& pieces, const Bytes& descriptor = {},
             const Bytes& gap = {}) {
    std::vector<Bytes> fields = {Field(0xD3A8FB), gap, Field(0xD3A6FB, descriptor), gap};
    for (const Bytes& piece : pieces)
        fields.insert(fields.end(), {Field(0xD3EEFB, piece), gap});
    fields.push_back(Field(0xD3A9FB));
    return Joined(fields);
}

std::string PpmOf(const Bytes& file) {
    return ExpectTool(Words({"convert", FileOf(file, "wrapped"), "- --format ppm"}), 0).out;
}

struct Coded {
    Bytes file;    // an IOCA segment
    Bytes pixels;  // of a PBM
};

uint8_t Reversed(uint8_t byte) {
    uint8_t reversed = 0;
    for (unsigned bit = 0; bit < 8; ++bit)
        reversed = static_cast<uint8_t>(uint32_t{reversed} << 1U | (uint32_t{byte} >> bit & 1U));
    return reversed;
}

Coded Drawn(uint8_t id, CompressionKey key, size_t chunk, bool tellsHeight, uint8_t bitOrder = 0) {
    const Picture picture = RandomPicture(id, 37, 9, 5);
    const EngineRun run{.width = 37, .height = 9, .rowsPerStrip = 9, .bits = 1, .key = key};
    Bytes code = id == kRawId ? Joined(picture.rows)
                              : ReferenceCcittEncoder(run, picture, 2, picture.rows.size()).stream;
    if (id == kMmrId) code = CodeOfBlocks(code);
    if (bitOrder != 0) std::transform(code.begin(), code.end(), code.begin(), Reversed);
    const Bytes unknown = {0xFE, 0xB8, 0, 3, 0x70, 0x91, 0x93, 0xF4, 2, 0xFE, 0x92};
    const Bytes content =
        Content(37, tellsHeight ? 9 : 0,
                {unknown, Encoding(id, 1, bitOrder), {0x96, 1, 1}, Chunks(code, chunk)});
    return {Segment({content}, {0xC1, 0x70, 0x91, 0xF1}), Joined(picture.rows)};
}

void ExpectPixels(const Bytes& file, const Bytes& pixels, const std::string& how) {
    const ToolRun run = RunTool(Words({"convert", FileOf(file, "coded"), "- --format pbm"}));
    EXPECT_EQ(run.exitCode, 0) << how << run.err;
    EXPECT_EQ(PnmPixels(run.out, 3), pixels) << how;
}

TEST(WrappedInput, CodingsInChunksAndFieldsOfAllSizes) {
    for (const auto& [id, key] : {std::pair{kMmrId, kMmr},
                                  {kRawId, kMmr},
                                  {uint8_t{0x80}, CompressionKey{TIFF_KEY_GROUP3_1D}},
                                  {uint8_t{0x81}, CompressionKey{TIFF_KEY_GROUP3_2D}},
                                  {kG4Id, CompressionKey{TIFF_KEY_GROUP4}}}) {
        for (const size_t chunk : {1U, 7U, 400U}) {
            for (const bool tellsHeight : {true, false}) {
                const uint8_t bitOrder = chunk == 7U ? 1 : 0;
                const auto [file, pixels] = Drawn(id, key, chunk, tellsHeight, bitOrder);
                const std::string how = std::to_string(id) + ", " + std::to_string(chunk);
                ExpectPixels(file, pixels, how);
                ExpectPixels(Object(Pieces(file, 1)), pixels, how);
                ExpectPixels(Object(Pieces(file, 5)), pixels, how);
                ExpectPixels(Joined({Bytes(30), {0xD3, 0xEE, 0xFB}, file}), pixels, how);
            }
        }
    }
    const auto [file, pixels] = Drawn(kG4Id, TIFF_KEY_GROUP4, 9, true);
    for (size_t size = 2; size < file.size(); ++size)
        ExpectPixels(Object(Pieces(file, size)), pixels, std::to_string(size));
}

TEST(WrappedInput, KindsOfPixels) {
    const auto structure = [](uint8_t flags, uint8_t colour, const Bytes& bits) {
        return Joined(
            {{0x9B, static_cast<uint8_t>(5 + bits.size()), flags, colour, 0, 0, 0}, bits});
    };
    const Bytes mask = {0x8E, 0, 0x95, 2, 0x83, 9, 0xFE, 0x92, 0, 1, 0xFF, 0x8F, 0};
    const auto only = [](const Bytes& content) { return Segment({content}); };
    const auto ppm = [](const std::string& size, const Bytes& pixels) {
        return "P6\n" + size + "\n255\n" + std::string(pixels.begin(), pixels.end());
    };
    const Bytes greys = {0, 0, 0, 100, 100, 100, 255, 255, 255};
    EXPECT_EQ(PpmOf(only(Raw(3, 1, 8, {}, {0, 100, 255}))), ppm("3 1", greys));
    EXPECT_EQ(PpmOf(only(Raw(3, 1, 8, structure(0x80, 0x12, {8}), {255, 155, 0}))),
              ppm("3 1", greys));
    EXPECT_EQ(PpmOf(only(Raw(3, 0, 4, structure(0, 1, {4, 0, 0}), {0x06, 0xF7}))),
              ppm("3 1", {0, 0, 0, 102, 102, 102, 255, 255, 255}));
    EXPECT_EQ(PpmOf(only(Raw(1, 2, 24, structure(0, 1, {8, 8, 8}), {1, 2, 3, 4, 5, 6}))),
              ppm("1 2", {1, 2, 3, 4, 5, 6}));
    // One bit is black whatever its structure says; from the low bit on; beside a mask.
    const std::string whiteBlack = ppm("2 1", {255, 255, 255, 0, 0, 0});
    EXPECT_EQ(PpmOf(only(Raw(2, 1, 1, structure(0, 1, {1}), {0x40}))), whiteBlack);
    const Bytes masked = Content(2, 1, {Encoding(3, 1, 1), mask, {0x97, 1, 7}, Chunks({2}, 1)});
    EXPECT_EQ(PpmOf(only(masked)), whiteBlack);
    for (const char* const words : {"transparency mask isn't", "look-up table isn't"})
        ExpectTool(Words({"convert", FileOf(only(masked), "masked"), "-"}), 0, words);
    const std::tuple<Bytes, int, const char*> beyond[] = {
        {Raw(9, 1, 1, {}, Bytes(3)), 0, "behind the last line (1 byte) is left out"},
        {Raw(9, 1, 1, {}, Bytes(5)), 1, "its data goes on behind the last line (3 bytes)"},
        {Raw(9, 0, 1, {}, Bytes(5)), 1, "its data ends inside a line"},
    };
    for (const auto& [content, code, words] : beyond)
        ExpectTool(Words({"convert", FileOf(only(content), "beyond"), "-"}), code, words);

    const Bytes dot = Chunks({0x80}, 1);
    const std::tuple<Bytes, const char*> refused[] = {
        {Content(1, 1, {Encoding(0x83), dot}), "its JPEG compression (0x83) isn't served"},
        {Content(1, 1, {Encoding(0x77), dot}), "its unknown compression (0x77) isn't served"},
        {Content(1, 1, {Encoding(3, 4), dot}), "its order of recording (0x04) isn't served"},
        {Content(1, 1, {Encoding(kG4Id), {0x96, 1, 8}, dot}), "Group 4 pixels (8 bits) aren't"},
        {Content(1, 1, {{0x8C, 0}, dot, {0x8D, 0}}), "tiles"},
        {Content(1, 1, {{0x98, 2, 1, 0}, dot}), "bands"},
        {Content(0, 1, {dot}), "it doesn't state its width"},
        {Content(1, 1, {}), "it has no image data"},
        {Raw(1, 1, 16, {}, {1, 2}), "uncompressed pixels (16 bits) aren't served"},
        {Raw(1, 1, 24, structure(0, 0x12, {8, 8, 8}), {1, 2, 3}), "24 bits, additive YCbCr"},
        {Raw(1, 1, 8, structure(0, 1, {3, 3, 2}), {1}), "8 bits, additive RGB"},
    };
    for (const auto& [content, words] : refused)
        ExpectTool(Words({"convert", FileOf(only(content), "refused"), "-"}), 2, words);
}

TEST(WrappedInput, ManyImagesInOneFile) {
    const Bytes jpeg = Content(1, 1, {Encoding(0x83), Chunks(Bytes(9, 0x70), 4)});
    const auto dots = [](uint8_t count) { return Raw(8, 1, 1, {}, {count}); };
    const Bytes two = Segment({dots(1), jpeg}), three = Segment({dots(3), dots(4)}, {1, 2, 3, 4});
    // Size and resolution where the segment leaves them open: 30 and 20 dots a centimetre.
    const Bytes open = Segment({{0x91, 1, 0}, Chunks({5}, 1), {0x93, 0}});
    const Bytes descriptor = {1, 1, 0x2C, 0, 200, 0, 8, 0, 9};
    const Bytes text = Field(0xD3EE9B, {1, 2, 3}), end = Field(0xD3A9C7);
    // Between segments: the beginnings of a segment's head and of a mark.
    const Bytes junk = {'X', 0x70, 0, 0x91, 1, 0xFF, 0, 0xD3, 0xEE}, lineEnd = {'\r', '\n'};
    const auto fields = [&](const Bytes& between, const Bytes& gap) {
        return Joined({text, Object(Pieces(Joined({two, between, three}), 6), {}, gap), gap, text,
                       Field(0xD3EEFB, Joined({{3, 9, 9}, Bytes(open), {0, 2, 2}}), 0x88), end,
                       Field(0xD3A9FB), Object({})});
    };
    const Bytes begin = {0xD3, 0xEE, 0xFB}, tail = {0xD3, 0xA9, 0xC7};
    const Bytes unended(two.begin(), two.end() - 2);
    const Bytes falseField = {'X', 0x5A, 0x7F, 0xFF, 0xD3, 0xA8, 0xFB, 0, 0, 1};
    const size_t gaps = Pieces(Joined({two, three}), 6).size() + 3;
    const std::string lineEnds = Words({std::to_string(2 * gaps), "bytes that are no structured"});
    const std::pair<Bytes, std::string> files[] = {
        {Joined({two, Bytes(5), three, lineEnd}), ""},
        {Joined({two, lineEnd, three, {1, 2}}), "4 bytes that are no segment"},
        {Joined({two, Bytes(2), junk, three, Bytes(9)}), "9 bytes that are no segment"},
        {Joined({unended, lineEnd, three}), "2 bytes that are no segment"},
        {Joined({begin, two, tail, begin, three}), ""},
        {Joined({begin, two, tail, lineEnd, begin, three, tail}), "2 bytes that are no segment"},
        {Joined({fields({}, {}), Bytes(1)}), ""},
        {fields({}, lineEnd), lineEnds},
        {fields(junk, {}), "it holds 9 bytes that are no segment"},
        {Joined({text, falseField, fields({}, {}), {1}}),
         "it holds 11 bytes that are no structured field"},
    };
    for (const auto& [file, stray] : files) {
        const std::string path = FileOf(file, "many.bin");
        const ToolRun run = ExpectTool("check " + path, 2, "image 2: no lines: its JPEG");
        EXPECT_EQ(run.out.find("that are no") != std::string::npos, !stray.empty()) << run.out;
        EXPECT_NE(run.out.find(stray), std::string::npos) << stray << run.out;
        for (const auto& [page, pixels] : {std::pair{"1", 1}, {"3", 3}, {"4", 4}}) {
            const std::string pbm =
                RunTool(Words({"convert --format pbm --pages", page, path, "-"})).out;
            EXPECT_EQ(PnmPixels(pbm, 3), Bytes{static_cast<uint8_t>(pixels)}) << stray;
        }
    }
    ExpectTool("check " + FileOf(Joined({three, {'X'}, three}), "stray"), 1,
               "it holds 1 byte that is no segment");
    const std::string path = FileOf(fields({}, {}), "fields.afp");
    ExpectTool("info " + path, 2,
               ": it holds presentation text (2 fields), images without content (1 object)");
    ExpectTool("info " + path, 2, "101.6 x 15.24 dpi");
    const std::string named = FileOf(Object({open}, descriptor), "described.afp");
    ExpectTool("info " + named, 0, "8 x 1, 76.2 x 50.8 dpi");
}

ToolRun Checked(const Bytes& file, size_t at) {
    ToolRun run = RunTool("check " + FileOf(file, "checked"));
    EXPECT_TRUE(run.exitCode >= 0 && run.exitCode <= 2) << at << ": " << run.exitCode;
    EXPECT_EQ(run.err.find("Sanitizer"), std::string::npos) << at << run.err;
    return run;
}

// Cut at every byte: a page that isn't whole is never called so. Each byte made a lie in turn: no
// crash, and an end.
TEST(WrappedInput, CutsAndLies) {
    const Bytes segment = Drawn(kG4Id, TIFF_KEY_GROUP4, 9, true).file;
    const Bytes raw = Segment({Raw(8, 0, 1, {}, Counted(9))});
    const Bytes object = Object(Pieces(segment, 20));
    const size_t endField = 1 + kFieldHead;
    for (const auto& [file, spare] :
         {std::pair{segment, 2UL}, {raw, 2UL}, {object, endField + 2}}) {
        for (size_t size = 0; size + spare < file.size(); ++size) {
            const Bytes cut(file.begin(), file.begin() + static_cast<ptrdiff_t>(size));
            const ToolRun run = Checked(cut, size);
            const bool imageless = run.out.find("no images") != std::string::npos;
            EXPECT_TRUE(run.exitCode != 0 || imageless) << size << run.out;
        }
        EXPECT_EQ(Checked(file, file.size()).exitCode, 0);
    }
    for (size_t at = 0; at < object.size(); ++at) {
        Bytes lie = object;
        lie[at] = static_cast<uint8_t>(at % 2 == 0 ? 0xFF : lie[at] ^ 1U);
        Checked(lie, at);
    }
    const Bytes crowd = Segment(std::vector<Bytes>(1030, Bytes{0x91, 0}));
    ExpectTool("check " + FileOf(crowd, "crowd"), 2, "image 1030: no lines");
}

}  // namespace
}  // namespace vellim::test
