/* Dialogs: trees of control records made from a template of the library's own, driven by a dialog
 * procedure, and shown by the desktop driver (vellim/platform.h).
 *
 * A dialog belongs to the thread that opened it: to another its handles, and those of its controls,
 * are none. So they are to all once it is over. What such a handle is given to fails. */
#ifndef VELLIM_DIALOGS_H
#define VELLIM_DIALOGS_H

#include "vellim/base.h"
#include "vellim/graphics.h"

#ifdef __cplusplus
extern "C" {
#endif

enum DialogMessage {
    WM_SETREDRAW = 11,
    WM_SETFONT = 48,
    EM_SETHANDLE = 188,  /* second: a LocalAlloc block that the edit control takes over; one that
                            EM_GETHANDLE gave before is the caller's from then on */
    EM_GETHANDLE = 189,  /* gives the edit control's text block; it stays the control's, and holds
                            its text with a terminator, also when that changes */
    EM_LIMITTEXT = 197,  /* first: bytes that may be typed, 0: any number */
    WM_INITDIALOG = 272, /* first: the handle of the first tab stop, which gets the focus where the
                            procedure gives another number than 0; second: the parameter */
    WM_COMMAND = 273,    /* first: the control's number in the low 16 bits, above them 0 for a press
                            and 0x0300 for a text typed; second: its handle */
    LB_ADDSTRING = 384,  /* gives the line's number from 0 on; those of lines give -1 on failure */
    LB_RESETCONTENT = 388,
    LB_GETTEXT = 393, /* first: the line from 0 on; second: room for it */
    LB_GETTEXTLEN = 394,
    LB_GETCOUNT = 395
};

/* 1 where it handled the message, else 0. */
typedef int32_t (*DialogProc)(WindowHandle dialog, uint32_t message, uint32_t first,
                              uintptr_t second);

/* Shows the dialog of a template until its procedure ends it, and gives what EndDialog was given;
 * -1 where it can't be shown: no driver, no such template, or the driver gave up. Letters of the
 * name may be large or small. `module` and `owner` may be 0. `parameter` comes with WM_INITDIALOG;
 * a dialog that is ended there isn't shown. The first EndDialog counts. */
VELLIM_API int32_t DialogBoxParamA(uint32_t module, const char* templateName, WindowHandle owner,
                                   DialogProc procedure, uintptr_t parameter);
VELLIM_API int32_t EndDialog(WindowHandle dialog, int32_t result);

/* Controls, by their number in the dialog. Results are 1 and 0 where nothing else is said. */
VELLIM_API WindowHandle GetDlgItem(WindowHandle dialog, int32_t control);
VELLIM_API int32_t SetDlgItemTextA(WindowHandle dialog, int32_t control, const char* text);

/* Copies at most `bytes`, terminator included, and gives the length without it. */
VELLIM_API uint32_t GetDlgItemTextA(WindowHandle dialog, int32_t control, char* text,
                                    int32_t bytes);
VELLIM_API int32_t CheckDlgButton(WindowHandle dialog, int32_t control, uint32_t check);
VELLIM_API uint32_t IsDlgButtonChecked(WindowHandle dialog, int32_t control);

/* Checks one of the boxes and radio buttons from `first` to `last`, and none of the others. */
VELLIM_API int32_t CheckRadioButton(WindowHandle dialog, int32_t first, int32_t last,
                                    int32_t check);
VELLIM_API uintptr_t SendDlgItemMessageA(WindowHandle dialog, int32_t control, uint32_t message,
                                         uintptr_t first, uintptr_t second);

/* Dialogs and controls by their handles. EnableWindow gives 1 where it was disabled before;
 * SetFocus gives the handle that had the focus. */
VELLIM_API uintptr_t SendMessageA(WindowHandle window, uint32_t message, uintptr_t first,
                                  uintptr_t second);
VELLIM_API int32_t EnableWindow(WindowHandle window, int32_t enable);
VELLIM_API int32_t IsWindowEnabled(WindowHandle window);
VELLIM_API WindowHandle SetFocus(WindowHandle window);
VELLIM_API WindowHandle GetFocus(void);
VELLIM_API int32_t SetWindowTextA(WindowHandle window, const char* text);
VELLIM_API uint32_t GetWindowTextA(WindowHandle window, char* text, int32_t bytes);

/* ---- For a driver, which shows a dialog and tells it what a person does. ---- */

enum ControlKind {
    CONTROL_PUSH_BUTTON,
    CONTROL_DEFAULT_BUTTON,
    CONTROL_CHECK_BOX,    /* automatic: changes when it is pressed */
    CONTROL_RADIO_BUTTON, /* the procedure checks it */
    CONTROL_GROUP_BOX,
    CONTROL_TEXT,
    CONTROL_RIGHT_TEXT,
    CONTROL_EDIT,
    CONTROL_LIST_BOX
};

enum ControlStyle {
    CONTROL_TAB_STOP = 1,
    CONTROL_GROUP = 2,
    CONTROL_BORDER = 4,
    CONTROL_MULTI_LINE = 8,    /* an edit control where the return key makes a line */
    CONTROL_AUTO_SCROLL = 16,  /* an edit control that scrolls sideways */
    CONTROL_VERTICAL_BAR = 32, /* a list box with a scroll bar */
    CONTROL_NO_PREFIX = 64     /* a text where "&" is a letter */
};

/* What stands in a dialog at its making; texts change, and are asked for with GetWindowTextA. */
typedef struct DialogControl {
    WindowHandle Window;
    int32_t Id; /* -1: none */
    int32_t Kind;
    uint32_t Style;
    RECT Place; /* in dialog units: a quarter of a mean letter's width, an eighth of its height */
} DialogControl;

typedef struct DialogFacts {
    RECT Place; /* in dialog units */
    const char* FontName;
    int32_t FontPoints;
    int32_t ControlCount;
    WindowHandle Owner;
} DialogFacts;

VELLIM_API int32_t GetDialogFacts(WindowHandle dialog, DialogFacts* facts);

/* By number in the template, from 0 on. */
VELLIM_API int32_t GetDialogControl(WindowHandle dialog, int32_t index, DialogControl* control);

/* What a person does: presses a button or box (an automatic check box changes by it), or types a
 * text in place of the one there, which is cut to the control's limit. The dialog is told with
 * WM_COMMAND. 0, and nothing happens, where the control is disabled or the dialog was ended. */
VELLIM_API int32_t ClickControl(WindowHandle dialog, int32_t control);
VELLIM_API int32_t TypeIntoControl(WindowHandle dialog, int32_t control, const char* text);

/* Whether EndDialog was called: the driver then closes the dialog and comes back. 1 also for what
 * is no dialog. */
VELLIM_API int32_t IsDialogEnded(WindowHandle dialog);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_DIALOGS_H */
