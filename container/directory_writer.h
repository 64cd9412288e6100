// Writing a directory (TIFF 6.0, section 2) and hooking it into its file's chain. Values stand in
// front of their directory, without alignment.
#pragma once

#include <cstdint>

#include "container/tag_buffer.h"
#include "container/tiff_file.h"
#include "platform/guards.h"
#include "vellim/streams.h"

namespace vellim {

inline constexpr uint32_t kCreateBit = OF_CREATE;        // of TiffFile::OpenStyle: a header is due
inline constexpr uint32_t kWrittenStyle = OF_READWRITE;  // once a directory stands in the file
inline constexpr uint32_t kHeaderBytes = 8;
inline constexpr uint32_t kLongestStoredValue = 32767;  // a longer one couldn't be read back

// Writes the header of a file in `byteOrder` at the stream's position. False, with code 6.
bool WriteNewHeader(StreamHandle stream, uint16_t byteOrder, uint32_t firstDirectory);

// A file that is new gets its header at the stream's position, with the offset of its first
// directory. Any other has its stream moved to its end, and the file's record takes the byte order
// of the header that is there, and on disk the place where the chain ends now. False, with code 6,
// when that can't be done.
bool WriteTiffHeader(TiffFile& file, StreamHandle stream, uint32_t firstDirectory);

// A tag of a buffer, by the place of its record.
struct ListedTag {
    uint32_t Tag;
    uint32_t Place;
};

// The tags in ascending order, as an array of ListedTag, and how many there are. Where a tag stands
// twice, both list the first one's record. No block, with code 1, without memory.
OwnedBlock SortedTagList(const TagBuffer& tags, uint32_t& count);

// Whether every value could be read back from a file.
bool CanBeStored(const TagBuffer& tags);

// Writes `link` at `linkOffset`, in `byteOrder`. False, with code 6, when it can't.
bool WriteLink(StreamHandle stream, uint32_t linkOffset, uint32_t link, uint16_t byteOrder);

// Writes values and directory behind all that the stream holds and hooks it into the chain. 0, 1
// (no tag list), 6, or 9 with nothing written. Until the last step the chain is as it was.
uint32_t WriteImageDirectory(TiffFileHandle file, int32_t image, StreamHandle stream);

}  // namespace vellim
