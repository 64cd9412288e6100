// Dialogs driven by scripts: what their procedure and a person do to them, and what is left over.
#include "platform/windows/dialogs.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/memory/memory_blocks.h"
#include "vellim/platform.h"
#include "vellim/windows.h"

namespace {

struct Message {
    WindowHandle dialog;
    uint32_t number, first;
    uintptr_t second;
};

thread_local std::function<int32_t(const Message&)> procedure;
thread_local std::function<void(WindowHandle)> script;

int32_t Procedure(WindowHandle dialog, uint32_t number, uint32_t first, uintptr_t second) {
    return procedure ? procedure({dialog, number, first, second}) : 0;
}

int32_t Show(const char* name, const std::function<void(WindowHandle)>& whatToDo) {
    script = whatToDo;
    return DialogBoxParamA(0, name, 0, Procedure, 77);
}

std::string TextOf(WindowHandle window) {
    std::string text(100000, 'x');
    text.resize(GetWindowTextA(window, text.data(), 100000));
    return text;
}

// Nothing may be left over.
class Dialogs : public testing::Test {
  protected:
    void SetUp() override {
        constexpr DesktopDriver driver = {nullptr, nullptr, [](WindowHandle d) { script(d); }};
        SetDesktopDriver(&driver);
        procedure = nullptr;
    }
    void TearDown() override {
        SetDesktopDriver(nullptr);
        EXPECT_EQ(vellim::LiveDialogWindows(), 0U);
        EXPECT_EQ(vellim::LiveGlobalBlocks(), blocksBefore_);
        EXPECT_EQ(GetFocus(), 0U);
    }

  private:
    uint32_t blocksBefore_ = vellim::LiveGlobalBlocks();
};

// Every control lies in the dialog, and has a number that no other has, or none.
void CheckLayout(WindowHandle dialog, int32_t labels) {
    DialogFacts facts{};
    DialogControl at{};
    std::set<int32_t> ids;
    EXPECT_EQ(GetDialogFacts(dialog, &facts), 1);
    for (int32_t i = 0; GetDialogControl(dialog, i, &at) != 0; i++) {
        EXPECT_TRUE(IsRectEmpty(&at.Place) == 0 && at.Place.left >= 0 &&
                    at.Place.right <= facts.Place.right - facts.Place.left &&
                    at.Place.bottom <= facts.Place.bottom - facts.Place.top)
            << at.Id;
        EXPECT_EQ(TextOf(at.Window).empty(), at.Kind >= CONTROL_EDIT);
        EXPECT_EQ(GetDlgItem(dialog, at.Id), at.Id == -1 ? 0 : at.Window);
        labels -= at.Id == -1 ? 1 : 0;
        ids.insert(at.Id == -1 ? -i : at.Id);
    }
    EXPECT_EQ(ids.size(), static_cast<size_t>(facts.ControlCount));
    EXPECT_EQ(labels, 0);
}

TEST_F(Dialogs, TemplatesFitTogether) {
    const struct {
        const char *name, *caption;
        int32_t controls, points, firstStop, labels;
    } cases[] = {{"tiffinfo", "Noname.tif", 26, 2, 1, 0},
                 {"SaveTIFF", "Saving TIFF file", 20, 2, 201, 0},
                 {"NOTEITDLG", "Notes", 8, 8, 1004, 0},
                 {"CALSINFO", "CALS info", 4, 8, 1, 0},
                 {"CALSEDIT", "Save CALS ", 21, 8, 1, 7}};
    procedure = [](const Message&) { return 1; };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const int32_t result = Show(c.name, [&](WindowHandle dialog) {
            DialogFacts facts{};
            GetDialogFacts(dialog, &facts);
            EXPECT_TRUE(facts.ControlCount == c.controls && facts.FontPoints == c.points);
            EXPECT_EQ(TextOf(dialog), c.caption);
            EXPECT_EQ(GetFocus(), GetDlgItem(dialog, c.firstStop));
            CheckLayout(dialog, c.labels);
            EndDialog(dialog, -c.controls);
        });
        EXPECT_EQ(result, -c.controls);
    }
}

