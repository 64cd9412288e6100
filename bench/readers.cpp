// Decoding through VELLIM's public calls and through libtiff's; each line goes to the same
// callback.
#include "bench/readers.h"

#include <algorithm>
#include <cstring>

#include "vellim/vellim.h"

namespace vellim::bench {

namespace {

uint32_t CountLine(uint8_t* /*line*/, uint32_t /*lineNumber*/, uintptr_t callbackData) {
    ++*reinterpret_cast<uint32_t*>(callbackData);
    return TIFF_LINE_GO_ON;
}

struct CollectedRows {
    Bytes rows;
    size_t rowBytes;
};

uint32_t CollectLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    auto& collected = *reinterpret_cast<CollectedRows*>(callbackData);
    const size_t start = lineNumber * collected.rowBytes;
    if (start + collected.rowBytes > collected.rows.size()) return TIFF_IO_ERROR;
    std::memcpy(&collected.rows[start], line, collected.rowBytes);
    return TIFF_LINE_GO_ON;
}

bool DecodeFirstImage(const PageBlock& block, uintptr_t callbackData, LineCallback callback) {
    const TiffFileHandle file = OpenTiffInMemory(block.Handle(), block.Size(), T_READ);
    if (file == 0) return false;
    const bool decoded =
        GetTiffImage(file, 0) == 1 && DecodeTiffImage(file, 0, 0, 0, callbackData, callback) == 1;
    CloseTiffFile(file);
    return decoded;
}

bool DecodeMmr(const std::string& path, uint32_t width, uint32_t height, uintptr_t callbackData,
               LineCallback callback) {
    const int32_t stream = OpenFile(path.c_str(), nullptr, OF_READ);
    const bool decoded =
        DecodeMMRImage(stream, 0, static_cast<int32_t>(width), static_cast<int32_t>(height), 0,
                       TIFF_FILL_MSB_FIRST, TIFF_LITTLE_ENDIAN, callbackData, callback) == 1;
    _lclose(stream);
    return decoded;
}

// Both libraries hand each line to a function that isn't known where they decode.
LineCallback volatile countLine = CountLine;

uint32_t ReadStrips(TIFF* tiff, uint32_t height, Bytes& buffer) {
    buffer.resize(static_cast<size_t>(TIFFStripSize(tiff)));
    const auto rowBytes = static_cast<size_t>(TIFFScanlineSize(tiff));
    const uint32_t strips = TIFFNumberOfStrips(tiff);
    const LineCallback callback = countLine;
    uint32_t lines = 0;
    for (uint32_t strip = 0; strip < strips; ++strip) {
        const tmsize_t bytes = TIFFReadEncodedStrip(tiff, strip, buffer.data(), -1);
        if (bytes < 0) return 0;
        for (size_t at = 0; at + rowBytes <= static_cast<size_t>(bytes); at += rowBytes)
            callback(&buffer[at], lines, reinterpret_cast<uintptr_t>(&lines));
    }
    return lines == height ? lines : 0;
}

uint32_t ReadLines(TIFF* tiff, uint32_t height, Bytes& buffer) {
    buffer.resize(static_cast<size_t>(TIFFScanlineSize(tiff)));
    const LineCallback callback = countLine;
    uint32_t lines = 0;
    for (uint32_t row = 0; row < height; ++row) {
        if (TIFFReadScanline(tiff, buffer.data(), row) != 1) return 0;
        callback(buffer.data(), row, reinterpret_cast<uintptr_t>(&lines));
    }
    return lines;
}

}  // namespace

PageBlock::PageBlock(const Bytes& file)
    : block_(GlobalAlloc(GHND, static_cast<uint32_t>(file.size()))),
      size_(static_cast<int32_t>(file.size())) {
    if (void* bytes = GlobalLock(block_)) {
        std::memcpy(bytes, file.data(), file.size());
        GlobalUnlock(block_);
    }
}

PageBlock::~PageBlock() {
    GlobalFree(block_);
}

uint32_t DecodeWithVellim(const PageBlock& block) {
    uint32_t lines = 0;
    if (!DecodeFirstImage(block, reinterpret_cast<uintptr_t>(&lines), countLine)) return 0;
    return lines;
}

uint32_t DecodeMmrWithVellim(const std::string& path, uint32_t width, uint32_t height) {
    uint32_t lines = 0;
    const auto callbackData = reinterpret_cast<uintptr_t>(&lines);
    return DecodeMmr(path, width, height, callbackData, countLine) ? lines : 0;
}

bool MmrGives(const std::string& path, uint32_t width, uint32_t height, const Bytes& rows) {
    CollectedRows collected{Bytes(rows.size()), rows.size() / height};
    const auto callbackData = reinterpret_cast<uintptr_t>(&collected);
    return DecodeMmr(path, width, height, callbackData, CollectLine) && collected.rows == rows;
}

uint32_t DecodeWithLibtiff(Bytes& file, LibtiffCall call, Bytes& buffer) {
    MemoryFile memory{&file};
    const TiffPointer tiff = OpenForReading(memory);
    uint32_t height = 0;
    if (tiff == nullptr || TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) == 0) return 0;
    return call == LibtiffCall::EncodedStrip ? ReadStrips(tiff.get(), height, buffer)
                                             : ReadLines(tiff.get(), height, buffer);
}

Bytes RowsOf(const PageBlock& block) {
    const TiffFileHandle file = OpenTiffInMemory(block.Handle(), block.Size(), T_READ);
    TiffDimensions size{};
    CollectedRows collected{};
    if (GetTiffImage(file, 0) == 1 && GetTiffDimensions(file, 0, &size) == 0) {
        collected.rowBytes = (static_cast<size_t>(size.biWidth) * size.biBitCount + 7) / 8;
        collected.rows.resize(collected.rowBytes * static_cast<size_t>(size.biHeight));
    }
    const bool whole =
        DecodeTiffImage(file, 0, 0, 0, reinterpret_cast<uintptr_t>(&collected), CollectLine) == 1;
    CloseTiffFile(file);
    return whole ? collected.rows : Bytes{};
}

bool ReadersAgree(const PageBlock& block, Bytes& file) {
    MemoryFile memory{&file};
    const TiffPointer tiff = OpenForReading(memory);
    uint32_t height = 0;
    if (tiff == nullptr || TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &height) == 0)
        return false;

    const auto rowBytes = static_cast<size_t>(TIFFScanlineSize(tiff.get()));
    CollectedRows ours{Bytes(rowBytes * height, 0xA5), rowBytes};
    if (!DecodeFirstImage(block, reinterpret_cast<uintptr_t>(&ours), CollectLine)) return false;

    Bytes line(rowBytes);
    for (uint32_t row = 0; row < height; ++row) {
        if (TIFFReadScanline(tiff.get(), line.data(), row) != 1) return false;
        if (std::memcmp(line.data(), &ours.rows[row * rowBytes], rowBytes) != 0) return false;
    }
    return true;
}

}  // namespace vellim::bench
