// Gathered fax code as the library decodes it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "code_file.h"
#include "fax_coding.h"
#include "handles.h"
#include "vellim/base.h"
#include "vellim/platform.h"

namespace vellim::tool {

struct FaxStream {
    Owned<StreamHandle, -1, &_lclose> file;
    FaxCoding coding = FaxCoding::G4;
    uint32_t fillOrder = 1;
    uint32_t width = 0;
};

// Opens what `code` holds. Bytes that it gets or loses later count for runs that begin later.
// Nothing, with the reason in `why`, if it can't be opened.
std::optional<FaxStream> OpenFaxStream(const CodeFile& code, std::string& why);

// Decodes from the code's start, `height` lines or, for 0, all that come. Gives 0 or the failure
// code.
int32_t DecodeFax(const FaxStream& stream, uint32_t height, uintptr_t callbackData,
                  LineCallback callback);

// What is to stand behind code without closing codes, whose bytes have their first bit highest. The
// decoders want to see up to two bytes more than they need, and one of two-dimensional Group 3
// lines wants an end-of-line code behind the last line; without such bytes a last line that is
// complete could be lost.
//
// Code that was cut may decode to a line too much with any such bytes, but hardly to the same line
// with each of the kPaddings ways to choose them.
constexpr uint32_t kPaddings = 5;
std::string PaddingOf(FaxCoding coding, uint32_t way);

}  // namespace vellim::tool
