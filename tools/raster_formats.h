// The raster formats that are read beside TIFF. A new one is a file with an `Open` function and a
// row in the table.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "page_source.h"

namespace vellim::tool {

// A picture that gives its lines in one of two ways.
struct RasterPage {
    PageInfo info;
    std::unique_ptr<void, void (*)(void*)> state{nullptr, nullptr};
    // The next line, of RowBytes bytes. False, with the reason in `why`, if there is none.
    bool (*next)(void* state, uint8_t* row, std::string& why) = nullptr;
    // Or: all lines, from the top.
    LinesEnd (*push)(void* state, const LineTaker& taker) = nullptr;
};

template <auto next, typename State>
RasterPage MakeRasterPage(PageInfo info, std::unique_ptr<State> state) {
    RasterPage page;
    page.info = std::move(info);
    page.state = {state.release(), [](void* p) { delete static_cast<State*>(p); }};
    page.next = [](void* p, uint8_t* row, std::string& why) {
        return next(*static_cast<State*>(p), row, why);
    };
    return page;
}

template <auto push, typename State>
RasterPage MakePushingPage(PageInfo info, std::unique_ptr<State> state) {
    RasterPage page;
    page.info = std::move(info);
    page.state = {state.release(), [](void* p) { delete static_cast<State*>(p); }};
    page.push = [](void* p, const LineTaker& taker) {
        return push(*static_cast<State*>(p), taker);
    };
    return page;
}

struct RasterFormat {
    std::string_view name;
    bool (*recognises)(std::string_view head);
    bool document;  // a picture that can't be had leaves the others alone
    // Where the pictures of a file begin; null: one, at its start.
    std::vector<uint64_t> (*find)(int descriptor, Beside& beside);
    // The picture that begins at `offset`. Nothing, with the reason in `why`, if it can't be read.
    std::optional<RasterPage> (*open)(int descriptor, uint64_t offset, std::string& why);
};

// The longest beginning that `recognises` looks at.
constexpr size_t kHeadBytes = 2048;

// The beginning of a file, up to that length.
std::string ReadHead(int descriptor);

// The format of a file that begins with `head`; null if it is none of these.
const RasterFormat* RecogniseFormat(std::string_view head);

// Whether a picture of such sides is within the library's limits (SetTiffSizeLimits), which hold
// for all formats. If not, the reason is in `why`.
bool IsServedSize(uint64_t width, uint64_t height, std::string& why);

// Makes a palette that is nothing but a row of greys grey.
void SimplifyPalette(PageInfo& info);

// Takes pixels a metre as the page's resolution, or as the shape of its pixels alone if they aren't
// `absolute`. A 0 means that nothing is known.
void SetPelsPerMetre(PageInfo& info, uint32_t x, uint32_t y, bool absolute);

std::optional<RasterPage> OpenPng(int descriptor, uint64_t offset, std::string& why);
std::optional<RasterPage> OpenBmp(int descriptor, uint64_t offset, std::string& why);
std::optional<RasterPage> OpenPnm(int descriptor, uint64_t offset, std::string& why);
std::optional<RasterPage> OpenCals(int descriptor, uint64_t offset, std::string& why);
std::optional<RasterPage> OpenIoca(int descriptor, uint64_t offset, std::string& why);
std::optional<RasterPage> OpenModca(int descriptor, uint64_t offset, std::string& why);

std::vector<uint64_t> FindPnmPictures(int descriptor, Beside& beside);
std::vector<uint64_t> FindIocaImages(int descriptor, Beside& beside);
std::vector<uint64_t> FindModcaImages(int descriptor, Beside& beside);

bool IsCals(std::string_view head);
bool IsIoca(std::string_view head);
bool IsModca(std::string_view head);

}  // namespace vellim::tool
