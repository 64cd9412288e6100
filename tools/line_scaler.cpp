// Scaling up, by exact integers. Pixel `t` of `to` has its centre at (t + 1/2) x from / to of the
// source; repeating takes the source pixel in which that point lies, interpolating weighs the two
// whose centres lie around it.
#include "line_scaler.h"

#include <algorithm>
#include <numeric>

namespace vellim::tool {
namespace {

constexpr uint64_t kLargestRatio = 16;
constexpr uint32_t kWholeWeight = 256;

// Where a target pixel takes from: `first`, and its neighbour `second` by `weight` of 256.
struct Tap {
    uint32_t first = 0;
    uint32_t second = 0;
    uint32_t weight = 0;
};

uint32_t NearestSource(uint64_t target, uint32_t from, uint32_t to) {
    return static_cast<uint32_t>((2 * target + 1) * from / (uint64_t{2} * to));
}

Tap LinearTap(uint64_t target, uint32_t from, uint32_t to) {
    const uint64_t centre = (2 * target + 1) * from;  // in 1 / (2 x to) of a source pixel
    if (centre <= to) return {0, 0, 0};
    const uint64_t position = centre - to;
    Tap tap;
    tap.first = static_cast<uint32_t>(position / (uint64_t{2} * to));
    tap.second = std::min(tap.first + 1, from - 1);
    tap.weight =
        static_cast<uint32_t>(position % (uint64_t{2} * to) * kWholeWeight / (uint64_t{2} * to));
    return tap;
}

uint8_t Blend(uint8_t a, uint8_t b, uint32_t weight) {
    return static_cast<uint8_t>((a * (kWholeWeight - weight) + b * weight + kWholeWeight / 2) /
                                kWholeWeight);
}

struct Scaler {
    Picture from;
    uint32_t width = 0, height = 0;
    LineSink next;
    std::vector<Tap> taps;         // by target column; empty where the width stays
    std::vector<uint8_t> current;  // the source line that came last, drawn out in width
    std::vector<uint8_t> previous;
    std::vector<uint8_t> blended;
    uint32_t sourceLine = 0;
    uint32_t targetLine = 0;
};

bool Repeats(const Scaler& s) {
    return s.from.type.bits == 1;
}

void WidenBits(Scaler& s, const uint8_t* row) {
    std::fill(s.current.begin(), s.current.end(), uint8_t{0});
    for (uint32_t x = 0; x < s.width; ++x) {
        const uint32_t source = s.taps[x].first;
        const uint32_t bit = static_cast<uint32_t>(row[source / 8]) >> (7 - source % 8) & 1U;
        s.current[x / 8] = static_cast<uint8_t>(s.current[x / 8] | bit << (7 - x % 8));
    }
}

void WidenBytes(Scaler& s, const uint8_t* row) {
    const size_t channels = s.from.type.bits / 8;
    uint8_t* out = s.current.data();
    for (const Tap& tap : s.taps) {
        const uint8_t* a = row + tap.first * channels;
        const uint8_t* b = row + tap.second * channels;
        for (size_t channel = 0; channel < channels; ++channel) {
            *out++ = Blend(a[channel], b[channel], tap.weight);
        }
    }
}

void Widen(Scaler& s, const uint8_t* row) {
    if (s.taps.empty()) {
        std::copy_n(row, s.current.size(), s.current.begin());
    } else if (Repeats(s)) {
        WidenBits(s, row);
    } else {
        WidenBytes(s, row);
    }
}

bool RepeatLine(Scaler& s) {
    while (s.targetLine < s.height &&
           NearestSource(s.targetLine, s.from.height, s.height) == s.sourceLine) {
        if (!s.next.Put(s.current.data())) return false;
        ++s.targetLine;
    }
    return true;
}

// Gives all lines that lie between the source line before and this one.
bool InterpolateLine(Scaler& s) {
    for (; s.targetLine < s.height; ++s.targetLine) {
        const Tap tap = LinearTap(s.targetLine, s.from.height, s.height);
        if (tap.second > s.sourceLine) return true;
        const std::vector<uint8_t>& above = tap.first == s.sourceLine ? s.current : s.previous;
        const uint8_t* row = above.data();
        if (tap.weight != 0 && tap.first != tap.second) {
            for (size_t i = 0; i < s.blended.size(); ++i) {
                s.blended[i] = Blend(above[i], s.current[i], tap.weight);
            }
            row = s.blended.data();
        }
        if (!s.next.Put(row)) return false;
    }
    return true;
}

bool ScaleLine(Scaler& s, const uint8_t* row) {
    Widen(s, row);
    if (!(Repeats(s) ? RepeatLine(s) : InterpolateLine(s))) return false;
    s.current.swap(s.previous);
    ++s.sourceLine;
    return true;
}

bool FinishLines(Scaler& s) {
    return s.next.Finish();
}

// `length` x `numerator` / `denominator`, rounded, for a ratio of at least 1. Nothing if the ratio
// is out of all measure. Both terms are brought below 2^32 first, which changes only ratios that
// no scanner has, and those by less than a pixel.
std::optional<uint32_t> Stretched(uint32_t length, uint64_t numerator, uint64_t denominator) {
    const uint64_t common = std::gcd(numerator, denominator);
    numerator /= common;
    denominator /= common;
    while (numerator > UINT32_MAX) {
        numerator >>= 1U;
        denominator >>= 1U;
    }
    if (denominator == 0 || numerator / denominator >= kLargestRatio) return {};
    const uint64_t stretched = (length * numerator + denominator / 2) / denominator;
    if (stretched > INT32_MAX) return {};
    return static_cast<uint32_t>(stretched);
}

}  // namespace

std::optional<Picture> Squared(const Picture& picture, const Resolution& resolution) {
    // x / y of the resolutions, as one fraction.
    const uint64_t x = uint64_t{resolution.x.numerator} * resolution.y.denominator;
    const uint64_t y = uint64_t{resolution.y.numerator} * resolution.x.denominator;
    Picture squared = picture;
    const auto stretched =
        x >= y ? Stretched(picture.height, x, y) : Stretched(picture.width, y, x);
    if (!stretched) return {};
    if (x >= y) {
        squared.height = *stretched;
        squared.pelsPerMetreY = squared.pelsPerMetreX;
    } else {
        squared.width = *stretched;
        squared.pelsPerMetreX = squared.pelsPerMetreY;
    }
    return squared;
}

PixelType ScalableType(PixelType type) {
    if (type.bits == 1) return type;
    return type.colour == Colour::Grey ? kGrey8 : kRgb;
}

LineSink ScaleLines(const Picture& from, uint32_t width, uint32_t height, LineSink next) {
    auto s = std::make_unique<Scaler>();
    s->from = from;
    s->width = width;
    s->height = height;
    s->next = std::move(next);
    if (width != from.width) {
        s->taps.resize(width);
        for (uint32_t x = 0; x < width; ++x) {
            s->taps[x] = LinearTap(x, from.width, width);
            if (Repeats(*s)) s->taps[x].first = NearestSource(x, from.width, width);
        }
    }
    const size_t bytes = RowBytes(width, from.type);
    s->current.resize(bytes);
    s->previous.resize(bytes);
    s->blended.resize(bytes);
    return MakeSink<ScaleLine, FinishLines>(std::move(s));
}

}  // namespace vellim::tool
