// Heads and tails: byte by byte as written, around an MMR picture that is read back, and as found
// in files that others wrote, whole and broken.
#include <gtest/gtest.h>

#include "container/streams.h"
#include "support/engine_run.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

constexpr IocaHeader kHeader = {9, 9, 100, 258, 24, 3, 9, 9, 9};
constexpr std::string_view kHead = "7000 9101FF 9409 00 0064 0102 0018 0003 95020101 960101 970100";

Bytes Hex(std::initializer_list<std::string_view> parts) {
    std::string digits = Words(parts);
    std::erase(digits, ' ');
    Bytes bytes(digits.size() / 2);
    for (size_t i = 0; i < bytes.size(); i++)
        bytes[i] = static_cast<uint8_t>(std::stoi(digits.substr(i * 2, 2), nullptr, 16));
    return bytes;
}

Bytes Joined(Bytes all, const Bytes& more) {
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

// A picture behind `at` bytes, while another is being written.
void WriteAndRead(size_t at, bool isModca) {
    const OpenStream other(OpenFile(NewPath("other").c_str(), nullptr, OF_CREATE | OF_WRITE));
    const std::string path = FileOf(Bytes(at, 0x11), "picture");
    const OpenStream file(OpenFile(path.c_str(), nullptr, OF_READWRITE));
    const StreamHandle stream = file.Get();
    const Bytes lines = {0xFF, 0x00, 0x3C, 0xF0, 0x01, 0x3C, 0x00, 0x00, 0x00};
    _llseek(stream, 0, 2);
    EXPECT_EQ((isModca ? WriteMODCAHeader : WriteIOCAHeader)(stream, &kHeader), 1);
    EXPECT_EQ(WriteMODCAHeader(other.Get(), &kHeader), 1);
    const Answer give = LinesOf(lines, 3);
    EXPECT_EQ(EncodeMMRImage(stream, 24, 3, 0, reinterpret_cast<uintptr_t>(&give), CallAnswer), 1);
    const auto end = static_cast<size_t>(_llseek(stream, 0, 1));
    EXPECT_EQ((isModca ? WriteMODCATail : WriteIOCATail)(stream), 1);

    Bytes expected = Joined(Bytes(at, 0x11), Hex({isModca ? "D3EEFB" : "", kHead}));
    const size_t data = expected.size();
    const Bytes whole = ReadFile(path), code(&whole[data], &whole[end]);
    expected = Joined(Joined(expected, code), Hex({"93007100", isModca ? "D3A9C7" : ""}));
    if (isModca && at >= 30) expected[28] = uint8_t((end - 28) >> 8);
    if (isModca && at >= 30) expected[29] = uint8_t(end - 28);
    EXPECT_EQ(whole, expected);

    IocaHeader header{};
    _llseek(stream, static_cast<int32_t>(isModca ? at : 0), 0);
    EXPECT_EQ((isModca ? ReadMODCAHeader : ReadIOCAHeader)(stream, &header), 1);
    EXPECT_EQ(header.DataOffset, data);
    Bytes back;
    const Answer take = [&](const uint8_t* line, uint32_t) {
        back.insert(back.end(), line, line + 3);
        return 0U;
    };
    EXPECT_EQ(DecodeMMRImage(stream, static_cast<int32_t>(data), 24, 3, 0, 1, 0,
                             reinterpret_cast<uintptr_t>(&take), CallAnswer),
              1);
    EXPECT_EQ(back, lines);
}

TEST(Wrappers, APictureIsWrittenByteByByteAndReadBack) {
    for (const size_t at : {0U, 7U, 29U, 30U, 4086U, 70000U})
        WriteAndRead(at, false), WriteAndRead(at, true);
}

// The tail of a picture that was begun through another handle: where is found out, and through a
// handle that can't read a picture before the length field is ruled out by the file's length.
TEST(Wrappers, ATailFindsWhereItsPictureBegan) {
    const struct {
        size_t at, bytes;
        uint32_t style;
        bool told;
    } cases[] = {{30, 90, OF_READWRITE, true},  {29, 90, OF_READWRITE, false},
                 {0, 90, OF_READWRITE, false},  {30, 32, OF_READWRITE, true},
                 {30, 29, OF_READWRITE, false}, {29, 58, OF_WRITE, false},
                 {30, 59, OF_WRITE, true}};
    for (const auto& c : cases) {
        Bytes all(c.bytes, 0x11);
        const Bytes mark = Hex({"D3EEFB"});
        std::copy_n(mark.begin(), std::min(mark.size(), c.bytes - std::min(c.at, c.bytes)),
                    all.begin() + static_cast<long>(std::min(c.at, c.bytes)));
        const std::string path = FileOf(all, "begun");
        const OpenStream file(OpenFile(path.c_str(), nullptr, c.style));
        _llseek(file.Get(), 0, 2);
        EXPECT_EQ(WriteMODCATail(file.Get()), 1);
        if (c.told) all[28] = 0, all[29] = static_cast<uint8_t>(c.bytes - 28);
        EXPECT_EQ(ReadFile(path), Joined(all, Hex({"93007100D3A9C7"}))) << c.at << " " << c.bytes;
    }
}

// The result, the record's fields and the position behind it.
std::string Read(int32_t (*read)(StreamHandle, IocaHeader*), const Bytes& bytes) {
    const OpenStream file(OpenFile(FileOf(bytes, "head").c_str(), nullptr, OF_READ));
    IocaHeader h = kHeader;
    const int32_t result = read(file.Get(), &h);
    const std::initializer_list<uint32_t> fields = {
        h.SegmentName, h.ImageContentId, h.XResolution, h.YResolution, h.Width,
        h.Height,      h.CompressionId,  h.DataLength,  h.DataOffset};
    std::string text = std::to_string(result).append(":");
    for (const uint32_t field : fields)
        text.append(" ").append(std::to_string(field));
    return text.append(" @").append(std::to_string(_llseek(file.Get(), 0, 1)));
}

TEST(Wrappers, HeadsOfOthersAreRead) {
    const char *id = "910107", *size = "9409 05 0001 0002 0003 0004", *coding = "95020101";
    const char *ide = "9600", *lut = "97020909", *chunk = "FE920102";
    const std::pair<Bytes, const char*> cases[] = {
        {Hex({"0102 7000", id, size, coding, chunk}), "1: 0 7 1 2 3 4 1 258 22 @26"},
        {Hex({"7002 0102", id, size, coding, ide, lut, chunk, chunk}),
         "1: 258 7 1 2 3 4 1 258 28 @32"},
        {Hex({"700401020304 9103070909 940A 05 0001 0002 0003 0004 09", coding, lut, chunk}),
         "1: 16909060 7 1 2 3 4 1 258 31 @35"},
        {Hex({"7005", id, size, coding, lut, ide, chunk}), "1: 0 7 1 2 3 4 1 0 0 @25"},
        {Hex({"7000", id, size, coding, ide, ide, chunk}), "1: 0 7 1 2 3 4 1 0 0 @23"},
        {Hex({"7000", id, size, coding}), "1: 0 7 1 2 3 4 1 0 0 @20"},
        {Hex({"7000", id, size, coding, "FE930000"}), "0: 0 7 1 2 3 4 1 0 0 @22"},
        {Hex({"7000", id, size, coding, "FE9200"}), "0: 0 7 1 2 3 4 1 0 0 @23"},
        {Hex({"7000", id, size, coding, "960200"}), "0: 0 7 1 2 3 4 1 0 0 @23"},
        {Hex({"7000", id, size, "950001"}), "0: 0 7 1 2 3 4 0 0 0 @18"},
        {Hex({"7000", id, "94080000"}), "0: 0 7 0 0 0 0 0 0 0 @7"},
        {Hex({"7000 9100", size}), "0: 0 0 0 0 0 0 0 0 0 @4"},
        {Bytes(5000, 0x71), "0: 0 0 0 0 0 0 0 0 0 @5000"},
    };
    for (const auto& [bytes, expected] : cases)
        EXPECT_EQ(Read(ReadIOCAHeader, bytes), expected);
}

TEST(Wrappers, PictureDataIsLookedForInTheNextBytes) {
    const auto finds = [](const char* front, size_t more) {
        const Bytes bytes = Joined(Joined(Hex({front}), Bytes(more)), Hex({"D3EEFB 01", kHead}));
        return Read(ReadMODCAHeader, bytes)[0] == '1';
    };
    EXPECT_TRUE(finds("", 2047) && !finds("", 2048) && !finds("D3", 0) && !finds("D3EE", 0));
    EXPECT_TRUE(finds("D3EE11 D311", 2045)) << "bytes compared don't count as looked at";
    EXPECT_FALSE(finds("D3EE11 D311", 2046));
}

TEST(Wrappers, WhatCantBeWrittenOrReadIsRefused) {
    const OpenStream readOnly(OpenFile(FileOf({}, "empty").c_str(), nullptr, OF_READ));
    const OpenStream full(OpenFile("/dev/full", nullptr, OF_WRITE)), memory(mOpen(0, 0));
    for (const StreamHandle stream : {readOnly.Get(), full.Get(), memory.Get(), -1, 0, 12345}) {
        IocaHeader header = kHeader;
        SetTiffError(TIFF_SUCCESS);
        EXPECT_EQ(WriteIOCATail(stream) + ReadIOCAHeader(stream, &header), 0) << stream;
        EXPECT_EQ(ReadMODCAHeader(stream, &header) + ReadIOCAHeader(stream, nullptr), 0) << stream;
        EXPECT_EQ(WriteMODCAHeader(stream, nullptr), TiffError()) << stream << ": no code";
        const auto tail = [](StreamHandle to, const IocaHeader*) { return WriteMODCATail(to); };
        for (const auto write : {WriteIOCAHeader, WriteMODCAHeader, +tail}) {
            SetTiffError(TIFF_SUCCESS);
            EXPECT_EQ(write(stream, &header), 0) << stream;
            EXPECT_EQ(TiffError(), TIFF_IO_ERROR) << stream;
        }
    }
}

}  // namespace
}  // namespace vellim::test
