// Font files of this machine, found by the name of their face.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellim {

struct FaceWish {
    std::string_view name;  // in Windows-1252; empty: any
    int32_t weight = 400;
    bool isItalic = false;
};

// A face in its file, and what it needs to look as it was asked for.
struct FaceFile {
    std::string path;
    int32_t index = 0;
    int32_t weight = 400;  // with what is needed
    bool needsWeight = false;
    bool needsSlant = false;
};

// The families to look for, the best first: the one that was asked for, those that have its widths,
// those that look like it.
std::vector<std::string> FamiliesFor(std::string_view name);

// The face of a family that comes nearest. Nothing where the machine doesn't have the family in
// outlines.
std::optional<FaceFile> FaceOfFamily(const std::string& family, const FaceWish& wish);

// What fontconfig's settings put in place of a face; nothing on a machine without fonts.
std::optional<FaceFile> FaceInstead(const FaceWish& wish);

// The same, of the families that have most of the characters of Windows-1252.
std::optional<FaceFile> FaceWithMostCharacters(const FaceWish& wish);

}  // namespace vellim
