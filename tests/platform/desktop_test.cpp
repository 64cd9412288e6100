#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/guards.h"
#include "vellim/platform.h"

namespace {

TEST(Display, FiguresFollowTheSettings) {
    struct Case {
        DisplaySettings settings;
        int32_t taken, colors, palette;
    };
    const DisplaySettings start = {200, 100, 8};
    const DeviceContextHandle context = GetDC(0);
    for (const Case& one : {Case{{72, 144, 8}, 1, 20, 256},
                            {{1, 65535, 1}, 1, 2, 0},
                            {{96, 96, 24}, 1, 0, 0},
                            {{0, 96, 24}, 0, 20, 256},
                            {{96, -1, 24}, 0, 20, 256},
                            {{65536, 96, 24}, 0, 20, 256},
                            {{96, 96, 4}, 0, 20, 256},
                            {{96, 96, 32}, 0, 20, 256}}) {
        ASSERT_EQ(SetDisplay(&start), 1);
        EXPECT_EQ(SetDisplay(&one.settings), one.taken);
        const DisplaySettings& now = one.taken ? one.settings : start;
        EXPECT_EQ(GetDeviceCaps(context, LOGPIXELSX), now.DotsPerInchX);
        EXPECT_EQ(GetDeviceCaps(context, LOGPIXELSY), now.DotsPerInchY);
        EXPECT_EQ(GetDeviceCaps(context, BITSPIXEL), now.BitsPerPixel);
        EXPECT_EQ(GetDeviceCaps(context, NUMCOLORS), one.colors);
        EXPECT_EQ(GetDeviceCaps(context, SIZEPALETTE), one.palette);
        EXPECT_EQ(GetDeviceCaps(context, 9999), 0);
    }
    EXPECT_EQ(SetDisplay(nullptr), 1);
    EXPECT_EQ(GetDeviceCaps(context, LOGPIXELSX), 96);
    EXPECT_EQ(GetDeviceCaps(context, BITSPIXEL), 24);
    EXPECT_EQ(GetDeviceCaps(context, PLANES), 1);
    ReleaseDC(0, context);
}

TEST(Display, ContextsEnd) {
    EXPECT_EQ(GetDC(7), 0U) << "no such window";
    const DeviceContextHandle first = GetDC(0), second = GetDC(0);
    EXPECT_EQ(ReleaseDC(7, first), 0);
    EXPECT_EQ(ReleaseDC(0, first), 1);
    EXPECT_EQ(ReleaseDC(0, first), 0);
    for (const DeviceContextHandle none : {first, 0U, 0xFFFFFFFFU, second ^ 1U}) {
        EXPECT_EQ(GetDeviceCaps(none, BITSPIXEL), 0);
    }
    EXPECT_EQ(GetDeviceCaps(second, BITSPIXEL), 24);
    EXPECT_EQ(ReleaseDC(0, second), 1);
}

thread_local std::vector<CursorHandle> cursors;
std::string box;

int32_t Answer(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    box = std::to_string(owner) + '|' + caption + '|' + text + '|' + std::to_string(style);
    SetDesktopDriver(nullptr);  // a driver may call back
    return IDCANCEL;
}

constexpr DesktopDriver kDriver = {Answer, [](CursorHandle cursor) { cursors.push_back(cursor); }};

TEST(Cursors, AreShownAndPutBack) {
    SetDesktopDriver(&kDriver);
    const CursorHandle arrow = LoadCursorA(0, IDC_ARROW), wait = LoadCursorA(0, IDC_WAIT);
    EXPECT_TRUE(arrow != 0 && wait != 0 && arrow != wait);
    EXPECT_EQ(LoadCursorA(0, IDC_WAIT + 1), 0U);
    EXPECT_EQ(LoadCursorA(1, IDC_WAIT), 0U);
    {
        const vellim::WaitCursor waiting;
        EXPECT_EQ(SetCursor(123), 0U) << "no cursor";
        std::thread([&] { EXPECT_EQ(SetCursor(0), arrow) << "a thread's own"; }).join();
    }
    EXPECT_EQ(cursors, (std::vector<CursorHandle>{wait, arrow}));
    EXPECT_EQ(SetCursor(0), arrow);
    EXPECT_EQ(SetCursor(arrow), 0U);
    SetDesktopDriver(nullptr);
}

TEST(MessageBoxes, AskTheDesktopOrWriteALine) {
    SetDesktopDriver(&kDriver);
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(5, "text", nullptr, MB_ICONEXCLAMATION), IDCANCEL);
    EXPECT_EQ(box, "5||text|48");
    EXPECT_EQ(MessageBoxA(0, "Saving has failed.", "TIFF error", MB_OK), IDOK) << "headless now";
    EXPECT_EQ(MessageBoxA(0, nullptr, nullptr, MB_OK), IDOK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "TIFF error: Saving has failed.\n: \n");
}

}  // namespace
