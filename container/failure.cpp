// The calling thread's failure code and the wording of its 21 values.

#include "container/failure.h"

#include <array>
#include <cstring>
#include <string_view>

#include "vellim/platform.h"

namespace vellim {
namespace {

// In the order of TiffFailure.
constexpr std::array<std::string_view, TIFF_UNEXPECTED_EOFB + 1> kMessages = {
    "Operation was successful.",
    "Not enough memory.",
    "Not T_READ or T_CREAT in OpenTiffFile().",
    "Image or tag data index is out of range.",
    "Strip index is out of range.",
    "Unexpected end of file in reading data.",
    "General I/O error in reading or writting.",
    "Pathname is longer than MAXPATH.",
    "File has not a valid TIFF format.",
    "Invalid TIFF directory tag.",
    "Indispensable tags are missing.",
    "Image compression type is not known.",
    "Error during compression or decompression.",
    "Such tag is not defined.",
    "Invalid byte order.",
    "Invalid bit order.",
    "Color format is not supported.",
    "Too few color info.",
    "File has not a valid CALS format.",
    "End of Facsimile Block is missing (EOFB)",
    "Unexpected End of Facsimile Block (EOFB)",
};

constexpr size_t LongestMessage() {
    size_t longest = 0;
    for (const std::string_view message : kMessages)
        if (message.size() > longest) longest = message.size();
    return longest;
}
static_assert(LongestMessage() + 1 == TIFF_MESSAGE_BYTES);

constinit thread_local int32_t failureCode = TIFF_SUCCESS;

constexpr bool IsFailureCode(int32_t code) {
    return code >= TIFF_SUCCESS && code <= TIFF_UNEXPECTED_EOFB;
}

// The current failure code may be a line function's own, which has no wording.
std::string_view MessageOf(int32_t code) {
    const int32_t current = IsFailureCode(failureCode) ? failureCode : int32_t{TIFF_BAD_CODE};
    return kMessages[static_cast<size_t>(IsFailureCode(code) ? code : current)];
}

}  // namespace

void StoreFailure(uint32_t code) {
    failureCode = static_cast<int32_t>(code);
}

}  // namespace vellim

using namespace vellim;

int32_t TiffError(void) {
    return failureCode;
}

int32_t SetTiffError(int32_t code) {
    const int32_t before = failureCode;
    if (IsFailureCode(code)) failureCode = code;
    return before;
}

char* TiffErrorString(char* buffer, int32_t code) {
    const std::string_view message = MessageOf(code);
    if (buffer == nullptr) {
        MessageBoxA(0, message.data(), "TIFF error", MB_ICONEXCLAMATION);
        return nullptr;
    }
    std::memcpy(buffer, message.data(), message.size() + 1);
    return buffer;
}
