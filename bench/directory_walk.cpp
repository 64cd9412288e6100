// Opening a file of 1,000 small images: counting them, and reading the tags of all of them.
#include <benchmark/benchmark.h>

#include <array>
#include <string>

#include "bench/cases.h"
#include "bench/paired_timing.h"
#include "bench/readers.h"
#include "bench/report.h"
#include "vellim/vellim.h"

namespace vellim::bench {

namespace {

constexpr uint32_t kSide = 8;
constexpr double kThousand = 1e3;

bool WriteImage(TIFF* tiff) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kSide);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kSide);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kSide);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 200.0);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 200.0);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tiff, TIFFTAG_SOFTWARE, "bench");
    std::array<uint8_t, kSide> rows{};
    return TIFFWriteEncodedStrip(tiff, 0, rows.data(), rows.size()) == rows.size() &&
           TIFFWriteDirectory(tiff) == 1;
}

Bytes MakeManyImages() {
    Bytes bytes;
    MemoryFile file{&bytes};
    {
        const TiffPointer tiff = OpenForWriting(file);
        bool written = tiff != nullptr;
        for (int i = 0; written && i < TIFF_MAX_IMAGES; ++i)
            written = WriteImage(tiff.get());
    }
    return bytes;
}

// Each gives the number of images that were reached.
int32_t CountWithVellim(const PageBlock& block) {
    const TiffFileHandle file = OpenTiffInMemory(block.Handle(), block.Size(), T_READ);
    const int32_t count = NumberOfTiffImages(file, TIFF_ALL_IMAGES);
    CloseTiffFile(file);
    return count;
}

int32_t CountWithLibtiff(Bytes& bytes) {
    MemoryFile file{&bytes};
    const TiffPointer tiff = OpenForReading(file);
    return tiff == nullptr ? 0 : static_cast<int32_t>(TIFFNumberOfDirectories(tiff.get()));
}

int32_t ReadTagsWithVellim(const PageBlock& block) {
    const TiffFileHandle file = OpenTiffInMemory(block.Handle(), block.Size(), T_READ);
    const int32_t count = NumberOfTiffImages(file, TIFF_ALL_IMAGES);
    int32_t read = 0;
    while (read < count && GetTiffImage(file, read) == 1)
        ++read;
    CloseTiffFile(file);
    return read;
}

// TIFFReadDirectory goes from one directory to the next, which TIFFSetDirectory would do from the
// start each time.
int32_t ReadTagsWithLibtiff(Bytes& bytes) {
    MemoryFile file{&bytes};
    const TiffPointer tiff = OpenForReading(file);
    int32_t read = tiff == nullptr ? 0 : 1;
    while (read > 0 && TIFFReadDirectory(tiff.get()) == 1)
        ++read;
    return read;
}

using VellimWalk = int32_t (*)(const PageBlock&);
using LibtiffWalk = int32_t (*)(Bytes&);

void MeasureWalk(benchmark::State& state, const std::string& what, VellimWalk vellimWalk,
                 LibtiffWalk libtiffWalk, const char* call) {
    Bytes bytes = MakeManyImages();
    const PageBlock block(bytes);
    if (vellimWalk(block) != TIFF_MAX_IMAGES || libtiffWalk(bytes) != TIFF_MAX_IMAGES) {
        AddFailure("1,000 images", what, "not all images were reached");
        state.SkipWithError("not all images were reached");
        return;
    }
    PairedTiming timing([&] { benchmark::DoNotOptimize(vellimWalk(block)); },
                        [&] { benchmark::DoNotOptimize(libtiffWalk(bytes)); });
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());

    const double images = TIFF_MAX_IMAGES / kThousand;
    const double vellim = images / timing.VellimSeconds();
    const double libtiff = images / timing.LibtiffSeconds();
    state.counters["ratio"] = timing.Ratio();
    AddResult({"1,000 images, " + what, "made in memory", "kimages/s", vellim, libtiff,
               timing.Ratio(), call});
}

void Register(const std::string& what, VellimWalk vellim, LibtiffWalk libtiff, const char* call) {
    benchmark::RegisterBenchmark(
        ("1,000 images/" + what).c_str(),
        [=](benchmark::State& state) { MeasureWalk(state, what, vellim, libtiff, call); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond)
        ->Iterations(kRounds);
}

}  // namespace

void RegisterDirectoryWalk() {
    Register("opened", CountWithVellim, CountWithLibtiff, "TIFFNumberOfDirectories");
    Register("all tags read", ReadTagsWithVellim, ReadTagsWithLibtiff, "TIFFReadDirectory");
}

}  // namespace vellim::bench
