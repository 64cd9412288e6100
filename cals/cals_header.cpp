// The header of a CALS file as a block in memory: read from a file, told as raster and text fields,
// and made anew.
#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "cals/cals_records.h"
#include "container/failure.h"
#include "container/streams.h"
#include "platform/guards.h"

namespace vellim {
namespace {

constexpr int32_t kRasterType1 = 1;

constexpr char kType[] = "rtype: ";
constexpr char kOtherType[] = "dtype: ";
constexpr char kOrientation[] = "rorient: ";
constexpr char kSize[] = "rpelcnt: ";
constexpr char kDensity[] = "rdensty: ";
constexpr char kOtherDensity[] = "rdensity: ";
constexpr char kNotes[] = "notes: ";

// The keys of a header that is written, one to each of its first records.
constexpr const char* kKeys[] = {"srcdocid: ", "dstdocis: ", "txtfileid: ", "figid: ",
                                 "scrgph: ",   "doccls: ",   kType,         kOrientation,
                                 kSize,        kDensity,     kNotes};
static_assert(std::size(kKeys) <= CALS_RECORD_COUNT);

struct TextField {
    const char* key;
    const char* CalsNote::*text;
};
constexpr TextField kTextFields[] = {
    {kKeys[0], &CalsNote::srcdocid},  {kKeys[1], &CalsNote::dstdocis},
    {kKeys[2], &CalsNote::txtfileid}, {kKeys[3], &CalsNote::figid},
    {kKeys[4], &CalsNote::scrgph},    {kKeys[5], &CalsNote::doccls},
    {kNotes, &CalsNote::notes},
};
static_assert(std::size(kTextFields) * CALS_RECORD_BYTES <= CALS_BLOCK_BYTES,
              "all texts fit a block");

// Nothing, with the code set, without memory.
OwnedBlock NewBlock() {
    OwnedBlock block(GlobalAlloc(GHND, CALS_BLOCK_BYTES));
    if (!block) SetTiffError(TIFF_NO_MEMORY);
    return block;
}

// Whether the file at `path` has a header, which then is in `block`.
bool ReadRecords(const char* path, GlobalHandle block) {
    const LockedBlock locked(block);
    if (!locked) return Fail(TIFF_NO_MEMORY, false);
    const OpenStream file(OpenFile(path, nullptr, OF_READ));
    if (!file) return Fail(TIFF_IO_ERROR, false);
    const auto* header = locked.As<char>();
    if (_lread(file.Get(), locked.As<char>(), CALS_HEADER_BYTES) != CALS_HEADER_BYTES)
        return Fail(TIFF_NOT_CALS, false);
    for (uint32_t last = kLastByteOfRecord; last < CALS_HEADER_BYTES; last += CALS_RECORD_BYTES)
        if (header[last] != ' ' && header[last] != '\0') return Fail(TIFF_NOT_CALS, false);
    return true;
}

// Whether all four raster records are there.
bool ReadRaster(char* header, CalsInfo& info) {
    const std::span<int32_t> type(&info.rtype, 1), density(&info.rdensty, 1);
    const bool hasType =
        ReadCALSNumbers(header, kType, type) || ReadCALSNumbers(header, kOtherType, type);
    const bool hasOrientation = ReadCALSNumbers(header, kOrientation, info.rorient);
    const bool hasSize = ReadCALSNumbers(header, kSize, info.rpelcnt);
    const bool hasDensity = ReadCALSNumbers(header, kDensity, density) ||
                            ReadCALSNumbers(header, kOtherDensity, density);
    return hasType && hasOrientation && hasSize && hasDensity;
}

bool ReadTexts(char* header, GlobalHandle block, CalsNote& note) {
    const LockedBlock texts(block);
    if (!texts) return Fail(TIFF_NO_MEMORY, false);
    uint32_t offset = 0;
    for (const TextField& field : kTextFields)
        note.*field.text = ReadCALSText(header, field.key, texts.As<char>(), offset);
    return true;
}

void WriteRecords(char* header, const CalsInfo& info, const CalsNote& note) {
    std::memset(header, ' ', CALS_HEADER_BYTES);
    char* record = header;
    for (const std::string_view key : kKeys) {
        std::copy(key.begin(), key.end(), record);
        record += CALS_RECORD_BYTES;
    }
    for (const TextField& field : kTextFields)
        WriteCALSText(header, field.key, note.*field.text);
    WriteCALSNumbers(header, kType, 1, {&info.rtype, 1});
    WriteCALSNumbers(header, kOrientation, 3, info.rorient);
    WriteCALSNumbers(header, kSize, 6, info.rpelcnt);
    WriteCALSNumbers(header, kDensity, 4, {&info.rdensty, 1});
}

}  // namespace
}  // namespace vellim

using namespace vellim;

GlobalHandle ReadCALSHead(const char* path) {
    if (path == nullptr || *path == '\0') return 0;
    OwnedBlock block = NewBlock();
    if (!block || !ReadRecords(path, block.Get())) return 0;
    return block.Release();
}

int32_t ReadCALSInfo(const char* path, CalsInfo* info) {
    if (info == nullptr) return 0;
    const OwnedBlock block(ReadCALSHead(path));
    if (!block) return 0;
    const LockedBlock header(block.Get());
    if (!header) return Fail(TIFF_NO_MEMORY, 0);
    *info = {};
    const bool isComplete = ReadRaster(header.As<char>(), *info);
    const bool isValid =
        isComplete && info->rtype == kRasterType1 && info->rpelcnt[0] != 0 && info->rpelcnt[1] != 0;
    return isValid ? 1 : Fail(TIFF_NOT_CALS, 0);
}

GlobalHandle ReadCALSNote(const char* path, CalsNote* note) {
    if (note == nullptr) return 0;
    const OwnedBlock block(ReadCALSHead(path));
    if (!block) return 0;
    const LockedBlock header(block.Get());
    if (!header) return Fail(TIFF_NO_MEMORY, GlobalHandle{0});
    *note = {};
    OwnedBlock texts = NewBlock();
    if (!texts || !ReadTexts(header.As<char>(), texts.Get(), *note)) return 0;
    return texts.Release();
}

GlobalHandle DefineCALSHead(const CalsInfo* info, const CalsNote* note) {
    if (info == nullptr) return 0;
    OwnedBlock block = NewBlock();
    if (!block) return 0;
    {
        const LockedBlock header(block.Get());
        if (!header) return Fail(TIFF_NO_MEMORY, GlobalHandle{0});
        WriteRecords(header.As<char>(), *info, note != nullptr ? *note : CalsNote{});
    }
    return block.Release();
}
