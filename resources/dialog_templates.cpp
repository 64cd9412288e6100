#include "resources/dialog_templates.h"

#include <algorithm>
#include <string_view>

#include "resources/cals_edit_dialog.h"
#include "resources/cals_info_dialog.h"
#include "resources/note_dialog.h"
#include "resources/save_tiff_dialog.h"
#include "resources/tiff_info_dialog.h"

namespace vellim {
namespace {

constexpr const DialogTemplate* kDialogs[] = {&kTiffInfoDialog, &kSaveTiffDialog, &kNoteDialog,
                                              &kCalsInfoDialog, &kCalsEditDialog};

// The names are plain letters, which no locale may change.
char UpperLetter(char letter) {
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool AreEqualWithoutCase(std::string_view one, std::string_view other) {
    return std::ranges::equal(one, other, {}, UpperLetter, UpperLetter);
}

}  // namespace

const DialogTemplate* FindDialogTemplate(const char* name) {
    if (name == nullptr) return nullptr;
    for (const DialogTemplate* dialog : kDialogs) {
        if (AreEqualWithoutCase(dialog->name, name)) return dialog;
    }
    return nullptr;
}

}  // namespace vellim
