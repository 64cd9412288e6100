// Rows in the order in which they were measured, with a mean behind each group.
#include "bench/report.h"

#include <cmath>
#include <cstdio>
#include <utility>
#include <vector>

namespace vellim::bench {

namespace {

struct Report {
    std::vector<ResultRow> rows;
    std::vector<std::string> failures;
};

Report& TheReport() {
    static Report report;
    return report;
}

void PrintRow(const char* page, double vellim, double libtiff, double ratio, const char* unit,
              const char* call) {
    std::printf("  %-18s %12.1f %12.1f %8.2fx  %-9s %s\n", page, vellim, libtiff, ratio, unit,
                call);
}

// Prints the rows from `first` that belong to one group, and gives the index behind them.
size_t PrintGroup(const std::vector<ResultRow>& rows, size_t first) {
    const std::string& group = rows[first].group;
    std::printf("%s\n", group.c_str());
    double vellim = 0;
    double libtiff = 0;
    double ratio = 0;
    size_t i = first;
    for (; i < rows.size() && rows[i].group == group; ++i) {
        const ResultRow& row = rows[i];
        PrintRow(row.page.c_str(), row.vellim, row.libtiff, row.ratio, row.unit.c_str(),
                 row.libtiffCall.c_str());
        vellim += std::log(row.vellim);
        libtiff += std::log(row.libtiff);
        ratio += std::log(row.ratio);
    }
    const auto count = static_cast<double>(i - first);
    if (i - first > 1)
        PrintRow("geometric mean", std::exp(vellim / count), std::exp(libtiff / count),
                 std::exp(ratio / count), rows[first].unit.c_str(), "");
    return i;
}

}  // namespace

void AddResult(ResultRow row) {
    TheReport().rows.push_back(std::move(row));
}

void AddFailure(const std::string& group, const std::string& page, const std::string& reason) {
    TheReport().failures.push_back(group + ", " + page + ": " + reason);
}

bool PrintReport() {
    const Report& report = TheReport();
    std::printf("\n  %-18s %12s %12s %9s  %-9s %s\n", "page", "VELLIM", "libtiff", "ratio", "unit",
                "libtiff's call");
    for (size_t i = 0; i < report.rows.size();)
        i = PrintGroup(report.rows, i);
    for (const std::string& failure : report.failures)
        std::printf("not measured: %s\n", failure.c_str());
    return report.failures.empty();
}

}  // namespace vellim::bench
