// The mode codes of two-dimensional coding: ITU-T T.4 table 4, T.6 table 1.
#pragma once

#include <cstdint>
#include <string_view>

namespace vellim {

enum class ModeKind : uint8_t { Vertical, Pass, Horizontal, Other };

struct ModeCode {
    ModeKind kind;
    int32_t offset;  // of a vertical mode: a1 right of b1
    std::string_view bits;
};

inline constexpr ModeCode kModeCodes[] = {
    {ModeKind::Pass, 0, "0001"},         {ModeKind::Horizontal, 0, "001"},
    {ModeKind::Vertical, 0, "1"},        {ModeKind::Vertical, 1, "011"},
    {ModeKind::Vertical, 2, "000011"},   {ModeKind::Vertical, 3, "0000011"},
    {ModeKind::Vertical, -1, "010"},     {ModeKind::Vertical, -2, "000010"},
    {ModeKind::Vertical, -3, "0000010"},
};

}  // namespace vellim
