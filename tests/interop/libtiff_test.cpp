// An independent judge: libtiff's tools read what is written here, and what they write is read
// here, with the same pixels and without a warning. A file holds a page of every width, of all
// depths that its coding has.
//
// Group 3 is judged in one strip alone: how a later strip begins is laid down differently here.
#include <gtest/gtest.h>

#include <ostream>
#include <random>

#include "support/engine_run.h"
#include "support/reference_ccitt.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

constexpr uint32_t kHeight = 10;
constexpr uint32_t kRowsOfManyStrips = 3;

struct Page {
    uint32_t width, bits;  // a pixel
    std::vector<Bytes> rows;

    [[nodiscard]] uint32_t RowBytes() const { return (width * bits + 7) / 8; }
};

// Bits behind the last pixel have no meaning, so none are compared.
void ClearSpareBits(Page& page) {
    const uint32_t spare = page.RowBytes() * 8 - page.width * page.bits;
    for (Bytes& row : page.rows)
        row.back() = static_cast<uint8_t>(row.back() >> spare << spare);
}

// Runs of equal bytes and noise, of random lengths.
Page BytePage(uint32_t width, uint32_t bits) {
    Page page{width, bits, {}};
    std::mt19937 random(width * 32 + bits);
    for (uint32_t y = 0; y < kHeight; y++) {
        Bytes row(page.RowBytes());
        for (size_t at = 0; at < row.size();) {
            const size_t end = std::min(row.size(), at + 1 + random() % 200);
            const bool flat = random() % 2 == 0;
            for (auto value = static_cast<uint8_t>(random()); at < end; at++)
                row[at] = flat ? value : static_cast<uint8_t>(random());
        }
        page.rows.push_back(row);
    }
    return page;
}

struct Coding {
    const char* name;
    uint32_t compression, option;  // T4Options or Predictor
    const char* tiffcp;            // how tiffcp names it; empty: not at all
    std::vector<uint32_t> depths;

    [[nodiscard]] bool IsGroup3() const { return compression == 3; }
};

void PrintTo(const Coding& coding, std::ostream* out) {
    *out << coding.name;
}

const std::vector<Coding> kCodings = {
    {"none", 1, 0, "none", {1, 4, 8, 24}},
    {"packbits", 32773, 0, "packbits", {1, 4, 8, 24}},
    {"lzw", 5, 1, "lzw:1", {1, 4, 8, 24}},
    {"lzw-diff", 5, 2, "lzw:2", {8, 24}},
    {"ccitt-1d", 2, 0, "", {1}},
    {"g3-1d", 3, 0, "g3:1d", {1}},
    {"g3-1d-fill", 3, 4, "g3:1d:fill", {1}},
    {"g3-2d", 3, 1, "g3:2d", {1}},
    {"g3-2d-fill", 3, 5, "g3:2d:fill", {1}},
    {"g4", 4, 0, "g4", {1}},
};

std::vector<Page> PagesOf(const Coding& coding) {
    std::vector<uint32_t> widths = {1728, 2560, 2561, 5200};
    for (uint32_t width = 1; width <= 70; width++)
        widths.push_back(width);
    std::vector<Page> pages;
    for (const uint32_t bits : coding.depths) {
        for (const uint32_t width : widths) {
            Page page = BytePage(width, bits);
            if (bits == 1 && width % 2 == 0)
                page.rows = RandomPicture(width, static_cast<int32_t>(width), kHeight, 30).rows;
            ClearSpareBits(page);
            pages.push_back(page);
        }
    }
    return pages;
}

struct Layout {
    int32_t byteOrder;
    uint32_t fillOrder, rowsPerStrip;
};

std::vector<Layout> LayoutsOf(const Coding& coding) {
    std::vector<Layout> layouts;
    for (const int32_t order : {TIFF_LITTLE_ENDIAN, TIFF_BIG_ENDIAN})
        for (const uint32_t fill : {1U, 2U})
            for (const uint32_t rows : {kHeight, kRowsOfManyStrips})
                if (rows == kHeight || !coding.IsGroup3()) layouts.push_back({order, fill, rows});
    return layouts;
}

// EncodeTiffImage leaves the closing codes of Group 3 data, and what there is of the byte before
// them, outside the strip's byte count, where others don't look. So this data is written bare.
int32_t EncodeBare(TiffFileHandle file, int32_t image, const Page& page, const Coding& coding,
                   const Layout& layout, uintptr_t fill) {
    TiffFileInfo info{};
    GetTiffFileInfo(file, &info);
    const StreamHandle stream = OpenFile(info.PathName, nullptr, OF_READWRITE);
    const int32_t start = mSeek(stream, 0, 2);
    const int32_t result =
        EncodeCcittImageTo(stream, static_cast<int32_t>(page.width), kHeight, layout.fillOrder, 0,
                           coding.compression | coding.option << 16, fill, CallAnswer);
    const int32_t end = mTell(stream);
    mClose(stream);
    DefineTiffImageInfo(file, image, TIFF_TAG_STRIP_OFFSETS, TIFF_TYPE_LONG,
                        static_cast<uint32_t>(start));
    DefineTiffImageInfo(file, image, TIFF_TAG_STRIP_BYTE_COUNTS, TIFF_TYPE_LONG,
                        static_cast<uint32_t>(end - start));
    return WriteTiffImageDirectory(file, image) == 0 ? result : 0;
}

