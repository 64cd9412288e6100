// MMR streams beside libtiff's Group 4 of the same page, whose lines are the same codes but for the
// first. libtiff has no MMR streams; and where it works in memory, VELLIM reads and writes a file,
// which the system keeps in its cache, since MMR streams are read from files alone.
#include "bench/cases.h"
#include "bench/codings.h"
#include "bench/readers.h"
#include "bench/report.h"
#include "bench/temporary_folder.h"
#include "bench/writers.h"

namespace vellim::bench {

namespace {

enum class Way { Decoding, Encoding };

void Measure(benchmark::State& state, const Page& original, const Coding& coding,
             const std::string& group, Way way) {
    const PageRows page = RowsOfPage(original);
    const TemporaryFolder folder;
    const std::string path = folder.File("page.mmr");
    Bytes buffer, file;
    const bool sound = EncodeMmrWithVellim(page, path) &&
                       MmrGives(path, page.width, page.height, page.rows) &&
                       EncodeWithLibtiff(page, coding, LibtiffWrite::EncodedStrip, buffer, file);
    if (!sound) {
        AddFailure(group, original.name, "it couldn't be written and read back");
        return state.SkipWithError("it couldn't be written and read back");
    }
    const auto decode = [&] {
        Demand(DecodeMmrWithVellim(path, page.width, page.height) == page.height, "VELLIM");
    };
    const auto decodeOther = [&] {
        Demand(DecodeWithLibtiff(file, LibtiffCall::EncodedStrip, buffer) == page.height,
               "libtiff");
    };
    const auto encode = [&] { Demand(EncodeMmrWithVellim(page, path), "VELLIM"); };
    const auto encodeOther = [&] {
        Demand(EncodeWithLibtiff(page, coding, LibtiffWrite::EncodedStrip, buffer, file),
               "libtiff");
    };
    PairedTiming timing = way == Way::Decoding ? PairedTiming(decode, decodeOther)
                                               : PairedTiming(encode, encodeOther);
    while (state.KeepRunning())
        state.SetIterationTime(timing.RunRound());
    ReportPage(state, original, group, timing, "Group 4, strip");
}

void MeasureDecoding(benchmark::State& state, const Page& page, const Coding& coding,
                     const std::string& group) {
    Measure(state, page, coding, group, Way::Decoding);
}

void MeasureEncoding(benchmark::State& state, const Page& page, const Coding& coding,
                     const std::string& group) {
    Measure(state, page, coding, group, Way::Encoding);
}

}  // namespace

void RegisterMmr(const std::vector<Page>& pages) {
    const auto add = [&](const char* group, MeasurePage measure) {
        RegisterPages(pages, PageKind::Document, group, kGroup4, measure);
    };
    add("MMR beside libtiff's Group 4, document pages", MeasureDecoding);
    add("Encoding MMR beside libtiff's Group 4, document pages", MeasureEncoding);
}

}  // namespace vellim::bench
