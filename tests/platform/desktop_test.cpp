// The display's figures, cursors and message boxes, with and without a desktop.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/guards.h"
#include "vellim/platform.h"

namespace {

TEST(Display, FiguresFollowTheSettingsThatMakeSense) {
    const DeviceContextHandle context = GetDC(0);
    const struct {
        DisplaySettings settings;
        int32_t taken, figures[6];
    } cases[] = {
        {{72, 144, 8}, 1, {72, 144, 1, 8, 20, 256}},    {{0, 96, 24}, 0, {72, 144, 1, 8, 20, 256}},
        {{96, 65536, 24}, 0, {72, 144, 1, 8, 20, 256}}, {{96, 96, 32}, 0, {72, 144, 1, 8, 20, 256}},
        {{1, 65535, 1}, 1, {1, 65535, 1, 1, 2, 0}},     {{96, 96, 24}, 1, {96, 96, 1, 24, 0, 0}}};
    for (const auto& c : cases) {
        EXPECT_EQ(SetDisplay(&c.settings), c.taken);
        for (int i = 0; const int32_t capability :
                        {LOGPIXELSX, LOGPIXELSY, PLANES, BITSPIXEL, NUMCOLORS, SIZEPALETTE})
            EXPECT_EQ(GetDeviceCaps(context, capability), c.figures[i++]) << capability;
    }
    EXPECT_EQ(ReleaseDC(0, context), 1);
    EXPECT_EQ(ReleaseDC(0, context) + GetDeviceCaps(context, BITSPIXEL), 0);
}

thread_local std::vector<CursorHandle> cursors;
std::string box;

int32_t Answer(WindowHandle owner, const char* text, const char* caption, uint32_t style) {
    box = std::to_string(owner) + '|' + caption + '|' + text + '|' + std::to_string(style);
    SetDesktopDriver(nullptr);  // a driver may call back
    return IDCANCEL;
}

constexpr DesktopDriver kDriver = {Answer, [](CursorHandle cursor) { cursors.push_back(cursor); },
                                   nullptr};

TEST(Desktop, ShowsCursorsAndAnswersMessages) {
    SetDesktopDriver(&kDriver);
    const CursorHandle arrow = LoadCursorA(0, IDC_ARROW), wait = LoadCursorA(0, IDC_WAIT);
    {
        const vellim::WaitCursor waiting;
        EXPECT_EQ(SetCursor(123), 0U) << "no cursor";
        std::thread([&] { EXPECT_EQ(SetCursor(0), arrow) << "a thread's own"; }).join();
    }
    EXPECT_EQ(cursors, (std::vector<CursorHandle>{wait, arrow}));
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(5, "text", nullptr, MB_ICONEXCLAMATION), IDCANCEL);
    EXPECT_EQ(box, "5||text|48");
    EXPECT_EQ(MessageBoxA(0, "Saving has failed.", "TIFF error", MB_OK), IDOK) << "headless now";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "TIFF error: Saving has failed.\n");
}

}  // namespace
