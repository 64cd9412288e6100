#include "fax/fax_font.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "vellim/platform.h"

namespace vellim {
namespace {

constexpr int32_t kPointsPerInch = 72;
constexpr uint32_t kMostResolution = std::numeric_limits<int32_t>::max();

// Below 0: of the letters without what a line has above them.
int32_t HeightOf(int32_t pointSize, uint32_t resolution) {
    const auto dotsPerInch = static_cast<int32_t>(std::min(resolution, kMostResolution));
    const int32_t height = MulDiv(pointSize, dotsPerInch, kPointsPerInch);
    return -std::max(height, -std::numeric_limits<int32_t>::max());
}

// `room` is the most that there is to read of `name`.
void SetFaceName(LOGFONT& font, const char* name, size_t room) {
    const size_t bytes = strnlen(name, std::min<size_t>(room, LF_FACESIZE - 1));
    std::memcpy(font.lfFaceName, name, bytes);
    font.lfFaceName[bytes] = '\0';
}

}  // namespace

FontHandle CreateFaxFont(const FaxPageRequest& request) {
    if (request.FontName[0] == '\0') return 0;
    const int32_t height = HeightOf(request.PointSize, request.YResolution);
    LOGFONT font{};
    if (void* callers = request.Font; callers != nullptr) {
        // The record may stand at any address.
        std::memcpy(&font, callers, sizeof font);
        font.lfHeight = height;
        std::memcpy(callers, &font, sizeof font);
        font.lfFaceName[LF_FACESIZE - 1] = '\0';
        return CreateFontIndirectA(&font);
    }
    font.lfHeight = height;
    font.lfItalic = (request.Flags & FAX_ITALIC) != 0 ? 1 : 0;
    font.lfWeight = (request.Flags & FAX_BOLD) != 0 ? FW_BOLD : FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    SetFaceName(font, request.FontName, sizeof request.FontName);
    return CreateFontIndirectA(&font);
}

FontHandle CreateOverlayFont(const char* name, int32_t pointSize, uint32_t resolution) {
    LOGFONT font{};
    font.lfHeight = HeightOf(pointSize, resolution);
    SetFaceName(font, name, LF_FACESIZE);
    return CreateFontIndirectA(&font);
}

}  // namespace vellim
