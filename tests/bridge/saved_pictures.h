// Device bitmaps made to measure, the colours that they show, and the two savers that take them.
#pragma once

#include <gtest/gtest.h>

#include "support/shown_colors.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::test {

// Of the picture that MakeDib makes, as near as the bitmap can show it.
inline OwnedObject MakeBitmap(int32_t width, int32_t height, uint16_t bits) {
    const OwnedBlock dib = MakeDib(width, height, bits);
    const LockedBlock block(dib.Get());
    auto* info = block.As<BITMAPINFO>();
    const uint8_t* rows = block.As<uint8_t>() + DibBitsOffset(info);
    OwnedObject bitmap(CreateBitmap(width, height, 1, bits, nullptr));
    const ScopedContext display(ScopedContext::Kind::Display);
    SetDIBits(display.Get(), bitmap.Get(), 0, static_cast<uint32_t>(height), rows, info, 0);
    return bitmap;
}

inline Colors ColorsOfBitmap(BitmapHandle bitmap) {
    BITMAP record{};
    GetObjectA(bitmap, sizeof record, &record);
    const OwnedBlock dib = MakeDib(record.bmWidth, record.bmHeight, 24);
    const LockedBlock block(dib.Get());
    const ScopedContext display(ScopedContext::Kind::Display);
    GetDIBits(display.Get(), bitmap, 0, static_cast<uint32_t>(record.bmHeight),
              block.As<uint8_t>() + sizeof(BITMAPINFOHEADER), block.As<BITMAPINFO>(), 0);
    return ColorsOf(dib.Get());
}

// Black or white, whichever is nearer.
inline Colors Bilevel(Colors colors) {
    for (ColorRef& color : colors)
        color = (color & 255U) + (color >> 8U & 255U) + (color >> 16U) > 382 ? 0xFFFFFF : 0;
    return colors;
}

inline void PutOnClipboard(BitmapHandle bitmap) {
    ASSERT_EQ(OpenClipboard(0), 1);
    EmptyClipboard();
    if (bitmap != 0) {
        ASSERT_EQ(SetClipboardData(CF_BITMAP, bitmap), bitmap);
    }
    CloseClipboard();
}

// The clipboard's bitmap stays there.
inline int32_t Save(bool fromClipboard, const std::string& path, BitmapHandle bitmap,
                    uint32_t compression) {
    return fromClipboard ? SaveTiffFileFromClipboard(path.c_str(), compression, 0)
                         : SaveBitmapInTiffFile(path.c_str(), bitmap, compression, 0);
}

}  // namespace vellim::test
