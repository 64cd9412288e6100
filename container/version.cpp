// The version text.

#include <algorithm>
#include <cstring>

#include "vellim/files.h"

namespace {

constexpr char kVersion[] = "Version 6.14";

}  // namespace

void GetTiffVersion(char* buffer, int32_t size) {
    if (buffer == nullptr || size <= 0) return;
    std::memcpy(buffer, kVersion, std::min(sizeof kVersion, static_cast<size_t>(size)));
}
