// The text records of CALS files, as they are named on the command line.
#pragma once

#include <string>
#include <string_view>

namespace vellim::tool {

// The key that is written for a name, which may be that key or the standard's spelling of it
// ("notes"; "dstdocid" stands for "dstdocis"); empty if there is no such record.
std::string_view FindCalsKey(std::string_view name);

// "srcdocid, dstdocis, ..."
std::string CalsKeys();

}  // namespace vellim::tool
