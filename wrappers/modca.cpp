// MO:DCA picture data: the three bytes of the structured fields that begin and end it, around an
// IOCA image segment.
#include <algorithm>

#include "container/failure.h"
#include "wrappers/ioca_head.h"
#include "wrappers/picture_starts.h"
#include "wrappers/whole_write.h"

namespace vellim {
namespace {

constexpr std::array<uint8_t, 3> kPictureData = {0xD3, 0xEE, 0xFB};
constexpr std::array<uint8_t, 3> kEndPicture = {0xD3, 0xA9, 0xC7};
constexpr uint32_t kPlacesSearched = 2048;
constexpr uint32_t kModcaHeadBytes = kPictureData.size() + kIocaHeadBytes;

constexpr int32_t kFromStart = 0;
constexpr int32_t kFromPosition = 1;

// The length field of what an application puts in front of the picture.
constexpr int32_t kLengthOffset = 28;
constexpr int32_t kBehindLength = 30;

// A byte that doesn't match is spent: it isn't looked at again as a possible beginning.
bool FindPictureData(HeadReader& reader) {
    for (uint32_t place = 0; place < kPlacesSearched; place++) {
        const auto first = reader.Byte();
        if (!first) return false;
        if (first == kPictureData[0] && reader.Byte() == kPictureData[1] &&
            reader.Byte() == kPictureData[2])
            return true;
    }
    return false;
}

// Whether there is a length field in front of a picture of which it isn't known where it was begun:
// the file is looked at, and where it can't be read, a picture in front of the field is ruled out
// by its length alone. `position` is taken up again.
bool MayHaveLengthField(StreamHandle stream, int32_t position) {
    if (position < kBehindLength) return false;
    std::array<uint8_t, kBehindLength + kPictureData.size() - 1> front{};
    int32_t got = -1;
    if (_llseek(stream, 0, kFromStart) == 0)
        got = _lread(stream, front.data(), uint32_t{front.size()});
    if (_llseek(stream, position, kFromStart) != position) return false;
    if (got < 0) return position >= kBehindLength + int32_t{kModcaHeadBytes};
    return std::search(front.begin(), front.begin() + got, kPictureData.begin(),
                       kPictureData.end()) == front.begin() + got;
}

// Tells how far it is from the length field to `position`, which is taken up again. False when it
// can't be.
bool WriteLength(StreamHandle stream, int32_t position) {
    const int32_t length = position - kLengthOffset;
    const std::array<uint8_t, 2> bytes = {static_cast<uint8_t>(length >> 8),
                                          static_cast<uint8_t>(length)};
    if (_llseek(stream, kLengthOffset, kFromStart) == kLengthOffset) WriteWhole(stream, bytes);
    return _llseek(stream, position, kFromStart) == position;
}

}  // namespace
}  // namespace vellim

using namespace vellim;

int32_t WriteMODCAHeader(StreamHandle stream, const IocaHeader* header) {
    if (header == nullptr) return 0;
    const auto ioca = IocaHeadOf(*header);
    std::array<uint8_t, kModcaHeadBytes> head{};
    std::copy(ioca.begin(), ioca.end(),
              std::copy(kPictureData.begin(), kPictureData.end(), head.begin()));
    TakePictureStart(stream);
    const int32_t start = _llseek(stream, 0, kFromPosition);
    if (!WriteWhole(stream, head)) return Fail(TIFF_IO_ERROR, 0);
    RememberPictureStart(stream, start);
    return 1;
}

// A picture that begins before the end of the length field has bytes of its own there.
int32_t WriteMODCATail(StreamHandle stream) {
    const int32_t start = TakePictureStart(stream);
    const int32_t position = _llseek(stream, 0, kFromPosition);
    const bool hasField = start >= 0 ? start >= kBehindLength && position >= start
                                     : MayHaveLengthField(stream, position);
    if (hasField && !WriteLength(stream, position)) return Fail(TIFF_IO_ERROR, 0);
    const bool hasTail = WriteIOCATail(stream) != 0;
    if (!WriteWhole(stream, kEndPicture)) return Fail(TIFF_IO_ERROR, 0);
    return hasTail ? 1 : 0;
}

int32_t ReadMODCAHeader(StreamHandle stream, IocaHeader* header) {
    if (header == nullptr) return 0;
    *header = {};
    HeadReader reader(stream);
    return FindPictureData(reader) && ReadIocaHead(reader, *header) ? 1 : 0;
}
