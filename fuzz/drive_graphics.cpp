// The calls of graphics and windows in any order, with any arguments, over a few objects that are
// there from the start and those that the calls make. Handles are live, stale, of another kind, or
// no handle at all; every buffer is just as large as the call has a right to.
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "fuzz/checks.h"
#include "fuzz/graphics_world.h"
#include "platform/graphics/device_contexts.h"
#include "platform/windows/windows.h"
#include "support/shown_colors.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {
namespace {

constexpr int kMostCalls = 64;
constexpr int32_t kMostWindowSide = 32767;
constexpr size_t kDisplayColors = 256;

// ---- Calls of numbers alone: each argument is picked in its turn. ----

template <typename Result, typename... Arguments, size_t... kIndexes>
Result Call(Result (*call)(Arguments...), const std::array<uint32_t, sizeof...(Arguments)>& values,
            std::index_sequence<kIndexes...> /*indexes*/) {
    return call(static_cast<Arguments>(values[kIndexes])...);
}

template <auto kCall, Kind... kKinds>
auto Picked(World& world) {
    const std::array<uint32_t, sizeof...(kKinds)> values = {world.Pick(kKinds)...};
    return Call(kCall, values, std::make_index_sequence<sizeof...(kKinds)>());
}

template <auto kCall, Kind... kKinds>
void Given(World& world) {
    Picked<kCall, kKinds...>(world);
}

template <auto kCall, Kind... kKinds>
void Told(World& world) {
    const auto result = Picked<kCall, kKinds...>(world);
    Require(result == 0 || result == 1, "the result is 1 or 0");
}

// Draws twice from the same pixels on, the second time without what the context keeps from call to
// call, and both times alike.
template <typename Draw>
void DrawTwice(DeviceContext* context, const std::shared_ptr<Surface>& surface, const Draw& draw) {
    if (context == nullptr || surface == nullptr) return draw();
    const size_t size = static_cast<size_t>(surface->height) * surface->stride;
    uint8_t* pixels = surface->pixels.get();
    const Bytes before(pixels, pixels + size);
    draw();
    const Bytes once(pixels, pixels + size);
    std::ranges::copy(before, pixels);
    context->rows.reset();
    context->dibs.reset();
    draw();
    Require(std::equal(once.begin(), once.end(), pixels), "a call doesn't depend on those before");
}

template <typename Draw>
void DrawTwice(DeviceContextHandle to, const Draw& draw) {
    DeviceContext* context = FindContext(to);
    DrawTwice(context, context != nullptr ? context->surface : nullptr, draw);
}

template <auto kCall, Kind... kKinds>
void Drawn(World& world) {
    const std::array<uint32_t, sizeof...(kKinds)> values = {world.Pick(kKinds)...};
    DrawTwice(values.front(), [&] {
        const int32_t result = Call(kCall, values, std::make_index_sequence<sizeof...(kKinds)>());
        Require(result == 0 || result == 1, "the result is 1 or 0");
    });
}

template <std::vector<uint32_t> World::*kMade, auto kCall, Kind... kKinds>
void Made(World& world) {
    world.Keep(world.*kMade, Picked<kCall, kKinds...>(world));
}

// ---- Bitmaps. ----

Bytes RowsOf(BitmapHandle bitmap) {
    BITMAP record{};
    if (GetObjectA(bitmap, sizeof record, &record) != sizeof record) return {};
    Bytes rows(static_cast<size_t>(record.bmWidthBytes) * static_cast<size_t>(record.bmHeight));
    const auto bytes = static_cast<int32_t>(rows.size());
    Require(GetBitmapBits(bitmap, bytes, rows.data()) == bytes, "a bitmap gives its rows");
    return rows;
}

void MakeBitmap(World& world) {
    const uint32_t bits = PickDepth(world);
    const Size size = PickSize(world, bits);
    const bool served = IsServed(size, bits);
    const Bytes rows = world.Noise(served ? static_cast<size_t>(size.Bytes(bits, 16)) : 1);
    const BitmapHandle bitmap = CreateBitmap(size.width, size.height, 1, bits, rows.data());
    Require((bitmap != 0) == served, "a bitmap of any sensible size is made, and no other");
    Require(!served || RowsOf(bitmap) == rows, "it has the rows that it was given");
    world.Keep(world.objects, bitmap);
    const uint32_t planes = world.Long(), depth = world.Long();
    if (uint64_t{planes} * depth > kTrueColorBits)
        Require(CreateBitmap(1, 1, planes, depth, nullptr) == 0, "odd depths are refused");
}

void MakeCompatibleBitmap(World& world) {
    const DeviceContextHandle context = world.Pick(Kind::Context);
    const Size size = PickSize(world);
    world.Keep(world.objects, CreateCompatibleBitmap(context, size.width, size.height));
}

void PutRows(World& world) {
    const BitmapHandle bitmap = world.Pick(Kind::Object);
    const Bytes before = RowsOf(bitmap);
    const uint32_t bytes = world.Seldom() ? world.Long() : world.Word();
    const Bytes rows = world.Noise(std::min<size_t>(bytes, before.size()));
    const int32_t count = SetBitmapBits(bitmap, bytes, rows.data());
    if (before.empty()) return;  // no bitmap, or an empty vector's null
    const Bytes after = RowsOf(bitmap);
    Require(count == static_cast<int32_t>(rows.size()), "as many bytes as there are are taken");
    Require(std::equal(rows.begin(), rows.end(), after.begin()), "they are the bitmap's then");
    Require(std::equal(before.begin() + count, before.end(), after.begin() + count),
            "the others stay");
}

void TellOfObject(World& world) {
    const GraphicsHandle object = world.Pick(Kind::Object);
    const int32_t bytes = world.Place() % 100;
    Bytes record(static_cast<size_t>(std::max(bytes, 0)));
    Require(GetObjectA(object, bytes, record.empty() ? nullptr : record.data()) <=
                static_cast<int32_t>(sizeof(BITMAP)),
            "no more is told than there is");
}

// ---- DIBs. ----

template <auto kCall>
void MoveDibRows(World& world) {
    const DeviceContextHandle context = world.Pick(Kind::Context);
    const BitmapHandle bitmap = world.Pick(Kind::Object);
    const uint32_t use = PickUse(world);
    Dib dib = MakeHeader(world, use);
    const Band band = PickBand(world, dib);
    AddRows(world, dib, band.rows);
    Bytes once;
    DrawTwice(FindContext(context), FindObject(bitmap).surface, [&] {
        const int32_t moved =
            kCall(context, bitmap, band.start, band.lines, dib.bits.data(), dib.Info(), use);
        Require(moved >= 0 && moved <= band.rows, "no more rows are moved than there are");
        Require(once.empty() || once == dib.bits, "rows are the same each time");
        once = dib.bits;
    });
}

void TellOfBitmap(World& world) {
    const DeviceContextHandle context = world.Pick(Kind::Context);
    const BitmapHandle bitmap = world.Pick(Kind::Object);
    Dib dib = MakeHeader(world, DIB_RGB_COLORS);
    dib.info.resize(sizeof dib.header);
    dib.info.shrink_to_fit();
    const int32_t rows = GetDIBits(context, bitmap, 0, 0, nullptr, dib.Info(), DIB_RGB_COLORS);
    Require(rows >= 0, "a number of rows");
}

void MakeDibBitmap(World& world) {
    const DeviceContextHandle context = world.Pick(Kind::Context);
    const uint32_t use = PickUse(world);
    const Size size = PickSize(world);
    BITMAPINFOHEADER header{};
    header.biSize = world.Seldom() ? world.Long() : sizeof header;
    header.biWidth = size.width;
    header.biHeight = size.height;
    Dib dib = MakeHeader(world, use);
    const bool isRead = dib.isSound && IsServed(size, 1);
    AddRows(world, dib, isRead ? std::min(size.height, dib.header.biHeight) : 0);
    const uint32_t init = world.Byte() % 8U;
    world.Keep(world.objects,
               CreateDIBitmap(context, &header, init, dib.bits.data(), dib.Info(), use));
}

void StretchDib(World& world) {
    const DeviceContextHandle context = world.Pick(Kind::Context);
    const uint32_t use = PickUse(world), operation = world.Pick(Kind::Operation);
    std::array<int32_t, 8> places{};
    for (int32_t& place : places)
        place = world.Place();
    Dib dib = MakeHeader(world, use);
    const int64_t rows = dib.isSound ? dib.header.biHeight : 0;
    const bool fits = rows == 0 || rows <= kMostBytes / dib.Stride();
    if (fits) AddRows(world, dib, rows);
    const void* bits = fits ? dib.bits.data() : nullptr;
    DrawTwice(context, [&] {
        const int32_t drawn =
            StretchDIBits(context, places[0], places[1], places[2], places[3], places[4], places[5],
                          places[6], places[7], bits, dib.Info(), use, operation);
        Require(drawn == 0 || drawn == dib.header.biHeight, "the result is the DIB's rows");
    });
}

// ---- Palettes and colours. ----

void MakePalette(World& world) {
    const uint32_t count = world.Seldom() ? world.Word() : world.Byte();
    Bytes bytes = world.Noise(4 + size_t{count} * 4);
    const std::array<uint16_t, 2> start = {static_cast<uint16_t>(world.Seldom() ? 0 : 0x300),
                                           static_cast<uint16_t>(count)};
    std::memcpy(bytes.data(), start.data(), 4);
    world.Keep(world.objects, CreatePalette(reinterpret_cast<const LOGPALETTE*>(bytes.data())));
}

template <auto kCall, Kind kKind>
void ReadColors(World& world) {
    const uint32_t handle = world.Pick(kKind);
    const auto first = static_cast<uint32_t>(world.Place());
    const auto count = static_cast<uint32_t>(world.Place());
    std::vector<PALETTEENTRY> entries(std::min<uint32_t>(count, 0xFFFF));
    if (entries.empty()) entries.reserve(1);
    Require(kCall(handle, first, count, entries.data()) <= entries.size(),
            "no more entries are given than asked for");
}

void ChangeDisplay(World& world) {
    constexpr std::array<int32_t, 3> depths = {1, 8, 24};
    DisplaySettings display = {world.Place(), world.Place(), depths[world.Byte() % 3]};
    if (world.Seldom()) display.BitsPerPixel = world.Place();
    SetDisplay(&display);
    if (!world.Seldom()) return;
    const Bytes colors = world.Noise(kDisplayColors * sizeof(PALETTEENTRY));
    SetDisplayPalette(reinterpret_cast<const PALETTEENTRY*>(colors.data()));
}

// ---- Places. ----

template <auto kCall>
void SetPlace(World& world) {
    const DeviceContextHandle context = world.Pick(Kind::Context);
    const POINT place = {world.Place(), world.Place()};
    POINT before{};
    kCall(context, place.x, place.y, world.Seldom() ? nullptr : &before);
}

template <auto kCall>
void MapPlaces(World& world) {
    const DeviceContextHandle context = world.Pick(Kind::Context);
    const int32_t count = int32_t{world.Byte()} - 64;  // now and then below 0
    std::vector<POINT> points(static_cast<size_t>(std::max(count, 0)));
    for (POINT& point : points)
        point = {world.Place(), world.Place()};
    kCall(context, points.data(), count);
}

void JoinRects(World& world) {
    RECT a = PickRect(world), both{};
    const RECT b = PickRect(world);
    const int32_t meet = IntersectRect(&both, &a, &b);
    const bool inBoth =
        both.left >= std::max(a.left, b.left) && both.right <= std::min(a.right, b.right) &&
        both.top >= std::max(a.top, b.top) && both.bottom <= std::min(a.bottom, b.bottom);
    Require(meet == 1 ? inBoth && IsRectEmpty(&both) == 0 : IsRectEmpty(&both) == 1,
            "what two rectangles have in common lies in both");
    OffsetRect(&a, b.left, b.top);
    CopyRect(&both, &a);
    Require(IsRectEmpty(&both) == IsRectEmpty(&a), "a copy is the same");
}

// ---- Windows. ----

Size PickWindowSize(World& world) {
    const Size size = {PickSide(world), PickSide(world)};
    const bool isRefused = std::min(size.width, size.height) < 1 ||
                           std::max(size.width, size.height) > kMostWindowSide;
    return isRefused ? size : Size{1 + size.width % 400, 1 + size.height % 400};
}

bool IsWindowSize(const Size& size) {
    return std::min(size.width, size.height) > 0 &&
           std::max(size.width, size.height) <= kMostWindowSide;
}

void MakeWindow(World& world) {
    const Size size = PickWindowSize(world);
    const int32_t barSize = world.Place();
    const WindowHandle window = CreateMemoryWindow(size.width, size.height, barSize);
    Require(window == 0 || IsWindowSize(size), "windows of odd sizes are refused");
    world.Keep(world.windows, window);
}

void ChangeWindowSize(World& world) {
    const WindowHandle window = world.Pick(Kind::Window);
    const Size size = PickWindowSize(world);
    Require(ResizeWindow(window, size.width, size.height) == 0 || IsWindowSize(size),
            "windows keep a sensible size");
}

void ScrollWindow(World& world) {
    const WindowHandle window = world.Pick(Kind::Window);
    const auto bar = static_cast<int32_t>(world.Byte() % 4);
    const std::array<int32_t, 3> figures = {world.Place(), world.Place(), world.Place()};
    SetScrollRange(window, bar, figures[0], figures[1], 1);
    SetScrollPos(window, bar, figures[2], 0);
    int32_t least = 0, most = 0;
    if (GetScrollRange(window, bar, &least, &most) != 1) return;
    const int32_t position = GetScrollPos(window, bar);
    Require(least > most || (position >= least && position <= most),
            "a position is within its range");
}

void MarkWindow(World& world) {
    const WindowHandle window = world.Pick(Kind::Window);
    const RECT rect = PickRect(world);
    const uint8_t choice = world.Byte();
    const RECT* area = choice % 4 == 0 ? nullptr : &rect;
    if (choice % 2 == 0)
        InvalidateRect(window, area, choice & 8);
    else
        ValidateRect(window, area);
}

void SetBackground(World& world) {
    const WindowHandle window = world.Pick(Kind::Window);
    SetClassLongA(window, GCL_HBRBACKGROUND, world.Pick(Kind::Object));
}

// What a host sees of a window: it has the pixels that it tells of, and no more is to be painted.
void LookAtWindow(WindowHandle window) {
    RECT client{}, update{};
    WindowPixels pixels{};
    if (GetClientRect(window, &client) == 0) return;
    Require(client.left == 0 && client.top == 0 && client.right >= 0 && client.bottom >= 0,
            "a client area begins at the origin");
    if (GetUpdateRect(window, &update, 0) == 1)
        Require(update.left >= 0 && update.top >= 0 && update.left < update.right &&
                    update.top < update.bottom && update.right <= client.right &&
                    update.bottom <= client.bottom,
                "what is to be painted lies in the client area");
    if (GetWindowPixels(window, &pixels) == 0) return;
    Require(pixels.Width == client.right && pixels.Height == client.bottom,
            "the pixels are the client area's");
    const size_t rowBytes = (static_cast<size_t>(pixels.Width) * pixels.BitsPerPixel + 7) / 8;
    Require(rowBytes <= pixels.RowBytes, "rows lie one behind the other");
    Bytes row(rowBytes);
    for (int32_t y = 0; y < pixels.Height; y++)
        std::copy_n(pixels.Bits + static_cast<size_t>(y) * pixels.RowBytes, rowBytes, row.begin());
}

// ---- The line functions that read a record of the caller's. ----

template <auto kCall>
void FlushCalsLine(World& world) {
    CalsScreenContext context{};
    context.LineBitmap = world.Pick(Kind::Object);
    context.DeviceContext = world.Pick(Kind::Context);
    context.LineDC = world.Pick(Kind::Context);
    for (RECT* rect :
         {&context.ImageRect, &context.DestRect, &context.SourceRect, &context.PaintRect})
        *rect = PickRect(world);
    context.RowPixels = world.Byte();
    context.LineBytes = context.RowPixels * 2;
    context.RasterOp = world.Pick(Kind::Operation);
    Bytes line = world.Noise(context.LineBytes);
    Bytes scratch(size_t{context.RowPixels} * 4);
    context.Scratch = scratch.data();
    const auto lineNumber = static_cast<uint32_t>(world.Place());
    DrawTwice(context.DeviceContext, [&] {
        Require(kCall(line.data(), lineNumber, reinterpret_cast<uintptr_t>(&context)) == 0,
                "no line stops a decoder");
    });
}

using Action = void (*)(World&);
using enum Kind;

constexpr Action kActions[] = {
    Drawn<BitBlt, Context, Place, Place, Place, Place, Context, Place, Place, Operation>,
    Drawn<StretchBlt, Context, Place, Place, Place, Place, Context, Place, Place, Place, Place,
          Operation>,
    Drawn<PatBlt, Context, Place, Place, Place, Place, Operation>,
    StretchDib,
    MoveDibRows<SetDIBits>,
    MoveDibRows<GetDIBits>,
    TellOfBitmap,
    MakeBitmap,
    MakeCompatibleBitmap,
    MakeDibBitmap,
    MakePalette,
    Made<&World::objects, CreateSolidBrush, Any>,
    PutRows,
    TellOfObject,
    Told<DeleteObject, Object>,
    Made<&World::contexts, GetDC, Window>,
    Told<ReleaseDC, Window, Context>,
    Made<&World::contexts, CreateCompatibleDC, Context>,
    Told<DeleteDC, Context>,
    Given<SelectObject, Context, Object>,
    Given<SelectPalette, Context, Object, Small>,
    Given<RealizePalette, Context>,
    Given<GetNearestColor, Context, Any>,
    ReadColors<GetPaletteEntries, Object>,
    ReadColors<GetSystemPaletteEntries, Context>,
    ChangeDisplay,
    Given<GetDeviceCaps, Context, Any>,
    Given<SetMapMode, Context, Small>,
    SetPlace<SetWindowOrgEx>,
    SetPlace<SetWindowExtEx>,
    SetPlace<SetViewportOrgEx>,
    SetPlace<SetViewportExtEx>,
    MapPlaces<DPtoLP>,
    MapPlaces<LPtoDP>,
    JoinRects,
    Given<ExcludeClipRect, Context, Place, Place, Place, Place>,
    Given<SetStretchBltMode, Context, Small>,
    Given<SetTextColor, Context, Any>,
    Given<SetBkColor, Context, Any>,
    MakeWindow,
    Told<DestroyWindow, Window>,
    ChangeWindowSize,
    ScrollWindow,
    MarkWindow,
    Told<ShowScrollBar, Window, Small, Small>,
    Told<IsScrollBarShown, Window, Small>,
    Given<SetClassLongA, Window, Place, Object>,
    SetBackground,
    Given<GetClassLongA, Window, Place>,
    Given<SetActiveWindow, Window>,
    Told<OpenClipboard, Window>,
    [](World& world) { CloseClipboard(), EmptyClipboard(), OpenClipboard(world.Pick(Window)); },
    [](World& world) { SetClipboardData(CF_BITMAP, world.Pick(Object)); },
    Given<SetClipboardData, Small, Object>,
    Made<&World::objects, GetClipboardData, Small>,
    Told<IsClipboardFormatAvailable, Small>,
    FlushCalsLine<FlushCALSLineToScreen>,
    FlushCalsLine<FlushCALS90LineToScreen>,
    FlushCalsLine<FlushCALS180LineToScreen>,
    FlushCalsLine<FlushCALS270LineToScreen>};

// A window, and bitmaps in contexts of memory, so that short inputs draw something.
void Furnish(World& world) {
    world.Keep(world.windows, CreateMemoryWindow(60, 40, 7));
    for (const WindowHandle window : world.windows)
        world.Keep(world.contexts, GetDC(window));
    for (const uint32_t bits : {1U, 4U, 8U, kTrueColorBits}) {
        world.Keep(world.objects, CreateBitmap(50, 30, 1, bits, nullptr));
        world.Keep(world.contexts, CreateCompatibleDC(0));
        SelectObject(world.contexts.back(), world.objects.back());
    }
    world.Keep(world.objects, CreateSolidBrush(0x123456));
}

void Drive(World& world) {
    Furnish(world);
    for (int calls = 0; calls < kMostCalls && !world.IsAtEnd(); calls++)
        kActions[world.Byte() % std::size(kActions)](world);
    for (const WindowHandle window : world.windows)
        LookAtWindow(window);
}

}  // namespace
}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim;
    const std::vector<uint32_t> before = test::Live();
    {
        fuzz::World world(data, size);
        fuzz::Drive(world);
    }
    fuzz::Require(test::Live() == before && LiveWindows() == 0, "all is given back");
    return 0;
}
