#include "fax/page_geometry.h"

#include <algorithm>
#include <limits>

namespace vellim {
namespace {

uint64_t Hundredths(uint32_t measure, uint32_t flags) {
    constexpr uint64_t unitsPerMillimetre = 1000, unitsPerHundredth = 254;
    if ((flags & FAX_HUNDREDTHS) != 0) return measure;
    return measure * unitsPerMillimetre / unitsPerHundredth;
}

uint32_t Pixels(uint32_t measure, uint32_t flags, uint32_t resolution) {
    constexpr uint64_t most = std::numeric_limits<uint32_t>::max();
    constexpr uint64_t hundredthsPerInch = 100;
    // No more than 34 bits; cut to 32 so that the product fits.
    const uint64_t hundredths = std::min(Hundredths(measure, flags), most);
    return static_cast<uint32_t>(std::min(hundredths * resolution / hundredthsPerInch, most));
}

}  // namespace

PageGeometry GeometryOf(const FaxPageRequest& request) {
    const uint32_t flags = request.Flags;
    const auto across = [&](uint32_t measure) {
        return Pixels(measure, flags, request.XResolution);
    };
    const auto down = [&](uint32_t measure) { return Pixels(measure, flags, request.YResolution); };
    PageGeometry page;
    page.width = across(request.PageWidth);
    page.height = down(request.PageHeight);
    page.left = across(request.LeftMargin);
    page.top = down(request.TopMargin);
    page.rightLimit = page.width - page.left;
    page.bottomLimit = page.height - page.top;
    page.lineSpacing = down(request.LineSpacing);
    for (size_t i = 0; i < page.tabStops.size(); i++)
        page.tabStops[i] = across(request.TabStops[i]);
    return page;
}

int32_t DotsPerMeter(uint32_t dotsPerInch) {
    constexpr double inchesPerMeter = 39.37;
    constexpr double most = std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(std::min(dotsPerInch * inchesPerMeter, most));
}

}  // namespace vellim
