#include "container/chain_end.h"

#include "container/directory_reader.h"
#include "container/failure.h"

namespace vellim {

bool FindChainEnd(TiffFile& file, StreamHandle stream) {
    StreamWindow window(stream);
    uint64_t tail = file.TailLinkOffset;
    for (int32_t images = file.ImageCount; images <= TIFF_MAX_IMAGES; images++) {
        const auto link = ReadLong(window, tail, file.ByteOrder);
        if (!link) break;
        const auto directory =
            *link != 0 ? ReadDirectorySummary(window, *link, file.ByteOrder) : std::nullopt;
        if (!directory) {
            file.TailLinkOffset = static_cast<uint32_t>(tail);
            return true;
        }
        tail = directory->LinkOffset;
    }
    return Fail(TIFF_IO_ERROR, false);
}

}  // namespace vellim
