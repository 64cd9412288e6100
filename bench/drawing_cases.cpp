// Views of a drawing of 30,000 x 40,000 pixels, Group 4: how much memory a paint takes, beside the
// size of the picture, and its time, beside decoding it into nothing.
//
// Memory is measured in a process of its own, whose first paint is of a small picture, so that what
// any paint brings into memory is there before.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string_view>

#include "bench/cases.h"
#include "bench/report.h"
#include "bench/screen_window.h"
#include "bench/temporary_folder.h"
#include "vellim/vellim.h"

namespace vellim::bench {

namespace {

constexpr int32_t kWidth = 30'000;
constexpr int32_t kHeight = 40'000;
constexpr int32_t kSmallSide = 64;
constexpr int32_t kGroup4Compression = 4;
constexpr double kMostKilobytes = 1024;  // of a paint, which holds lines
constexpr double kMillion = 1e6;
constexpr double kPixels = double{kWidth} * kHeight;
constexpr double kBitsInKilobyte = 8 * 1024;
constexpr const char* kGroup = "A drawing of 30,000 x 40,000 in 800 x 600";
constexpr const char* kDrawingName = "drawing.tif";
constexpr const char* kSmallName = "small.tif";
constexpr const char* kMemoryOption = "--memory_of_paint";

struct View {
    const char* name;
    uint32_t flags;
    int32_t position;  // of both scroll bars, in hundredths
};
constexpr std::array<View, 3> kViews = {
    {{"scrolled", 0, 50}, {"scrolled, turned", 1, 50}, {"whole", VIEW_FIT, 0}}};

// A grid of lines, and one from corner to corner.
struct Drawing {
    int32_t width;

    void FillLine(uint8_t* line, uint32_t number) const {
        constexpr uint32_t gridStep = 500, penPixels = 4;
        const auto bytes = static_cast<size_t>(width + 7) / 8;
        const bool isDrawn = number % gridStep < penPixels;
        std::memset(line, isDrawn ? 0xFF : 0, bytes);
        for (size_t x = 0; x < bytes; x += gridStep / 8)
            line[x] = 0xF0;
        line[number % bytes] = 0xFF;
    }
};

uint32_t FillLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    reinterpret_cast<const Drawing*>(callbackData)->FillLine(line, lineNumber);
    return TIFF_LINE_GO_ON;
}

bool StoreDrawing(const std::string& path, int32_t width, int32_t height) {
    BITMAP size{};
    size.bmWidth = width;
    size.bmHeight = height;
    size.bmWidthBytes = (width + 7) / 8;
    size.bmPlanes = size.bmBitsPixel = 1;
    const Drawing drawing = {width};
    const TiffFileHandle file = OpenTiffFile(path.c_str(), T_CREAT);
    const int32_t image = DefineTiffImage(file);
    const bool isStored =
        DefineTiffImageInfo(file, image, TIFF_TAG_COMPRESSION, TIFF_TYPE_SHORT,
                            kGroup4Compression) == 1 &&
        DefineTiffImageInfo(file, image, TIFF_TAG_PHOTOMETRIC, TIFF_TYPE_SHORT, 0) == 1 &&
        DefineGeneralTags(file, image, size) == 0 &&
        EncodeTiffImage(file, image, reinterpret_cast<uintptr_t>(&drawing), FillLine) == 1;
    CloseTiffFile(file);
    return isStored;
}

bool PaintView(const ScreenWindow& window, const std::string& path, const View& view) {
    window.ScrollTo(view.position);
    return window.Paint(path, nullptr, view.flags);
}

// A figure of /proc/self/status in KB, or 0.
long Status(const std::string& field) {
    std::ifstream status("/proc/self/status");
    std::string word;
    long figure = 0;
    while (status >> word && word != field + ":") {
    }
    status >> figure;
    return figure;
}

// Makes VmHWM begin anew.
bool ForgetPeak() {
    constexpr std::string_view peak = "5";
    std::ofstream file("/proc/self/clear_refs");
    return static_cast<bool>(file << peak << std::flush);
}

// The KB that a paint in this process takes at most, of a page each at least; 0 on failure.
long MemoryOfPaint(const std::string& folder, const View& view) {
    const ScreenWindow window(800, 600);
    const bool isReady = PaintView(window, folder + kSmallName, view) && ForgetPeak();
    const long before = Status("VmRSS");
    if (!isReady || !PaintView(window, folder + kDrawingName, view)) return 0;
    const long peak = Status("VmHWM");
    constexpr long page = 4;
    return before > 0 && peak > 0 && window.HasTwoColors() ? std::max(peak - before, page) : 0;
}

// The same in a process of its own.
double PeakOfPaint(const std::string& folder, const View& view) {
    std::error_code failure;
    const std::string self = std::filesystem::read_symlink("/proc/self/exe", failure);
    const std::string command =
        self + " " + kMemoryOption + " '" + folder + "' '" + view.name + "'";
    FILE* pipe = popen(command.c_str(), "r");  // NOLINT(cert-env33-c)
    if (pipe == nullptr) return 0;
    double kilobytes = 0;
    const bool isTold = std::fscanf(pipe, "%lf", &kilobytes) == 1;
    return pclose(pipe) == 0 && isTold ? kilobytes : 0;
}

// The drawing and the small picture, made when they are first asked for.
class DrawingFiles {
  public:
    bool Make() {
        if (!isMade_)
            isMade_ = StoreDrawing(Drawing(), kWidth, kHeight) &&
                      StoreDrawing(folder_.File(kSmallName), kSmallSide, kSmallSide);
        return isMade_;
    }
    [[nodiscard]] std::string Folder() const { return folder_.File(""); }
    [[nodiscard]] std::string Drawing() const { return folder_.File(kDrawingName); }

