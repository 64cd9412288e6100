// All lengths of a request are in hundredths of an inch, which no paper or resolution of faxes
// loses anything to speak of by.
//
// The page maker makes letters as high as the vertical resolution tells, and as wide as the font
// has them, which on a fax of 204 x 98 dots is half as wide as they should be. The width to ask for
// is that of a font made for the horizontal resolution.
#include "fax_page.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "document.h"
#include "messages.h"
#include "pixel_format.h"
#include "vellim/decode.h"
#include "vellim/failures.h"
#include "vellim/load.h"

namespace vellim::tool {
namespace {

constexpr double kMillimetresPerHundredth = 0.254;
constexpr uint32_t kHundredthsPerInch = 100;
constexpr int32_t kPointsPerInch = 72;
constexpr uint32_t kTabColumns = 8;  // from stop to stop, unless others are asked for

uint32_t Hundredths(double millimetres) {
    return static_cast<uint32_t>(std::lround(millimetres / kMillimetresPerHundredth));
}

// As the page maker does it.
uint32_t Pixels(uint32_t hundredths, uint32_t resolution) {
    return static_cast<uint32_t>(uint64_t{hundredths} * resolution / kHundredthsPerInch);
}

// ---- Letters. ----

LOGFONT FontFor(const FaxOptions& options, uint32_t resolution) {
    LOGFONT font = {};
    font.lfHeight = -MulDiv(options.pointSize, static_cast<int32_t>(resolution), kPointsPerInch);
    font.lfWeight = options.bold ? FW_BOLD : FW_NORMAL;
    font.lfItalic = options.italic ? 1 : 0;
    font.lfCharSet = DEFAULT_CHARSET;
    options.font.copy(font.lfFaceName, sizeof font.lfFaceName - 1);
    return font;
}

// 0, the font's own, where no more is known.
int32_t LetterWidth(const FaxOptions& options, uint32_t xResolution, uint32_t yResolution) {
    TEXTMETRIC metrics = {};
    if (xResolution == yResolution) return 0;
    const FontContext context(FontFor(options, xResolution));
    return context && GetTextMetricsA(context.Get(), &metrics) != 0 ? metrics.tmAveCharWidth : 0;
}

bool MeasureLetters(FaxJob& job) {
    const FontContext context(job.font);
    SIZE size = {};
    if (!context || GetTextExtentPointA(context.Get(), "M", 1, &size) == 0) return false;
    job.letters.height = static_cast<uint32_t>(std::max(size.cy, 0));
    job.letters.step =
        job.letters.height + Pixels(job.request.LineSpacing, job.request.YResolution);
    for (size_t i = 0; i < FaxLetters::kCount; ++i) {
        const auto letter = static_cast<char>(FaxLetters::kFirst + static_cast<char>(i));
        if (GetTextExtentPointA(context.Get(), &letter, 1, &size) == 0) return false;
        job.letters.widths[i] = static_cast<uint32_t>(std::max(size.cx, 0));
    }
    return true;
}

// ---- The page. ----

// The least length of so many pixels at least.
uint32_t HundredthsOf(uint32_t pixels, uint32_t resolution) {
    return static_cast<uint32_t>((uint64_t{pixels} * kHundredthsPerInch + resolution - 1) /
                                 resolution);
}

void SetTabs(const FaxOptions& options, FaxJob& job) {
    std::array<uint32_t, FAX_TAB_STOPS> stops = {};
    size_t count = std::min(options.tabs.size(), stops.size());
    for (size_t i = 0; i < count; ++i)
        stops[i] = Hundredths(options.tabs[i]);
    if (count == 0) {
        count = stops.size();
        const uint32_t step = kTabColumns * job.letters.WidthOf('0');
        for (uint32_t i = 0; i < count; ++i)
            stops[i] = HundredthsOf((i + 1) * step, job.request.XResolution);
    }
    for (size_t i = 0; i < count; ++i) {
        job.request.TabStops[i] = stops[i];
        job.frame.tabStops.push_back(job.frame.left + Pixels(stops[i], job.request.XResolution));
    }
}

bool SetFrame(FaxJob& job) {
    const FaxPageRequest& request = job.request;
    const uint32_t width = Pixels(request.PageWidth, request.XResolution);
    const uint32_t height = Pixels(request.PageHeight, request.YResolution);
    FaxFrame& frame = job.frame;
    frame.left = Pixels(request.LeftMargin, request.XResolution);
    frame.top = Pixels(request.TopMargin, request.YResolution);
    if (frame.left >= width || frame.top >= height) return false;
    frame.right = width - frame.left;
    frame.bottom = height - frame.top;
    return HasRoom(frame, job.letters);
}

// The path by which the library can read the file: the page maker takes short ones alone.
bool NameTextFile(FaxJob& job, std::string& why) {
    if (!CreateScratchFile(job.textFile, why)) return false;
    std::string path = job.textFile.temporary;
    if (path.size() >= FAX_PATH_BYTES) {
        path = "/proc/self/fd/" + std::to_string(job.textFile.descriptor.Get());
    }
    path.copy(job.request.TextFile, FAX_PATH_BYTES - 1);
    return true;
}

// ---- The form. ----

uint32_t WholeDots(const Rational& resolution, uint32_t unit) {
    constexpr double kMost = 65535;
    return static_cast<uint32_t>(
        std::lround(std::clamp(DotsPerInch(resolution, unit), 0.0, kMost)));
}

// A form without a resolution takes what is asked for.
bool ReadFormResolution(const FaxOptions& options, FaxJob& job, std::string& why) {
    const auto document = OpenDocument(options.form, why);
    if (!document) return false;
    const LoadedImage loaded(document->File(), 0);
    if (!loaded) {
        why = document->imageCount == 0 ? "there are no images in it" : FailureInWords(TiffError());
        return false;
    }
    const auto resolution = GatherFacts(document->File(), 0).resolution;
    if (options.resolutionGiven) return true;
    if (!resolution || resolution->unit == kNoUnit) {
        why = "it has no resolution; --resolution tells it";
        return false;
    }
    job.resolution = *resolution;
    job.request.XResolution = WholeDots(resolution->x, resolution->unit);
    job.request.YResolution = WholeDots(resolution->y, resolution->unit);
    if (job.request.XResolution != 0 && job.request.YResolution != 0) return true;
    why = "its resolutions make no sense; --resolution tells others";
    return false;
}

bool ReadForm(const FaxOptions& options, FaxJob& job, std::string& why) {
    if (IsPlace(options.form)) {
        why = "a form is a TIFF file on a disk";
        return false;
    }
    if (!ReadFormResolution(options, job, why)) return false;
    const OwnedObject bitmap(LoadTiffIntoBitmap(options.form.c_str(), 0, 0));
    FaxForm form;
    if (!bitmap || TiffError() != TIFF_SUCCESS) {
        why = FailureInWords(TiffError());
        return false;
    }
    GetObjectA(bitmap.Get(), sizeof form.shape, &form.shape);
    form.bits.resize(static_cast<size_t>(form.shape.bmWidthBytes) *
                     static_cast<size_t>(form.shape.bmHeight));
    GetBitmapBits(bitmap.Get(), static_cast<int32_t>(form.bits.size()), form.bits.data());
    const auto hundredths = [](int32_t pixels, uint32_t resolution) {
        return static_cast<uint32_t>(uint64_t{static_cast<uint32_t>(pixels)} * kHundredthsPerInch /
                                     resolution);
    };
    job.request.PageWidth = hundredths(form.shape.bmWidth, job.request.XResolution);
    job.request.PageHeight = hundredths(form.shape.bmHeight, job.request.YResolution);
    job.form = std::move(form);
    return true;
}

// A copy of the form to be drawn on; 0 where there is none.
OwnedObject CopyForm(const FaxJob& job) {
    if (!job.form) return {};
    const BITMAP& shape = job.form->shape;
    return OwnedObject(
        CreateBitmap(shape.bmWidth, shape.bmHeight, 1, shape.bmBitsPixel, job.form->bits.data()));
}

// ---- Drawing. ----

bool WriteText(const FaxJob& job, const std::string& text, std::string& why) {
    const int file = job.textFile.descriptor.Get();
    const bool good = ftruncate(file, 0) == 0 && pwrite(file, text.data(), text.size(), 0) ==
                                                     static_cast<ssize_t>(text.size());
    if (!good) why = std::string("on the way through a temporary file: ") + std::strerror(errno);
    return good;
}

std::string ReasonOf(uint32_t code) {
    switch (code) {
        case FAX_NO_TEXT_FILE:
            return "the temporary file for the text can't be read";
        case FAX_NO_MEMORY:
            return FailureMessage(TIFF_NO_MEMORY);
        default:
            return "the page couldn't be drawn";
    }
}

}  // namespace

std::unique_ptr<FaxJob> MakeFaxJob(const FaxOptions& options, std::string& why) {
    auto job = std::make_unique<FaxJob>();
    FaxPageRequest& request = job->request;
    request.Flags = static_cast<uint16_t>(FAX_HUNDREDTHS | (options.italic ? FAX_ITALIC : 0) |
                                          (options.bold ? FAX_BOLD : 0));
    request.PageWidth = Hundredths(options.paperWidth);
    request.PageHeight = Hundredths(options.paperHeight);
    request.LeftMargin = Hundredths(options.sideMargin);
    request.TopMargin = Hundredths(options.topMargin);
    request.LineSpacing = Hundredths(options.spacing);
    request.PointSize = options.pointSize;
    request.XResolution = options.xResolution;
    request.YResolution = options.yResolution;
    options.font.copy(request.FontName, FAX_FONT_NAME_BYTES - 1);
    job->resolution = {{options.xResolution, 1}, {options.yResolution, 1}, kInch};
    if (!options.form.empty() && !ReadForm(options, *job, why)) return nullptr;

    job->font = FontFor(options, request.YResolution);
    job->font.lfWidth = LetterWidth(options, request.XResolution, request.YResolution);
    request.Font = &job->font;
    if (!MeasureLetters(*job)) {
        why = FailureMessage(TIFF_NO_MEMORY);
    } else if (!SetFrame(*job)) {
        why = "the margins leave no room for a letter of that size";
    } else if (NameTextFile(*job, why)) {
        SetTabs(options, *job);
        return job;
    }
    return nullptr;
}

OwnedObject DrawFaxPage(FaxJob& job, const std::string& text, std::string& why) {
    if (!WriteText(job, text, why)) return {};
    OwnedObject form = CopyForm(job);
    if (job.form && !form) {
        why = FailureMessage(TIFF_NO_MEMORY);
        return {};
    }
    BitmapHandle page = 0;
    uint32_t code = FAX_DONE;
    CreateFaxPageFromASCII(&job.request, 1, &page, FAX_PAGE_BITMAP, form.Get(), &code);
    OwnedObject drawn(page == form.Get() ? form.Release() : page);
    if (code == FAX_DONE && drawn) return drawn;
    why = ReasonOf(code);
    return {};
}

Picture DescribeBitmap(const BITMAP& bitmap) {
    Picture picture;
    picture.width = static_cast<uint32_t>(bitmap.bmWidth);
    picture.height = static_cast<uint32_t>(bitmap.bmHeight);
    picture.type = bitmap.bmBitsPixel == 1 ? kBilevel : kRgb;
    return picture;
}

bool PutBitmap(BitmapHandle bitmap, const LineSink& lines, std::string& why) {
    BITMAP shape = {};
    GetObjectA(bitmap, sizeof shape, &shape);
    const auto stride = static_cast<size_t>(shape.bmWidthBytes);
    std::vector<uint8_t> bits(stride * static_cast<size_t>(shape.bmHeight));
    const auto bytes = static_cast<int32_t>(bits.size());
    if (bits.empty() || GetBitmapBits(bitmap, bytes, bits.data()) != bytes) {
        why = FailureMessage(TIFF_NO_MEMORY);
        return false;
    }
    const Picture picture = DescribeBitmap(shape);
    for (size_t at = 0; at < bits.size(); at += stride) {
        uint8_t* const row = bits.data() + at;
        NormaliseLine(row, picture.width, picture.type, false);
        for (size_t i = 0; picture.type == kRgb && i + 2 < stride; i += 3)
            std::swap(row[i], row[i + 2]);  // blue first in a bitmap
        if (!lines.Put(row)) return false;
    }
    return true;
}

}  // namespace vellim::tool