TEST_F(Dialogs, LiveUntilTheyEnd) {
    int shown = 0;
    WindowHandle stale = 0, control = 0;
    procedure = [&](const Message& m) {
        if (m.number == WM_INITDIALOG) {
            EXPECT_TRUE(m.first == GetDlgItem(m.dialog, 1004) && m.second == 77);
            EnableWindow(m.first, 0);  // the next one is the first that can be reached
            return -5;
        }
        EXPECT_EQ(EndDialog(m.dialog, 0x10000 + static_cast<int32_t>(m.first)), 1);
        EXPECT_EQ(EndDialog(m.dialog, 4), 0);
        return 1;
    };
    const int32_t result = Show("NOTEITDLG", [&](WindowHandle dialog) {
        stale = dialog;
        control = GetDlgItem(dialog, 1000);
        EXPECT_EQ(GetFocus(), control);
        EXPECT_EQ(SetFocus(GetDlgItem(dialog, 1004)), 0U) << "disabled";
        EXPECT_EQ(SetFocus(dialog), control);
        EXPECT_EQ(IsDialogEnded(dialog), 0);
        EXPECT_EQ(ClickControl(dialog, 1), 1);
        EXPECT_EQ(ClickControl(dialog, 2) + DestroyWindow(dialog), 0);
        EXPECT_EQ(IsDialogEnded(dialog), 1);
        shown++;
    });
    EXPECT_EQ(result, 0x10001);
    DialogFacts facts{};
    DialogControl asked{};
    for (const WindowHandle w : {stale, control, 0U, 0xFFFFFFFFU}) {
        char text[4] = "abc";
        EXPECT_EQ(EndDialog(w, 1) + SetWindowTextA(w, "") + EnableWindow(w, 0) +
                      IsWindowEnabled(w) + GetDialogFacts(w, &facts) + ClickControl(w, 1) +
                      GetDialogControl(w, 0, &asked) + CheckRadioButton(w, 1, 3, 2),
                  0);
        EXPECT_EQ(SetFocus(w) + GetDlgItem(w, 1) + SendMessageA(w, WM_COMMAND, 1, 0), 0U);
        EXPECT_TRUE(GetWindowTextA(w, text, 4) == 0 && *text == '\0' && IsDialogEnded(w) == 1);
    }

    // Dialogs that are over before they are shown, or never ended.
    const auto giveUp = [&](WindowHandle) { shown++; };
    EXPECT_EQ(Show("NOTEITDLG", giveUp), -1);
    EXPECT_EQ(DialogBoxParamA(0, "NOTE", 0, Procedure, 0), -1);
    EXPECT_EQ(DialogBoxParamA(0, nullptr, 0, Procedure, 0), -1);
    EXPECT_EQ(DialogBoxParamA(0, "CALSINFO", 0, nullptr, 0), -1);
    procedure = [](const Message& m) { return EndDialog(m.dialog, 8); };
    EXPECT_EQ(Show("NOTEITDLG", giveUp), 8);
    SetDesktopDriver(nullptr);
    EXPECT_EQ(Show("NOTEITDLG", giveUp), -1);
    EXPECT_EQ(shown, 2);
}

