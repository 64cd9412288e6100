// Families that stand for those of other systems. Behind each row of names stand the free families,
// those of the same widths first.
#pragma once

#include <array>
#include <string_view>

namespace vellim {

inline constexpr size_t kMostFamilies = 8;
using FamilyNames = std::array<std::string_view, kMostFamilies>;

inline constexpr FamilyNames kSansFamilies = {"Liberation Sans", "Arimo",    "Nimbus Sans",
                                              "Nimbus Sans L",   "FreeSans", "Noto Sans",
                                              "DejaVu Sans"};
inline constexpr FamilyNames kSerifFamilies = {"Liberation Serif",   "Tinos",     "Nimbus Roman",
                                               "Nimbus Roman No9 L", "FreeSerif", "Noto Serif",
                                               "DejaVu Serif"};
inline constexpr FamilyNames kFixedFamilies = {"Liberation Mono", "Cousine",  "Nimbus Mono PS",
                                               "Nimbus Mono L",   "FreeMono", "Noto Sans Mono",
                                               "DejaVu Sans Mono"};

struct FamilySubstitutes {
    FamilyNames asked;
    FamilyNames first;  // before the general ones
    FamilyNames general;
};

inline constexpr auto kFamilySubstitutes = std::to_array<FamilySubstitutes>({
    {{"", "Arial", "Helvetica", "Helv", "MS Sans Serif", "Microsoft Sans Serif", "System"},
     {},
     kSansFamilies},
    {{"MS Shell Dlg", "MS Shell Dlg 2", "Small Fonts"}, {}, kSansFamilies},
    {{"Times New Roman", "Times", "Tms Rmn", "MS Serif", "Roman"}, {}, kSerifFamilies},
    {{"Courier New", "Courier", "Fixedsys", "Terminal", "Lucida Console"}, {}, kFixedFamilies},
    {{"Consolas"}, {"Inconsolata", "DejaVu Sans Mono"}, kFixedFamilies},
    {{"Arial Narrow"}, {"Liberation Sans Narrow", "Nimbus Sans Narrow"}, kSansFamilies},
    {{"Calibri"}, {"Carlito"}, kSansFamilies},
    {{"Segoe UI"}, {"Selawik", "Open Sans"}, kSansFamilies},
    {{"Tahoma", "Verdana"}, {"DejaVu Sans", "Bitstream Vera Sans"}, kSansFamilies},
    {{"Cambria"}, {"Caladea"}, kSerifFamilies},
    {{"Georgia"}, {"Gelasio", "DejaVu Serif"}, kSerifFamilies},
    {{"Palatino Linotype", "Palatino", "Book Antiqua"},
     {"P052", "URW Palladio L", "TeX Gyre Pagella"},
     kSerifFamilies},
    {{"Century Schoolbook", "New Century Schoolbook", "Century"},
     {"C059", "Century Schoolbook L"},
     kSerifFamilies},
    {{"Bookman Old Style", "Bookman"}, {"URW Bookman", "URW Bookman L"}, kSerifFamilies},
    {{"Century Gothic", "Avant Garde"}, {"URW Gothic", "URW Gothic L"}, kSansFamilies},
});

// What the name of a family that nobody knows tells of its kind, in small letters; the first that
// occurs counts.
struct FamilyKind {
    std::string_view part;
    const char* generic;  // fontconfig's name
    const FamilyNames* families;
};

inline constexpr auto kFamilyKinds = std::to_array<FamilyKind>({
    {"mono", "monospace", &kFixedFamilies},
    {"courier", "monospace", &kFixedFamilies},
    {"console", "monospace", &kFixedFamilies},
    {"typewriter", "monospace", &kFixedFamilies},
    {"fixed", "monospace", &kFixedFamilies},
    {"terminal", "monospace", &kFixedFamilies},
    {"code", "monospace", &kFixedFamilies},
    {"sans", "sans-serif", &kSansFamilies},
    {"gothic", "sans-serif", &kSansFamilies},
    {"serif", "serif", &kSerifFamilies},
    {"times", "serif", &kSerifFamilies},
    {"roman", "serif", &kSerifFamilies},
    {"garamond", "serif", &kSerifFamilies},
    {"antiqua", "serif", &kSerifFamilies},
    {"century", "serif", &kSerifFamilies},
    {"", "sans-serif", &kSansFamilies},
});

}  // namespace vellim
