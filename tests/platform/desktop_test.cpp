// The display's figures, cursors and message boxes, with and without a desktop.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/guards.h"
#include "vellim/platform.h"

namespace {

TEST(Display, FiguresFollowTheSettingsThatMakeSense) {
    const DisplaySettings start = {200, 100, 8};
    const DeviceContextHandle context = GetDC(0);
    const struct {
        DisplaySettings settings;
        int32_t taken, colors, palette;
    } cases[] = {{{72, 144, 8}, 1, 20, 256}, {{1, 65535, 1}, 1, 2, 0},
                 {{96, 96, 24}, 1, 0, 0},    {{0, 96, 24}, 0, 20, 256},
                 {{96, -1, 24}, 0, 20, 256}, {{65536, 96, 24}, 0, 20, 256},
                 {{96, 96, 4}, 0, 20, 256},  {{96, 96, 32}, 0, 20, 256}};
    for (const auto& c : cases) {
        ASSERT_EQ(SetDisplay(&start), 1);
        EXPECT_EQ(SetDisplay(&c.settings), c.taken);
        const DisplaySettings& now = c.taken ? c.settings : start;
        const std::pair<int32_t, int32_t> figures[] = {{LOGPIXELSX, now.DotsPerInchX},
                                                       {LOGPIXELSY, now.DotsPerInchY},
                                                       {PLANES, 1},
                                                       {BITSPIXEL, now.BitsPerPixel},
                                                       {NUMCOLORS, c.colors},
                                                       {SIZEPALETTE, c.palette},
                                                       {9999, 0}};
        for (const auto& [capability, figure] : figures)
            EXPECT_EQ(GetDeviceCaps(context, capability), figure) << capability;
    }
    EXPECT_EQ(SetDisplay(nullptr), 1);
    EXPECT_EQ(GetDeviceCaps(context, LOGPIXELSX) + GetDeviceCaps(context, BITSPIXEL), 96 + 24);
    ReleaseDC(0, context);
}

TEST(Display, ContextsEnd) {
    const DeviceContextHandle first = GetDC(0), second = GetDC(0);
    EXPECT_EQ(GetDC(7) + static_cast<uint32_t>(ReleaseDC(7, first)), 0U) << "no such window";
    EXPECT_EQ(ReleaseDC(0, first), 1);
    EXPECT_EQ(ReleaseDC(0, first), 0);
    for (const DeviceContextHandle none : {first, 0U, 0xFFFFFFFFU, second ^ 1U})
        EXPECT_EQ(GetDeviceCaps(none, BITSPIXEL), 0);
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

TEST(Desktop, ShowsCursorsAndAnswersMessages) {
    SetDesktopDriver(&kDriver);
    const CursorHandle arrow = LoadCursorA(0, IDC_ARROW), wait = LoadCursorA(0, IDC_WAIT);
    EXPECT_TRUE(arrow != 0 && wait != 0 && arrow != wait);
    EXPECT_EQ(LoadCursorA(0, IDC_WAIT + 1) + LoadCursorA(1, IDC_WAIT), 0U);
    {
        const vellim::WaitCursor waiting;
        EXPECT_EQ(SetCursor(123), 0U) << "no cursor";
        std::thread([&] { EXPECT_EQ(SetCursor(0), arrow) << "a thread's own"; }).join();
    }
    EXPECT_EQ(cursors, (std::vector<CursorHandle>{wait, arrow}));
    EXPECT_EQ(SetCursor(0), arrow);
    EXPECT_EQ(SetCursor(arrow), 0U);

    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(5, "text", nullptr, MB_ICONEXCLAMATION), IDCANCEL);
    EXPECT_EQ(box, "5||text|48");
    EXPECT_EQ(MessageBoxA(0, "Saving has failed.", "TIFF error", MB_OK), IDOK) << "headless now";
    EXPECT_EQ(MessageBoxA(0, nullptr, nullptr, MB_OK), IDOK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "TIFF error: Saving has failed.\n: \n");
}

}  // namespace
