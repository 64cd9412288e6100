#include "container/chain_end.h"

#include "container/directory_reader.h"
#include "container/failure.h"

namespace vellim {

bool ChainEndIsFree(const TiffFile& file, StreamHandle stream) {
    StreamWindow window(stream);
    const auto link = ReadLong(window, file.TailLinkOffset, file.ByteOrder);
    if (!link) return Fail(TIFF_IO_ERROR, false);
    if (*link == 0) return true;
    return !ReadDirectorySummary(window, *link, file.ByteOrder) || Fail(TIFF_IO_ERROR, false);
}

}  // namespace vellim
