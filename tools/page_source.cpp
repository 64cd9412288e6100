// What can't be sought in (a pipe, a device) is spooled first, so that every reader works on a
// regular file. TIFF pages push their lines out of the decoder; raster pages are asked for them.
#include "page_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "carried_tags.h"
#include "coded_page.h"
#include "losses.h"
#include "messages.h"
#include "passing_file.h"
#include "raster_formats.h"
#include "stored_picture.h"
#include "vellim/decode.h"
#include "vellim/failures.h"

namespace vellim::tool {

struct SourcePage {
    PageInfo info;
    TiffFileHandle file = 0;  // 0: it is a raster page
    int32_t image = 0;
    std::unique_ptr<LoadedImage> tags;
    RasterPage raster;
};

namespace {

OwnedDescriptor OpenInput(const std::string& path, std::string& why) {
    OwnedDescriptor descriptor(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                           : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat status = {};
    if (!descriptor || fstat(descriptor.Get(), &status) != 0) {
        why = std::strerror(errno);
        return {};
    }
    if (S_ISDIR(status.st_mode)) {
        why = std::strerror(EISDIR);
        return {};
    }
    const bool wholeFile = S_ISREG(status.st_mode) && lseek(descriptor.Get(), 0, SEEK_CUR) == 0;
    return wholeFile ? std::move(descriptor) : SpoolBytes(descriptor.Get(), why);
}

// A file that begins with the byte order alone is a damaged TIFF file, unless there is reason to
// take it for a bare stream, whose first bytes may be any.
bool IsTiff(std::string_view head, bool mayBeBare) {
    using namespace std::string_view_literals;
    const std::string_view mark = head.substr(0, 2);
    if (mark != "II" && mark != "MM") return false;
    const std::string_view number = head.substr(2, 2);
    return !mayBeBare || number == (mark == "II" ? "*\0"sv : "\0*"sv);
}

bool OpenTiffSource(PageSource& source, std::string& why) {
    source.tiff = OpenDocument(source.name, std::move(source.descriptor), why);
    if (!source.tiff) return false;
    source.pageCount = static_cast<uint32_t>(source.tiff->imageCount);
    return true;
}

// The ending of a file name, in lower case and without its dot.
std::string EndingOf(const std::string& path) {
    std::string ending = std::filesystem::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending.empty() ? ending : ending.substr(1);
}

bool MayBeBare(const PageSource& source) {
    return source.hints.Any() || IsBareEnding(EndingOf(source.name));
}

bool OpenRasterSource(PageSource& source, std::string_view head, std::string& why) {
    source.format = RecogniseFormat(head);
    source.pictures = {0};
    if (source.format != nullptr && source.format->find != nullptr) {
        source.pictures = source.format->find(source.descriptor.Get(), source.beside);
    }
    source.pageCount = static_cast<uint32_t>(source.pictures.size());
    if (source.format != nullptr) return true;
    if (head.empty()) {
        why = "it is empty";
        return false;
    }
    if (MayBeBare(source)) return true;
    why =
        "it is no TIFF, CALS, IOCA, MO:DCA, PNG, BMP or PNM file; for a bare fax stream, tell "
        "--coding and --width";
    return false;
}

bool DescribeTiffPage(SourcePage& page, std::string& why) {
    page.tags = std::make_unique<LoadedImage>(page.file, page.image);
    if (!*page.tags) {
        why = FailureInWords(TiffError());
        return false;
    }
    const ImageFacts facts = GatherFacts(page.file, page.image);
    auto stored = DescribePicture(page.file, page.image, facts, why);
    if (!stored) return false;
    page.info.picture = std::move(stored->picture);
    page.info.whiteIsZero = stored->whiteIsZero;
    page.info.resolution = facts.resolution;
    page.info.carried = ReadCarriedTags(page.file, page.image);
    page.info.givenUp = TagsGivenUp(page.file, page.image);
    return true;
}

uint32_t OnLine(uint8_t* line, uint32_t /*lineNumber*/, uintptr_t callbackData) noexcept {
    const auto& taker = *reinterpret_cast<const LineTaker*>(callbackData);
    if (!taker.take(taker.data, line)) return TIFF_IO_ERROR;
    return TIFF_LINE_GO_ON;
}

LinesEnd PushTiffLines(const SourcePage& page, const LineTaker& taker) {
    const bool whole = DecodeTiffImage(page.file, page.image, 0, 0,
                                       reinterpret_cast<uintptr_t>(&taker), OnLine) != 0;
    // A run that ends in peace before the last line has lost lines all the same.
    return {whole, true, FailureMessage(whole ? int32_t{TIFF_UNEXPECTED_END} : TiffError())};
}

LinesEnd PushRasterLines(const SourcePage& page, const LineTaker& taker) {
    if (page.raster.push != nullptr) return page.raster.push(page.raster.state.get(), taker);
    std::vector<uint8_t> row(RowBytes(page.info.picture));
    LinesEnd end;
    for (uint32_t y = 0; y < page.info.picture.height; ++y) {
        end.whole = page.raster.next(page.raster.state.get(), row.data(), end.reason);
        end.worthKeeping = end.whole;
        if (!end.whole || !taker.take(taker.data, row.data())) break;
    }
    return end;
}

}  // namespace

void PageCloser::operator()(SourcePage* page) const {
    delete page;
}

bool PageSource::IsDocument() const {
    return tiff || format == nullptr || format->document;
}

std::string_view PageSource::Kind() const {
    if (tiff) return "TIFF";
    return format == nullptr ? "bare stream" : format->name;
}

std::optional<PageSource> OpenPageSource(const std::string& path, const SourceHints& hints,
                                         std::string& why) {
    PageSource source;
    source.name = path;
    source.hints = hints;
    source.descriptor = OpenInput(path, why);
    if (!source.descriptor) return {};
    const std::string head = ReadHead(source.descriptor.Get());
    const bool open = IsTiff(head, MayBeBare(source)) ? OpenTiffSource(source, why)
                                                      : OpenRasterSource(source, head, why);
    if (!open) return {};
    return source;
}

std::string BesideInWords(const PageSource& source) {
    std::string words;
    for (const std::string& kind : source.beside.kinds)
        words += (words.empty() ? "it holds " : ", ") + kind;
    return words;
}

std::string NoImagesInWords(const PageSource& source) {
    const std::string beside = BesideInWords(source);
    return beside.empty() ? "there are no images in it" : "there are no images in it; " + beside;
}

std::string OutOfReach(const PageSource& source) {
    return source.tiff ? ImagesOutOfReach(*source.tiff) : source.beside.stray;
}

OwnedPage OpenPage(const PageSource& source, uint32_t page, std::string& why) {
    OwnedPage opened(new SourcePage);
    if (source.tiff) {
        opened->file = source.tiff->File();
        opened->image = static_cast<int32_t>(page);
        if (!DescribeTiffPage(*opened, why)) return nullptr;
        return opened;
    }
    auto raster =
        source.format != nullptr
            ? source.format->open(source.descriptor.Get(), source.pictures[page], why)
            : OpenBareStream(source.descriptor.Get(), EndingOf(source.name), source.hints, why);
    if (!raster) return nullptr;
    opened->info = raster->info;
    opened->raster = std::move(*raster);
    return opened;
}

const PageInfo& InfoOf(const SourcePage& page) {
    return page.info;
}

LinesEnd PushLines(SourcePage& page, const LineTaker& taker) {
    return page.file != 0 ? PushTiffLines(page, taker) : PushRasterLines(page, taker);
}

}  // namespace vellim::tool
