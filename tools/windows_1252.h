// Text between UTF-8, in which people type it, and Windows-1252, which the library draws and
// stores.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vellim::tool {

// Characters that have no place become "?" and are counted in `lost`. Nothing for bytes that aren't
// UTF-8.
std::optional<std::string> ToWindows1252(std::string_view utf8, size_t& lost);

std::string FromWindows1252(std::string_view bytes);

}  // namespace vellim::tool
