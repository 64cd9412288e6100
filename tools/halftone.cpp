// Error diffusion by R. W. Floyd and L. Steinberg, "An Adaptive Algorithm for Spatial Greyscale"
// (1976): what a pixel lacks or has too much goes to its neighbours, 7/16 to the next one and 3/16,
// 5/16 and 1/16 to those below. Lines are gone through to and fro, which keeps the dots from
// falling into rows of worms.
//
// Shades are taken as they are stored, as a fax and a printer take them, without regard to gamma.
#include "halftone.h"

#include <algorithm>

#include "pixel_format.h"

namespace vellim::tool {
namespace {

constexpr int kWhite = 255;
constexpr int kHalf = 128;

struct Diffuser {
    uint32_t width = 0;
    // What pixels of this line and of the next one are owed, in sixteenths; one place is to spare
    // at either end, so that no neighbour has to be asked for.
    std::vector<int> owed, owedBelow;
    bool backwards = false;
    std::vector<uint8_t> row;
    LineSink next;
};

void DiffuseRow(Diffuser& d, const uint8_t* grey) {
    std::fill(d.row.begin(), d.row.end(), uint8_t{0});
    std::fill(d.owedBelow.begin(), d.owedBelow.end(), 0);
    const ptrdiff_t step = d.backwards ? -1 : 1;
    const uint32_t first = d.backwards ? d.width - 1 : 0;
    int* owed = d.owed.data() + 1 + first;
    int* below = d.owedBelow.data() + 1 + first;
    for (uint32_t i = 0; i < d.width; ++i, owed += step, below += step) {
        const uint32_t x = d.backwards ? first - i : i;
        const int value = grey[x] + ((*owed + 8) >> 4);
        const bool white = value >= kHalf;
        if (white) d.row[x / 8] = static_cast<uint8_t>(d.row[x / 8] | 0x80U >> x % 8);
        const int error = value - (white ? kWhite : 0);
        owed[step] += 7 * error;
        below[-step] += 3 * error;
        below[0] += 5 * error;
        below[step] += error;
    }
}

bool DiffuseLine(Diffuser& d, const uint8_t* grey) {
    DiffuseRow(d, grey);
    d.owed.swap(d.owedBelow);
    d.backwards = !d.backwards;
    return d.next.Put(d.row.data());
}

bool FinishLines(Diffuser& d) {
    return d.next.Finish();
}

LineSink Diffuse(uint32_t width, LineSink next) {
    auto d = std::make_unique<Diffuser>();
    d->width = width;
    d->owed.resize(size_t{width} + 2);
    d->owedBelow.resize(size_t{width} + 2);
    d->row.resize(RowBytes(width, kBilevel));
    d->next = std::move(next);
    return MakeSink<DiffuseLine, FinishLines>(std::move(d));
}

}  // namespace

LineSink ConvertShades(const Picture& picture, PixelType to, Halftone halftone, LineSink next) {
    const bool shades = to == kBilevel && picture.type != kBilevel;
    if (!shades || halftone == Halftone::Threshold) {
        return ConvertPixels(picture, to, std::move(next));
    }
    return ConvertPixels(picture, kGrey8, Diffuse(picture.width, std::move(next)));
}

}  // namespace vellim::tool
