// Copying pages from file to file without decoding, beside a plain copy of the file's bytes: how
// much the directories cost on top. Both write a new file, which the system keeps in its cache.
#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

#include "bench/cases.h"
#include "bench/codings.h"
#include "bench/report.h"
#include "bench/temporary_folder.h"
#include "vellim/vellim.h"

namespace vellim::bench {

namespace {

constexpr int32_t kCopies = 20;  // of the page in its file
constexpr uint32_t kBlockBytes = 32760;
constexpr double kMega = 1e6;

int32_t CopyPages(const std::string& from, const std::string& to, int32_t pages) {
    const TiffFileHandle source = OpenTiffFile(from.c_str(), T_READ);
    const TiffFileHandle destination = OpenTiffFile(to.c_str(), T_CREAT);
    int32_t copied = 0;
    for (int32_t i = 0; i < pages; ++i)
        copied +=
            CopyTiffImage(source, i % NumberOfTiffImages(source, TIFF_ALL_IMAGES), destination);
    CloseTiffFile(source);
    CloseTiffFile(destination);
    return copied;
}

bool CopyBytes(const std::string& from, const std::string& to) {
    std::array<uint8_t, kBlockBytes> block;
    const int32_t source = OpenFile(from.c_str(), nullptr, OF_READ);
    const int32_t destination = OpenFile(to.c_str(), nullptr, OF_CREATE | OF_WRITE);
    int32_t got = 0;
    bool good = source > 0 && destination > 0;
    while (good && (got = _lread(source, block.data(), kBlockBytes)) > 0)
        good = _lwrite(destination, block.data(), static_cast<uint32_t>(got)) == got;
    _lclose(source);
    _lclose(destination);
    return good && got == 0;
}

void MeasureCopying(benchmark::State& state, const Page& original, const Coding& coding,
                    const std::string& group) {
    const TemporaryFolder folder;
    const Page page = Convert(original, coding);
    const std::string one = folder.File("one.tif"), many = folder.File("many.tif");
    const std::string pages = folder.File("pages.tif"), bytes = folder.File("bytes.tif");
    std::ofstream(one, std::ios::binary)
        .write(reinterpret_cast<const char*>(page.file.data()),
               static_cast<std::streamsize>(page.file.size()));
    if (CopyPages(one, many, kCopies) != kCopies) {
        AddFailure(group, original.name, "the pages weren't copied");
        return state.SkipWithError("the pages weren't copied");
    }
    PairedTiming timing([&] { Demand(CopyPages(many, pages, kCopies) == kCopies, "VELLIM"); },
                        [&] { Demand(CopyBytes(many, bytes), "the plain copy"); });
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());
    const double megabytes = static_cast<double>(std::filesystem::file_size(many)) / kMega;
    AddResult({group, original.name, "MB/s", megabytes / timing.VellimSeconds(),
               megabytes / timing.LibtiffSeconds(), timing.Ratio(), "a plain copy instead"});
}

}  // namespace

void RegisterCopying(const std::vector<Page>& pages) {
    RegisterPages(pages, PageKind::Document, "Copying 20 Group 4 pages", kGroup4, MeasureCopying);
    RegisterPages(pages, PageKind::Colour, "Copying 20 LZW pages", kLzw, MeasureCopying);
}

}  // namespace vellim::bench
