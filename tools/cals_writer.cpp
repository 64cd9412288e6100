// CALS raster files of type 1 (MIL-PRF-28002): sixteen records of text, and Group 4 code behind
// them.
//
// A record is plain ASCII of one line. Characters beyond that become question marks and control
// characters, line ends among them, blanks; what doesn't fit is cut. All of it is told.
#include "cals_writer.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "coded_output.h"
#include "line_encoder.h"
#include "output_formats.h"
#include "text.h"
#include "vellim/cals.h"
#include "vellim/encode.h"
#include "vellim/failures.h"

namespace vellim::tool {
namespace {

// There is no word for a resolution that isn't known, and a record without one makes the file
// invalid: this is the one that other programs take as well.
constexpr uint32_t kUsualDensity = 200;
constexpr int32_t kRasterType = 1;
// Lines run to the right, and follow one another downwards.
constexpr std::array<int32_t, 2> kUpright = {0, 270};
constexpr int32_t kFullTurn = 360;
constexpr std::string_view kBehindKey = ": ";

struct TextRecord {
    std::string_view key;
    std::string_view standardKey;  // as MIL-PRF-28002 spells it
    const char* CalsNote::*text;

    // What the library takes of a text: the last byte of a record is never part of its value.
    [[nodiscard]] constexpr size_t Room() const {
        return CALS_RECORD_BYTES - 1 - key.size() - kBehindKey.size();
    }
};

constexpr std::array<TextRecord, 7> kRecords = {{
    {"srcdocid", "srcdocid", &CalsNote::srcdocid},
    {"dstdocis", "dstdocid", &CalsNote::dstdocis},
    {"txtfileid", "txtfilid", &CalsNote::txtfileid},
    {"figid", "figid", &CalsNote::figid},
    {"scrgph", "srcgph", &CalsNote::scrgph},
    {"doccls", "doccls", &CalsNote::doccls},
    {"notes", "notes", &CalsNote::notes},
}};

struct FittedText {
    std::string text;  // empty: the record says that there is none
    std::vector<std::string> notes;
};

bool IsControl(char c) {
    constexpr char kFirstPrinted = ' ';
    constexpr char kDelete = '\x7F';
    return (c >= 0 && c < kFirstPrinted) || c == kDelete;
}

// One character for each of UTF-8: a byte that goes on with a character begins none.
std::string Ascii(std::string_view utf8) {
    constexpr uint32_t kContinuationMask = 0xC0, kContinuation = 0x80;
    std::string ascii;
    for (const char c : utf8) {
        if ((static_cast<uint8_t>(c) & kContinuationMask) == kContinuation) continue;
        ascii += static_cast<uint8_t>(c) >= kContinuation ? '?' : c;
    }
    return ascii;
}

// The text of a record: the last one that is given for it.
FittedText Fit(const TextRecord& record, const std::vector<NamedField>& texts) {
    FittedText fitted;
    const auto given = std::find_if(texts.rbegin(), texts.rend(), [&](const NamedField& text) {
        return text.name == record.key;
    });
    if (given == texts.rend()) return fitted;
    const std::string whose = "the text of " + std::string(record.key);
    const std::string utf8 = ToUtf8(given->value);
    std::string text = Ascii(utf8);
    if (text.size() != utf8.size()) {
        fitted.notes.push_back("characters beyond ASCII become question marks in " + whose);
    }
    if (std::any_of(text.begin(), text.end(), IsControl)) {
        std::replace_if(text.begin(), text.end(), IsControl, ' ');
        fitted.notes.push_back("line ends and control characters become blanks in " + whose);
    }
    if (text.size() > record.Room()) {
        text.resize(record.Room());
        fitted.notes.push_back(whose + " is cut to the " + std::to_string(record.Room()) +
                               " characters that its record holds");
    }
    fitted.text = std::move(text);
    return fitted;
}

uint32_t Density(const Picture& picture) {
    const uint32_t dots = DotsIn(1, picture, picture.pelsPerMetreX);
    return dots != 0 ? dots : kUsualDensity;
}

// Two angles with anything between them; the usual ones where they are none.
std::array<int32_t, 2> Orientation(std::string_view record) {
    std::array<int32_t, 2> angles{};
    const char* const end = record.data() + record.size();
    const char* next = record.data();
    for (int32_t& angle : angles) {
        const auto [behind, error] = std::from_chars(next, end, angle);
        if (error != std::errc() || angle < 0 || angle >= kFullTurn) return kUpright;
        next = behind == end ? end : behind + 1;
    }
    return angles;
}

// The bytes of the header; empty without memory.
std::string Header(const Picture& picture, const WriteOptions& options) {
    std::array<FittedText, kRecords.size()> texts;
    CalsNote note = {};
    for (size_t i = 0; i < kRecords.size(); ++i) {
        texts[i] = Fit(kRecords[i], options.calsTexts);
        note.*kRecords[i].text = texts[i].text.empty() ? nullptr : texts[i].text.c_str();
    }
    const auto [path, progression] = Orientation(options.calsOrientation);
    const CalsInfo info = {
        kRasterType,
        {path, progression},
        {static_cast<int32_t>(picture.width), static_cast<int32_t>(picture.height)},
        static_cast<int32_t>(Density(picture))};
    const OwnedBlock block(DefineCALSHead(&info, &note));
    if (!block) return {};
    const LockedBlock locked(block.Get());
    if (locked.Bytes() == nullptr) return {};
    return {locked.Bytes(), locked.Bytes() + CALS_HEADER_BYTES};
}

int32_t WriteCals(const std::string& header, const Picture& picture, StreamHandle file,
                  uintptr_t callbackData) {
    if (_lwrite(file, header.data(), CALS_HEADER_BYTES) != CALS_HEADER_BYTES) return TIFF_IO_ERROR;
    const bool good = EncodeCcittImage(file, static_cast<int32_t>(picture.width),
                                       static_cast<int32_t>(picture.height), TIFF_KEY_GROUP4,
                                       callbackData, OnLineWanted) != 0;
    return good ? 0 : TiffError();
}

}  // namespace

std::string_view FindCalsKey(std::string_view name) {
    const auto* const found = std::find_if(
        kRecords.begin(), kRecords.end(),
        [name](const TextRecord& r) { return r.key == name || r.standardKey == name; });
    return found == kRecords.end() ? std::string_view() : found->key;
}

std::string CalsKeys() {
    std::string keys;
    for (const TextRecord& record : kRecords) {
        if (!keys.empty()) keys += ", ";
        keys += record.key;
    }
    return keys;
}

bool PrepareCals(const Picture& picture, const WriteOptions& options,
                 std::vector<std::string>& notes, std::string& why) {
    if (!TakesLine(FaxCoding::G4, picture.width, why)) return false;
    for (const TextRecord& record : kRecords) {
        for (std::string& note : Fit(record, options.calsTexts).notes)
            notes.push_back(std::move(note));
    }
    const std::string density = std::to_string(Density(picture));
    if (DotsIn(1, picture, picture.pelsPerMetreX) == 0) {
        notes.push_back("its resolution isn't known, and CALS has to state one: " + density +
                        " dots an inch, unless --dpi tells another");
    }
    if (picture.pelsPerMetreX != picture.pelsPerMetreY) {
        notes.push_back("CALS states one resolution for both axes, " + density +
                        " dots an inch here; --square makes its pixels square");
    }
    return true;
}

std::optional<LineSink> BeginCals(const Picture& picture, const WriteOptions& options,
                                  OutputFile& output) {
    std::string header = Header(picture, options);
    if (header.empty()) {
        output.failure = FailureInEncoding(TIFF_NO_MEMORY);
        return {};
    }
    return BeginCoded(picture, output,
                      [header = std::move(header), picture](StreamHandle file, uintptr_t data) {
                          return WriteCals(header, picture, file, data);
                      });
}

}  // namespace vellim::tool
