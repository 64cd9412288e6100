// CALS raster files of type 1 (MIL-PRF-28002): sixteen records of text, and a page of Group 4 code
// behind them. The library reads the records; what it refuses is looked at here for the reason.
#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>

#include "cals_writer.h"
#include "coded_page.h"
#include "messages.h"
#include "passing_file.h"
#include "vellim/cals.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

constexpr double kInchesPerMetre = 39.37;
constexpr std::string_view kPadding{" \0\r\n", 4};
constexpr std::string_view kLineEnds = "\r\n";
constexpr const char* kNoText = "NONE";

std::string_view RecordAt(std::string_view header, size_t index) {
    return header.substr(index * CALS_RECORD_BYTES, CALS_RECORD_BYTES);
}

std::string_view Trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(kPadding), text.size()));
    return text.substr(0, text.find_last_not_of(kPadding) + 1);
}

// The records as they stand, in the file's order. What has no colon is a value without a name.
std::vector<NamedField> FieldsOf(std::string_view header) {
    std::vector<NamedField> fields;
    for (size_t i = 0; i < CALS_RECORD_COUNT; ++i) {
        const std::string_view record = Trimmed(RecordAt(header, i));
        if (record.empty()) continue;
        const size_t colon = record.find(':');
        const bool named = colon != std::string_view::npos;
        fields.push_back({std::string(named ? record.substr(0, colon) : ""),
                          std::string(named ? Trimmed(record.substr(colon + 1)) : record)});
    }
    return fields;
}

// Those of them that a CALS file gets again.
std::vector<NamedField> TextsOf(const std::vector<NamedField>& fields) {
    std::vector<NamedField> texts;
    for (const NamedField& field : fields) {
        const std::string_view key = FindCalsKey(field.name);
        if (key.empty() || field.value.empty() || field.value == kNoText) continue;
        texts.push_back({std::string(key), field.value});
    }
    return texts;
}

bool HasRecord(std::string& header, const char* key) {
    return FindCALSRecord(header.data(), key) != nullptr;
}

// Why the library has refused a header.
std::string ReasonOf(std::string header, const CalsInfo& info) {
    if (!HasRecord(header, "rtype: ") && !HasRecord(header, "dtype: "))
        return "its header has no rtype record, so that its kind of data isn't known";
    if (info.rtype != 1) {
        return "it is of raster type " + std::to_string(info.rtype) +
               ", which isn't served; type 1 alone is";
    }
    if (!HasRecord(header, "rorient: ")) return "its header has no rorient record";
    if (!HasRecord(header, "rpelcnt: ")) return "its header has no rpelcnt record";
    if (!HasRecord(header, "rdensty: ") && !HasRecord(header, "rdensity: "))
        return "its header has no rdensty record";
    return "the picture has no pixels";
}

// The header, with blanks for line ends at the end of its records, which the library refuses. Empty
// if it can't be read.
std::string ReadHeader(int descriptor) {
    std::string header(CALS_HEADER_BYTES, '\0');
    const ssize_t got = pread(descriptor, header.data(), header.size(), 0);
    if (got != ssize_t{CALS_HEADER_BYTES}) return {};
    for (size_t end = CALS_RECORD_BYTES; end <= header.size(); end += CALS_RECORD_BYTES) {
        if (kLineEnds.find(header[end - 1]) != std::string_view::npos) header[end - 1] = ' ';
    }
    return header;
}

// The raster records of a header, by the library's rules, which are for files.
bool ReadRasterRecords(const std::string& header, CalsInfo& info, std::string& why) {
    const OwnedDescriptor copy = CreateNamelessFile(why);
    if (!copy) return false;
    if (write(copy.Get(), header.data(), header.size()) != ssize_t{CALS_HEADER_BYTES}) {
        why = std::strerror(errno);
        return false;
    }
    const std::string path = "/proc/self/fd/" + std::to_string(copy.Get());
    if (ReadCALSInfo(path.c_str(), &info) != 0) return true;
    why = TiffError() == TIFF_NOT_CALS ? ReasonOf(header, info) : FailureInWords(TiffError());
    return false;
}

}  // namespace

// Records may end in line ends, as some writers have it.
bool IsCals(std::string_view head) {
    if (head.size() < CALS_HEADER_BYTES) return false;
    constexpr std::array<std::string_view, 4> kKeys = {
        "rpelcnt: ", "rtype: ", "dtype: ", "srcdocid: "};
    bool known = false;
    for (size_t i = 0; i < CALS_RECORD_COUNT; ++i) {
        const std::string_view record = RecordAt(head, i);
        if (kPadding.find(record.back()) == std::string_view::npos) return false;
        known = known || std::any_of(kKeys.begin(), kKeys.end(), [record](std::string_view key) {
                    return record.substr(0, key.size()) == key;
                });
    }
    return known;
}

std::optional<RasterPage> OpenCals(int descriptor, uint64_t /*offset*/, std::string& why) {
    const std::string header = ReadHeader(descriptor);
    if (header.empty()) {
        why = "its header can't be read";
        return {};
    }
    CalsInfo cals = {};
    if (!ReadRasterRecords(header, cals, why)) return {};
    if (cals.rpelcnt[0] < 0 || cals.rpelcnt[1] < 0) {
        why = "the figures of its rpelcnt record make no sense";
        return {};
    }

    CodedPage page;
    page.width = static_cast<uint32_t>(cals.rpelcnt[0]);
    page.height = static_cast<uint32_t>(cals.rpelcnt[1]);
    if (!IsServedSize(page.width, page.height, why) || !BeginCode(page.code, why) ||
        !AddCode(page.code, descriptor, CALS_HEADER_BYTES, UINT64_MAX, why)) {
        return {};
    }
    PageInfo info;
    const double density = std::floor(cals.rdensty * kInchesPerMetre + 0.5);
    if (density > 0 && density < UINT32_MAX) {
        const auto pels = static_cast<uint32_t>(density);
        SetPelsPerMetre(info, pels, pels, true);
    }
    info.storage = FaxCodingInWords(page.coding);
    info.fields = FieldsOf(header);
    info.calsTexts = TextsOf(info.fields);
    return OpenCodedPage(std::move(page), std::move(info), why);
}

}  // namespace vellim::tool
