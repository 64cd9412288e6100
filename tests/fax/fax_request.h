// Requests in pixels, and pages seen as cells of letters.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/shown_colors.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {

// Cells of the library's own font in 16 pixels a line.
constexpr int32_t kCellWidth = 8, kCellHeight = 16;

inline void SetFace(FaxPageRequest& request, const std::string& name) {
    std::memset(request.FontName, 0, sizeof request.FontName);
    std::memcpy(request.FontName, name.data(), std::min(name.size(), sizeof request.FontName));
}

inline void SetText(FaxPageRequest& request, const std::string& text) {
    const std::string path = FileOf(Bytes(text.begin(), text.end()), "text");
    std::memcpy(request.TextFile, path.c_str(), path.size() + 1);
}

// A measure that is as many pixels down at 72 dots an inch; across, at 100, it is the pixels.
constexpr uint32_t Down(uint32_t pixels) {
    return (pixels * 100 + 71) / 72;
}

// A page of 10 x 4 cells without margins.
inline FaxPageRequest Request(const std::string& text) {
    FaxPageRequest request{};
    SetText(request, text);
    SetFace(request, "VELLIM");
    request.PageWidth = 10 * kCellWidth;
    request.PageHeight = Down(4 * kCellHeight);
    request.PointSize = -kCellHeight;
    request.XResolution = 100;
    request.YResolution = 72;
    request.Flags = FAX_HUNDREDTHS;
    return request;
}

inline BITMAP RecordOf(BitmapHandle bitmap) {
    BITMAP record{};
    EXPECT_EQ(GetObjectA(bitmap, sizeof record, &record), int32_t{sizeof record});
    return record;
}

// A white bitmap of one bit.
inline OwnedObject Blank(int32_t width, int32_t height) {
    const Bytes white(static_cast<size_t>((width + 15) / 16 * 2 * height), 0xFF);
    return OwnedObject(CreateBitmap(width, height, 1, 1, white.data()));
}

// The bitmap's colours, lowest row first.
inline Colors ColorsOfBitmap(BitmapHandle bitmap) {
    const OwnedBlock dib(BitmapToDib(bitmap, 0));
    return ColorsOf(dib.Get());
}

// '#' for a cell with black in it, '.' for another; a '|' behind each line.
inline std::string CellsOf(BitmapHandle bitmap) {
    const BITMAP record = RecordOf(bitmap);
    const int32_t across = record.bmWidth / kCellWidth, lines = record.bmHeight / kCellHeight;
    const auto rowCells = static_cast<size_t>(across) + 1;
    std::string cells(rowCells * static_cast<size_t>(lines), '.');
    const Colors colors = ColorsOfBitmap(bitmap);
    for (size_t i = 0; i < colors.size(); i++) {
        const auto x = static_cast<int32_t>(i) % record.bmWidth;
        const auto y = record.bmHeight - 1 - static_cast<int32_t>(i) / record.bmWidth;
        const int32_t column = x / kCellWidth, line = y / kCellHeight;
        if (colors[i] != 0 || column >= across || line >= lines) continue;
        cells[static_cast<size_t>(line) * rowCells + static_cast<size_t>(column)] = '#';
    }
    for (size_t end = rowCells - 1; end < cells.size(); end += rowCells)
        cells[end] = '|';
    return cells;
}

// Nothing is left over, and the cursor is as it was.
struct FaxTest : testing::Test {
    void SetUp() override {
        SetDisplayDepth(24);
        GetStockObject(SYSTEM_FONT);
        SetCursor(arrow_);
        live_ = Live();
    }
    void TearDown() override {
        EXPECT_EQ(Live(), live_);
        EXPECT_EQ(SetCursor(0), arrow_);
        SetDisplay(nullptr);
    }

    CursorHandle arrow_ = LoadCursorA(0, IDC_ARROW);
    std::vector<uint32_t> live_;
};

}  // namespace vellim::test