TEST_F(Dialogs, BoxesChangeAndCommandsTell) {
    std::vector<Message> told;
    procedure = [&](const Message& m) {
        told.push_back(m);
        const auto id = static_cast<int32_t>(m.first & 0xFFFFU);
        // A pair of boxes that act as radio buttons do.
        if (m.number == WM_COMMAND && id >= 1002) CheckRadioButton(m.dialog, 1002, 1003, id);
        return 0;
    };
    const auto checks = [](WindowHandle d, int32_t first, int32_t last) {
        std::string all;
        for (int32_t id = first; id <= last; id++)
            all += IsDlgButtonChecked(d, id) != 0 ? '1' : '0';
        return all;
    };
    Show("NOTEITDLG", [&](WindowHandle d) {
        EXPECT_EQ(GetFocus(), 0U) << "the procedure's to set";
        EXPECT_TRUE(ClickControl(d, 1000) && ClickControl(d, 1001) && ClickControl(d, 1000));
        EXPECT_TRUE(ClickControl(d, 1002) && ClickControl(d, 1002));
        EXPECT_EQ(checks(d, 1000, 1003), "0110");
        EXPECT_EQ(ClickControl(d, 1003), 1);
        EXPECT_EQ(checks(d, 1000, 1003), "0101");
        const WindowHandle box = GetDlgItem(d, 1000);
        EXPECT_EQ(EnableWindow(box, 0) + 2 * EnableWindow(box, 0), 2);
        EXPECT_EQ(told.size(), 7U);
        EXPECT_EQ(ClickControl(d, 1000) + ClickControl(d, 1004) + ClickControl(d, 5), 0);
        EXPECT_EQ(CheckDlgButton(d, 1000, 9) + 2 * CheckDlgButton(d, 1004, 1), 1);
        EXPECT_EQ(told.size(), 7U);
        EXPECT_TRUE(EnableWindow(box, 1) && TypeIntoControl(d, 1004, "x"));
        EXPECT_EQ(told.back().first, 1004U | 0x0300U << 16U);
        EXPECT_EQ(told.back().second, GetDlgItem(d, 1004));
        EXPECT_EQ(EnableWindow(d, 0) + ClickControl(d, 1000), 0) << "nor in a disabled dialog";
    });
    Show("SAVETIFF", [&](WindowHandle d) {
        EXPECT_EQ(ClickControl(d, 203), 1);
        EXPECT_EQ(checks(d, 201, 209), "000000000") << "the procedure's to check";
        EXPECT_EQ(CheckRadioButton(d, 201, 209, 203) + CheckDlgButton(d, 262, 1), 2);
        EXPECT_EQ(CheckRadioButton(d, 200, 209, 200) + CheckRadioButton(d, 201, 209, 260), 0);
        EXPECT_EQ(checks(d, 201, 209) + checks(d, 260, 262), "001000000001");
    });
}

TEST_F(Dialogs, EditControlsLendTheirBlocks) {
    Show("NOTEITDLG", [](WindowHandle d) {
        const WindowHandle edit = GetDlgItem(d, 1004);
        const auto block = [&] {
            return static_cast<LocalHandle>(SendMessageA(edit, EM_GETHANDLE, 0, 0));
        };
        const auto held = [&] { return std::string(static_cast<char*>(LocalLock(block()))); };
        const LocalHandle first = block();
        const std::string longText(70000, 'n');
        for (const std::string& text : {std::string("note"), longText, std::string()}) {
            EXPECT_TRUE(TypeIntoControl(d, 1004, text.c_str()));
            EXPECT_TRUE(held() == text && TextOf(edit) == text && block() == first);
            EXPECT_EQ(LocalSize(first), text.size() + 1);
        }
        SetWindowTextA(edit, "a text of its own");
        SetWindowTextA(edit, static_cast<char*>(LocalLock(first)) + 2);
        char cut[5] = "----";
        EXPECT_EQ(GetDlgItemTextA(d, 1004, cut, 4), 3U);
        EXPECT_STREQ(cut, "tex");
        EXPECT_EQ(GetWindowTextA(edit, cut, 0) + GetWindowTextA(edit, nullptr, 9), 0U);
        EXPECT_EQ(SetWindowTextA(edit, nullptr) + TypeIntoControl(d, 1004, nullptr), 0);

        // A block of another size, without a terminator; the one before goes to the borrower.
        const LocalHandle given = LocalAlloc(LHND, 3);
        std::memcpy(LocalLock(given), "abc", 3);
        EXPECT_EQ(SendDlgItemMessageA(d, 1004, EM_SETHANDLE, 0, given), 1U);
        EXPECT_EQ(LocalFree(first), 0U);
        EXPECT_EQ(TextOf(edit), "abc");
        EXPECT_EQ(SendMessageA(edit, EM_SETHANDLE, 0, given), 1U) << "its own";
        EXPECT_TRUE(TextOf(edit) == "abc" && LocalSize(block()) == 4);
        EXPECT_EQ(SendMessageA(edit, EM_SETHANDLE, 0, given), 1U) << "given back";
        EXPECT_EQ(SendMessageA(edit, EM_SETHANDLE, 0, first), 0U) << "freed";
        EXPECT_EQ(SendMessageA(edit, EM_SETHANDLE, 0, LocalAlloc(LHND, 0)), 1U);
        EXPECT_EQ(LocalSize(given), 0U) << "nobody else's";
        EXPECT_TRUE(held().empty() && LocalFree(block()) == 0);
        EXPECT_EQ(TextOf(edit), "") << "freed behind its back";
        SendMessageA(edit, EM_LIMITTEXT, 3, 0);
        EXPECT_TRUE(TypeIntoControl(d, 1004, "12345") && held() == "123");
        EXPECT_TRUE(SetDlgItemTextA(d, 1004, "12345") && held() == "12345");
        EXPECT_EQ(SendDlgItemMessageA(d, 1000, EM_GETHANDLE, 0, 0), 0U) << "no edit control";
    });
}

