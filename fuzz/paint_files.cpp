// Any bytes as a TIFF or CALS file that is painted into a small window, in any view; and as an
// image that is loaded as a device bitmap, stored and loaded again.
#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include "fuzz/checks.h"
#include "fuzz/input.h"
#include "platform/windows/windows.h"
#include "support/shown_colors.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {
namespace {

using test::Bytes;

constexpr uint32_t kMostLinePixels = 5000;
constexpr uint32_t kMostPictureLines = 500;

struct Bar {
    int32_t least, most, position;
};

// What the first bytes of the input choose; all else is the file.
struct Settings {
    DisplaySettings display;
    int32_t width, height, barSize;
    std::array<Bar, 2> bars;
    bool hasZoom;
    ZoomRatios zoom;
    int32_t format, image;
    uint32_t flags, compression;

    [[nodiscard]] const ZoomRatios* Zoom() const { return hasZoom ? &zoom : nullptr; }
};

// Mostly small, but now and then as far off as can be.
int32_t Figure(Input& input) {
    using Limits = std::numeric_limits<int32_t>;
    constexpr std::array<int32_t, 8> far = {Limits::min(), Limits::max(), 1 << 30, -(1 << 30),
                                            0x7FFF,        0x10000,       -1,      0};
    const uint8_t choice = input.Byte();
    if (choice < 0xC0) return input.Byte();
    return choice < 0xE0 ? input.SignedWord() : far[choice % far.size()];
}

Settings ReadSettings(Input& input) {
    constexpr std::array<int32_t, 3> depths = {24, 8, 1};
    Settings settings{};
    settings.display = {1 + input.Word(), 1 + input.Word(), depths[input.Byte() % 3]};
    settings.display.DotsPerInchX = std::min(settings.display.DotsPerInchX, 0xFFFF);
    settings.display.DotsPerInchY = std::min(settings.display.DotsPerInchY, 0xFFFF);
    settings.width = 1 + input.Byte();
    settings.height = 1 + input.Byte();
    settings.barSize = input.Byte() % 32;
    for (Bar& bar : settings.bars)
        bar = {Figure(input), Figure(input), Figure(input)};
    settings.hasZoom = input.Byte() % 4 != 0;
    settings.zoom = {Figure(input), Figure(input), Figure(input), Figure(input)};
    settings.format = input.Byte() % 4;
    settings.image = input.Byte() % 4;
    settings.flags = input.Byte();
    settings.compression = TIFF_SAVE_NONE + input.Byte() % 8U;
    return settings;
}

struct Painted {
    int32_t result = 0, code = 0;
    Bytes pixels;

    bool operator==(const Painted& other) const {
        return result == other.result && code == other.code && pixels == other.pixels;
    }
};

class MemoryWindow {
  public:
    explicit MemoryWindow(const Settings& settings)
        : window_(CreateMemoryWindow(settings.width, settings.height, settings.barSize)),
          context_(GetDC(window_)) {
        for (const int32_t bar : {SB_HORZ, SB_VERT}) {
            const auto [least, most, position] = settings.bars[static_cast<size_t>(bar)];
            SetScrollRange(window_, bar, least, most, 0);
            SetScrollPos(window_, bar, position, 0);
        }
    }
    ~MemoryWindow() {
        ReleaseDC(window_, context_);
        DestroyWindow(window_);
    }
    MemoryWindow(const MemoryWindow&) = delete;
    MemoryWindow& operator=(const MemoryWindow&) = delete;

    [[nodiscard]] WindowHandle Window() const { return window_; }
    [[nodiscard]] DeviceContextHandle Context() const { return context_; }

    // Draws something over the whole window.
    void Soil() const {
        const OwnedObject pattern(CreateSolidBrush(0x00A55A3C));
        const GraphicsHandle old = SelectObject(context_, pattern.Get());
        PatBlt(context_, 0, 0, 0x7FFF, 0x7FFF, PATCOPY);
        SelectObject(context_, old);
    }

    // Those of the client area alone: behind it a bar may lie in the same byte.
    [[nodiscard]] Bytes Pixels() const {
        WindowPixels pixels{};
        Require(GetWindowPixels(window_, &pixels) == 1, "a window has pixels");
        const size_t rowBits = static_cast<size_t>(pixels.Width) * pixels.BitsPerPixel;
        Bytes bytes;
        for (int32_t y = 0; y < pixels.Height; y++) {
            const uint8_t* row = pixels.Bits + static_cast<size_t>(y) * pixels.RowBytes;
            bytes.insert(bytes.end(), row, row + (rowBits + 7) / 8);
            if (rowBits % 8 != 0) bytes.back() &= static_cast<uint8_t>(0xFF00 >> rowBits % 8);
        }
        return bytes;
    }

