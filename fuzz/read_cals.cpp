// Any bytes as a CALS file: its header, its texts and its picture, which is stored and loaded
// again.
#include <cstring>

#include "fuzz/checks.h"
#include "support/test_files.h"
#include "vellim/vellim.h"

namespace vellim::fuzz {
namespace {

// The image data that a DIB is stored as.
test::Bytes SavedData(const char* path, GlobalHandle dib) {
    Require(SaveDIBInCALSFormat(path, dib, nullptr, nullptr, 0) == 1, "a picture is saved");
    const test::Bytes file = test::ReadFile(path);
    return {file.begin() + CALS_HEADER_BYTES, file.end()};
}

// A loaded picture may have bits behind its rows' last pixels, so data is compared, not rows.
void SaveAndLoad(const char* path, GlobalHandle dib) {
    const test::Bytes data = SavedData(path, dib);
    const OwnedBlock again(LoadCALSIntoDIB(path, 0));
    Require(TiffError() == TIFF_SUCCESS, "what is saved is whole");
    Require(SavedData(path, again.Get()) == data, "it is loaded as it was saved");
}

}  // namespace
}  // namespace vellim::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vellim;
    const fuzz::BlockBalance balance;
    SetTiffSizeLimits(5000, 500);
    const std::string path = test::FileOf({data, data + size}, "picture.cal");
    CalsNote note{};
    if (const OwnedBlock texts(ReadCALSNote(path.c_str(), &note)); texts)
        for (const char* text : {note.srcdocid, note.figid, note.notes})
            fuzz::Require(text == nullptr || std::strlen(text) - 1 < 120, "a text fits its record");
    const OwnedBlock dib(LoadCALSIntoDIB(path.c_str(), 0));
    fuzz::RequireTold(dib ? 1 : 0, TiffError());
    if (dib) fuzz::SaveAndLoad(path.c_str(), dib.Get());
    return 0;
}