TEST_F(Dialogs, ListBoxesKeepTheirLines) {
    Show("CALSINFO", [](WindowHandle d) {
        const auto send = [=](uint32_t message, uintptr_t first, const void* second) {
            return static_cast<intptr_t>(
                SendDlgItemMessageA(d, 1001, message, first, reinterpret_cast<uintptr_t>(second)));
        };
        EXPECT_EQ(send(LB_ADDSTRING, 0, "gone"), 0);
        send(LB_RESETCONTENT, 0, nullptr);
        EXPECT_EQ(send(WM_SETREDRAW, 0, nullptr) + send(WM_SETFONT, 5, nullptr), 2);
        EXPECT_EQ(send(LB_ADDSTRING, 0, "z") + send(LB_ADDSTRING, 0, " a line"), 1);
        EXPECT_EQ(send(LB_GETCOUNT, 0, nullptr), 2) << "in the order they came";
        char text[8];
        EXPECT_TRUE(send(LB_GETTEXTLEN, 1, nullptr) == 7 && send(LB_GETTEXT, 1, text) == 7);
        EXPECT_STREQ(text, " a line");
        EXPECT_EQ(send(LB_GETTEXTLEN, 2, nullptr) + send(LB_GETTEXT, ~uintptr_t{0}, text) +
                      send(LB_GETTEXT, 0, nullptr) + send(LB_ADDSTRING, 0, nullptr),
                  -4);
        EXPECT_EQ(SendDlgItemMessageA(d, 1, LB_GETCOUNT, 0, 0), 0U) << "no list box";
    });
}

TEST_F(Dialogs, StandInOneAnotherAndKeepToTheirThread) {
    procedure = [](const Message& m) {
        return m.number == WM_INITDIALOG ? 1 : EndDialog(m.dialog, static_cast<int32_t>(m.first));
    };
    const int32_t result = Show("NOTEITDLG", [](WindowHandle outer) {
        const WindowHandle focus = GetFocus();
        const int32_t innerResult = Show("SAVETIFF", [=](WindowHandle inner) {
            EXPECT_NE(GetFocus(), focus);
            EXPECT_TRUE(EndDialog(outer, 6) == 1 && IsDialogEnded(inner) == 0);
            ClickControl(inner, 2);
        });
        EXPECT_EQ(innerResult, 2);
        EXPECT_EQ(GetFocus(), focus);
        std::thread([=] {
            EXPECT_EQ(ClickControl(outer, 1) + EnableWindow(focus, 0), 0);
            EXPECT_EQ(SetFocus(focus) + GetFocus() + GetDlgItem(outer, 1), 0U);
            EXPECT_EQ(Show("CALSEDIT", [](WindowHandle own) { EndDialog(own, 3); }), 3);
        }).join();
    });
    EXPECT_EQ(result, 6);
}

}  // namespace
