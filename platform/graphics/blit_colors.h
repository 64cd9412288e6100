// What becomes of pixels that are copied to a context of another depth.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/graphics/device_contexts.h"
#include "platform/graphics/pixel_rows.h"

namespace vellim {

// Of one bit, 0 becomes the text colour of the context that is drawn to and 1 its background
// colour. To one bit, what has the background colour of the source becomes 1. Other colours become
// the nearest that there are.
class ColorChange {
  public:
    // What a change depends on.
    struct Terms {
        uint32_t fromBits = 0;
        uint32_t toBits = 0;
        ColorRef text = 0;
        ColorRef background = 0;
        ColorRef sourceBackground = 0;
        bool isInverted = false;  // all bits of the new pixels are to be
        uint32_t displayVersion = 0;

        bool operator==(const Terms&) const = default;
    };

    // The terms of copies to a context as it is now.
    static Terms TermsOf(const DeviceContext& to, uint32_t fromBits, ColorRef sourceBackground,
                         bool isInverted);

    ColorChange() = default;
    explicit ColorChange(const Terms& terms);

    [[nodiscard]] const Terms& GetTerms() const { return terms_; }
    [[nodiscard]] bool IsNeeded() const { return change_ != Change::None; }

    // Whether new pixels come inverted where the terms ask for it. Else that is left to be done.
    [[nodiscard]] bool Inverts() const { return ReadsBits() && terms_.isInverted; }

    // Both rows begin with their first pixel.
    void Apply(const uint8_t* from, uint8_t* to, uint32_t width) const;

    // What becomes of one pixel; nothing where it would have to be looked for.
    [[nodiscard]] std::optional<uint32_t> NewPixel(uint32_t pixel) const;

  private:
    enum class Change : uint8_t {
        None,
        ByFormat,
        BitsToBytes,
        BitsToTrueColor,
        TrueColorToBackground
    };

    // Pixels of one bit become whole bytes four at a time.
    static constexpr uint32_t kFourPixels = 4;
    static constexpr size_t kMostPixelBytes = 3;
    using FourPixels = std::array<uint8_t, kFourPixels * kMostPixelBytes>;

    [[nodiscard]] bool ReadsBits() const {
        return change_ == Change::BitsToBytes || change_ == Change::BitsToTrueColor;
    }
    void MakeFours(uint32_t pixelBytes);
    template <size_t kPixelBytes>
    void SpreadBits(const uint8_t* from, uint8_t* to, uint32_t width) const;

    Terms terms_;
    Change change_ = Change::None;
    std::array<uint32_t, 2> bitPixels_{};  // what 0 and 1 become
    std::array<FourPixels, 1U << kFourPixels> fours_{};
    PixelConversion conversion_;
};

}  // namespace vellim