  private:
    WindowHandle window_;
    DeviceContextHandle context_;
};

void CheckBars(const MemoryWindow& window, uint32_t flags) {
    for (const int32_t bar : {SB_HORZ, SB_VERT}) {
        if (IsScrollBarShown(window.Window(), bar) == 1) {
            Require((flags & VIEW_FIT) == 0, "a view that fits has no bars");
            continue;
        }
        int32_t least = 0, most = 0;
        GetScrollRange(window.Window(), bar, &least, &most);
        const int32_t rest = std::clamp(0, std::min(least, most), std::max(least, most));
        Require(GetScrollPos(window.Window(), bar) == rest, "a hidden bar is at 0");
    }
}

Painted Paint(const std::string& path, const Settings& settings, bool soiled) {
    const MemoryWindow window(settings);
    if (soiled) window.Soil();
    const Bytes before = window.Pixels();
    Painted painted;
    RECT size{};
    const int32_t sized =
        GetScreenViewSize(settings.format, window.Window(), window.Context(), path.c_str(),
                          settings.image, settings.Zoom(), settings.flags, &size);
    Require(window.Pixels() == before, "asking for the size paints nothing");
    painted.result =
        DecompressToScreen(settings.format, window.Window(), window.Context(), path.c_str(),
                           settings.image, settings.Zoom(), settings.flags);
    painted.code = TiffError();
    if (settings.format <= SCREEN_FORMAT_CALS) RequireTold(painted.result, painted.code);
    painted.pixels = window.Pixels();
    if (painted.result == 0) return painted;
    Require(sized == 1, "what can be painted has a size");
    CheckBars(window, settings.flags);
    Require(GetUpdateRect(window.Window(), nullptr, 0) == 0, "a painted window is valid");
    return painted;
}

// A whole picture hides all that was there before.
void PaintTwice(const std::string& path, const Settings& settings) {
    const Painted first = Paint(path, settings, false);
    const Painted again = Paint(path, settings, first.result == 1);
    Require(first == again, "a picture looks the same each time");
}

struct Stored {
    uint16_t bits = 0;
    Bytes rows;
};

Stored RowsOf(BitmapHandle bitmap) {
    BITMAP record{};
    Require(GetObjectA(bitmap, sizeof record, &record) == sizeof record, "a bitmap tells its size");
    Bytes rows(static_cast<size_t>(record.bmWidthBytes) * static_cast<size_t>(record.bmHeight));
    GetBitmapBits(bitmap, static_cast<int32_t>(rows.size()), rows.data());
    return {record.bmBitsPixel, std::move(rows)};
}

// CCITT compressions make two colours of any.
void LoadAndStore(const std::string& path, const Settings& settings) {
    const OwnedObject bitmap(LoadTiffIntoBitmap(path.c_str(), settings.image, 0));
    RequireTold(bitmap ? 1 : 0, bitmap ? TIFF_SUCCESS : TiffError());
    const OwnedObject palette(GetTiffImagePalette(path.c_str(), settings.image));
    if (!bitmap) return;
    const std::string stored = test::NewPath("stored.tif");
    const int32_t result =
        SaveBitmapInTiffFile(stored.c_str(), bitmap.Get(), settings.compression, 0);
    RequireTold(result, TiffError());
    if (result == 0) return;
    const OwnedObject again(LoadTiffIntoBitmap(stored.c_str(), 0, 0));
    Require(static_cast<bool>(again), "what was stored is loaded again");
    const Stored before = RowsOf(bitmap.Get()), after = RowsOf(again.Get());
    const bool isCcitt = settings.compression >= TIFF_SAVE_CCITT_1D;
    Require(isCcitt ? after.bits == 1 : after.bits == before.bits, "it has the format asked for");
    Require(after.bits != before.bits || after.rows == before.rows, "it has the same pixels");
}

int32_t ShowNothing(WindowHandle /*owner*/, const char* /*text*/, const char* /*caption*/,
                    uint32_t /*style*/) {
    return IDOK;
}

void RunAll(const std::string& path, const Settings& settings) {
    const DesktopDriver desktop = {ShowNothing, nullptr, nullptr};
    SetDesktopDriver(&desktop);
    SetTiffSizeLimits(kMostLinePixels, kMostPictureLines);
    SetDisplay(&settings.display);
    PaintTwice(path, settings);
    LoadAndStore(path, settings);
    SetDisplay(nullptr);
}

}  // namespace
}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim;
    fuzz::Input input(data, size);
    const fuzz::Settings settings = fuzz::ReadSettings(input);
    const std::vector<uint32_t> before = test::Live();
    fuzz::RunAll(test::FileOf(input.Rest(), "picture.tif"), settings);
    fuzz::Require(test::Live() == before && LiveWindows() == 0, "all is given back");
    return 0;
}