int32_t Encode(TiffFileHandle file, int32_t image, const Page& page, const Coding& coding,
               const Layout& layout, const Answer& fill) {
    const auto data = reinterpret_cast<uintptr_t>(&fill);
    return coding.IsGroup3() ? EncodeBare(file, image, page, coding, layout, data)
                             : EncodeTiffImage(file, image, data, CallAnswer);
}

void WritePage(TiffFileHandle file, const Page& page, const Coding& coding, const Layout& layout) {
    const int32_t image = DefineTiffImage(file);
    const auto put = [&](uint32_t tag, uint32_t value) {
        ASSERT_EQ(DefineTiffImageInfo(file, image, tag, TIFF_TYPE_SHORT, value), 1);
    };
    put(TIFF_TAG_COMPRESSION, coding.compression);
    if (coding.IsGroup3()) put(TIFF_TAG_T4_OPTIONS, coding.option);
    if (coding.compression == 5) put(TIFF_TAG_PREDICTOR, coding.option);
    put(TIFF_TAG_PHOTOMETRIC, page.bits == 24 ? 2 : 0);
    put(TIFF_TAG_FILL_ORDER, layout.fillOrder);
    BITMAP bitmap{};
    bitmap.bmWidth = static_cast<int32_t>(page.width);
    bitmap.bmHeight = kHeight;
    bitmap.bmPlanes = 1;
    bitmap.bmBitsPixel = static_cast<uint16_t>(page.bits);
    ASSERT_EQ(DefineGeneralTags(file, image, bitmap), 0);
    put(TIFF_TAG_ROWS_PER_STRIP, layout.rowsPerStrip);
    if (page.bits == 24) {
        const TagSpec bits = ShortTag(TIFF_TAG_BITS_PER_SAMPLE, {8, 8, 8});
        DefineTiffImageInfoBuffer(file, image, bits.tag, bits.value.data(), bits.type, bits.count);
        put(TIFF_TAG_SAMPLES_PER_PIXEL, 3);
    }
    const Answer fill = [&](uint8_t* line, uint32_t number) {
        std::copy(page.rows[number].begin(), page.rows[number].end(), line);
        return 0U;
    };
    EXPECT_EQ(Encode(file, image, page, coding, layout, fill), 1)
        << coding.name << " " << page.width << ": " << TiffError();
    DropTiffImage(file, image);
}

std::string WriteFile(const std::vector<Page>& pages, const Coding& coding, const Layout& layout) {
    const bool bigEndian = layout.byteOrder == TIFF_BIG_ENDIAN;
    std::string path = FileOf(BuildTiff({}, bigEndian), "ours.tif");
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_APPEND);
    for (const Page& page : pages)
        WritePage(file, page, coding, layout);
    CloseTiffFile(file);
    return path;
}

void ExpectPages(const std::string& path, const std::vector<Page>& pages) {
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_READ);
    ASSERT_EQ(NumberOfTiffImages(file, TIFF_ALL_IMAGES), static_cast<int32_t>(pages.size()));
    for (size_t i = 0; i < pages.size(); i++) {
        const auto image = static_cast<int32_t>(i);
        ASSERT_EQ(GetTiffImage(file, image), 1);
        Page came{pages[i].width, pages[i].bits, {}};
        const Answer keep = [&](uint8_t* line, uint32_t) {
            came.rows.emplace_back(line, line + came.RowBytes());
            return 0U;
        };
        DecodeTiffImage(file, image, 0, 0, reinterpret_cast<uintptr_t>(&keep), CallAnswer);
        ClearSpareBits(came);
        EXPECT_EQ(came.rows, pages[i].rows) << came.width << " x " << came.bits;
        DropTiffImage(file, image);
    }
    CloseTiffFile(file);
}

class Interop : public testing::TestWithParam<Coding> {};

TEST_P(Interop, LibtiffReadsWhatIsWrittenHere) {
    const Coding& coding = GetParam();
    const std::vector<Page> pages = PagesOf(coding);
    for (const Layout& layout : LayoutsOf(coding)) {
        const std::string ours = WriteFile(pages, coding, layout);
        ExpectPages(ours, pages);
        const std::string copy = FileOf({}, "copy.tif");
        EXPECT_EQ(Shell("tiffinfo " + ours + " >/dev/null"), "");
        EXPECT_EQ(Shell(Words({"tiffcp -c none -f msb2lsb", ours, copy})), "");
        ExpectPages(copy, pages);
    }
}

TEST_P(Interop, WhatLibtiffWritesIsReadHere) {
    const Coding& coding = GetParam();
    if (coding.tiffcp[0] == '\0') GTEST_SKIP() << "tiffcp doesn't write it";
    const std::vector<Page> pages = PagesOf(coding);
    const std::string ours = WriteFile(pages, kCodings[0], {TIFF_LITTLE_ENDIAN, 1, kHeight});
    for (const Layout& layout : LayoutsOf(coding)) {
        const std::string theirs = FileOf({}, "theirs.tif");
        const std::string command =
            Words({"tiffcp -c", coding.tiffcp, layout.byteOrder == TIFF_BIG_ENDIAN ? "-B" : "-L",
                   layout.fillOrder == 2 ? "-f lsb2msb" : "-f msb2lsb", "-r",
                   std::to_string(layout.rowsPerStrip), ours, theirs});
        EXPECT_EQ(Shell(command), "");
        ExpectPages(theirs, pages);
    }
}

INSTANTIATE_TEST_SUITE_P(Libtiff, Interop, testing::ValuesIn(kCodings), [](const auto& coding) {
    std::string name = coding.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

}  // namespace
}  // namespace vellim::test
