// The table at the end of a run.
#pragma once

#include <string>

namespace vellim::bench {

struct ResultRow {
    std::string group;  // rows of one group share a geometric mean
    std::string page;
    std::string unit;  // of the two figures, such as Mpixel/s
    double vellim;
    double libtiff;
    double ratio;
    std::string libtiffCall;
};

void AddResult(ResultRow row);

// A case that couldn't be measured; the run then ends as a failure.
void AddFailure(const std::string& group, const std::string& page, const std::string& reason);

// Prints all rows, the geometric mean of each group and the failures. False if there are any.
bool PrintReport();

}  // namespace vellim::bench
