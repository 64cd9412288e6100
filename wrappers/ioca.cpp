// IOCA image segments: what stands around the image data.
#include "container/failure.h"
#include "wrappers/ioca_head.h"
#include "wrappers/whole_write.h"

using namespace vellim;

int32_t WriteIOCAHeader(StreamHandle stream, const IocaHeader* header) {
    if (header == nullptr) return 0;
    return WriteWhole(stream, IocaHeadOf(*header)) ? 1 : Fail(TIFF_IO_ERROR, 0);
}

int32_t WriteIOCATail(StreamHandle stream) {
    constexpr std::array<uint8_t, 4> kEndContentAndSegment = {0x93, 0x00, 0x71, 0x00};
    return WriteWhole(stream, kEndContentAndSegment) ? 1 : 0;
}

int32_t ReadIOCAHeader(StreamHandle stream, IocaHeader* header) {
    if (header == nullptr) return 0;
    *header = {};
    HeadReader reader(stream);
    return ReadIocaHead(reader, *header) ? 1 : 0;
}