  private:
    TemporaryFolder folder_;
    bool isMade_ = false;
};

using Files = std::shared_ptr<DrawingFiles>;

void MeasureMemory(benchmark::State& state, const View& view, const Files& files) {
    const double kilobytes = files->Make() ? PeakOfPaint(files->Folder(), view) : 0;
    while (state.KeepRunning())
        state.SetIterationTime(0);
    const std::string group = std::string(kGroup) + ", memory";
    if (kilobytes == 0) return AddFailure(group, view.name, "its memory can't be told");
    if (kilobytes > kMostKilobytes)
        AddFailure(group, view.name, "it takes more than lines: KB " + std::to_string(kilobytes));
    AddResult({group, view.name, "KB", kilobytes, kPixels / kBitsInKilobyte,
               kPixels / kBitsInKilobyte / kilobytes, "the picture's size instead"});
}

void MeasureTime(benchmark::State& state, const View& view, const Files& files) {
    const ScreenWindow window(800, 600);
    const std::string path = files->Drawing();
    if (!files->Make() || !PaintView(window, path, view)) {
        AddFailure(kGroup, view.name, "it isn't painted");
        return state.SkipWithError("it isn't painted");
    }
    PairedTiming timing([&] { Demand(PaintView(window, path, view), "the painting"); },
                        [&] { Demand(DecodeIntoNothing(path), "the decoding"); });
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());
    AddResult({kGroup, view.name, "Mpixel/s", kPixels / kMillion / timing.VellimSeconds(),
               kPixels / kMillion / timing.LibtiffSeconds(), timing.Ratio(),
               "bare decoding instead"});
}

using Measure = void (*)(benchmark::State& state, const View& view, const Files& files);

void Register(const char* what, Measure measure, int rounds, const Files& files) {
    for (const View& view : kViews)
        benchmark::RegisterBenchmark((std::string(what) + "/" + view.name).c_str(),
                                     [=](benchmark::State& state) { measure(state, view, files); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(rounds);
}

}  // namespace

void RegisterDrawing() {
    const Files files = std::make_shared<DrawingFiles>();
    Register("Drawing, memory", MeasureMemory, 1, files);
    Register("Drawing", MeasureTime, kRounds, files);
}

std::optional<int> RunPaintForMemory(int argc, char** argv) {
    if (argc != 4 || std::strcmp(argv[1], kMemoryOption) != 0) return std::nullopt;
    for (const View& view : kViews) {
        if (std::strcmp(argv[3], view.name) != 0) continue;
        const long kilobytes = MemoryOfPaint(argv[2], view);
        std::printf("%ld\n", kilobytes);
        return kilobytes > 0 ? 0 : 1;
    }
    return 1;
}

}  // namespace vellim::bench
