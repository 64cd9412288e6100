// Encoding through VELLIM's public calls and through libtiff's.
#include "bench/writers.h"

#include <array>
#include <cstring>

#include "bench/readers.h"
#include "vellim/vellim.h"

namespace vellim::bench {

namespace {

constexpr uint32_t kColourBits = 24;
constexpr uint16_t kSampleBits = 8;

uint32_t CopyLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    const auto& page = *reinterpret_cast<const PageRows*>(callbackData);
    const size_t rowBytes = page.RowBytes();
    std::memcpy(line, &page.rows[lineNumber * rowBytes], rowBytes);
    return TIFF_LINE_GO_ON;
}

// Both libraries get their lines from a function that isn't known where they encode.
LineCallback volatile copyLine = CopyLine;

bool IsCcitt(const Coding& coding) {
    return coding.compression == COMPRESSION_CCITTRLE ||
           coding.compression == COMPRESSION_CCITTFAX3 ||
           coding.compression == COMPRESSION_CCITTFAX4;
}

void Put(TiffFileHandle file, uint32_t tag, uint32_t value) {
    DefineTiffImageInfo(file, 0, tag, TIFF_TYPE_SHORT, value);
}

bool DefineImage(TiffFileHandle file, const PageRows& page, const Coding& coding) {
    if (DefineTiffImage(file) != 0) return false;
    Put(file, TIFF_TAG_COMPRESSION, coding.compression);
    if (coding.compression == COMPRESSION_CCITTFAX3) Put(file, TIFF_TAG_T4_OPTIONS, coding.option);
    if (coding.compression == COMPRESSION_LZW) Put(file, TIFF_TAG_PREDICTOR, coding.option);
    Put(file, TIFF_TAG_PHOTOMETRIC, page.bitsPerPixel == kColourBits ? 2 : 0);
    BITMAP bitmap{};
    bitmap.bmWidth = static_cast<int32_t>(page.width);
    bitmap.bmHeight = static_cast<int32_t>(page.height);
    bitmap.bmPlanes = 1;
    bitmap.bmBitsPixel = static_cast<uint16_t>(page.bitsPerPixel);
    return DefineGeneralTags(file, 0, bitmap) == 0;
}

void DefineFields(TIFF* tiff, const PageRows& page, const Coding& coding) {
    const bool colour = page.bitsPerPixel == kColourBits;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, page.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, page.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, colour ? kSampleBits : page.bitsPerPixel);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, colour ? 3 : 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, colour ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, coding.compression);
    if (coding.compression == COMPRESSION_CCITTFAX3)
        TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, uint32_t{coding.option});
    if (coding.compression == COMPRESSION_LZW) TIFFSetField(tiff, TIFFTAG_PREDICTOR, coding.option);
    // Fax pages are one strip; else libtiff chooses, and comes to about 8,192 bytes as VELLIM does.
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                 IsCcitt(coding) ? page.height : TIFFDefaultStripSize(tiff, 0));
}

bool WriteStrips(TIFF* tiff, const PageRows& page, Bytes& buffer) {
    uint32_t rowsPerStrip = page.height;
    TIFFGetField(tiff, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    const size_t rowBytes = page.RowBytes();
    buffer.resize(rowBytes * rowsPerStrip);
    const LineCallback callback = copyLine;
    uint32_t strip = 0;
    for (uint32_t row = 0; row < page.height; ++strip) {
        uint32_t filled = 0;
        for (; filled < rowsPerStrip && row < page.height; ++filled, ++row)
            callback(&buffer[filled * rowBytes], row, reinterpret_cast<uintptr_t>(&page));
        const auto bytes = static_cast<tmsize_t>(filled * rowBytes);
        if (TIFFWriteEncodedStrip(tiff, strip, buffer.data(), bytes) != bytes) return false;
    }
    return true;
}

bool WriteLines(TIFF* tiff, const PageRows& page, Bytes& buffer) {
    buffer.resize(page.RowBytes());
    const LineCallback callback = copyLine;
    for (uint32_t row = 0; row < page.height; ++row) {
        callback(buffer.data(), row, reinterpret_cast<uintptr_t>(&page));
        if (TIFFWriteScanline(tiff, buffer.data(), row) != 1) return false;
    }
    return true;
}

}  // namespace

PageRows RowsOfPage(const Page& page) {
    return {page.width, page.height, page.bitsPerPixel, RowsOf(PageBlock(page.file))};
}

GlobalHandle EncodeWithVellim(const PageRows& page, const Coding& coding) {
    const TiffFileHandle file = OpenTiffInMemory(0, 0, T_CREAT);
    const bool written =
        file != 0 && DefineImage(file, page, coding) &&
        EncodeTiffImage(file, 0, reinterpret_cast<uintptr_t>(&page), copyLine) == 1;
    const GlobalHandle block = GetMemoryTiffHandle(file);
    CloseTiffFile(file);
    if (written) return block;
    GlobalFree(block);
    return 0;
}

bool EncodeMmrWithVellim(const PageRows& page, const std::string& path) {
    const int32_t stream = OpenFile(path.c_str(), nullptr, OF_CREATE | OF_READWRITE);
    const bool written =
        EncodeMMRImage(stream, static_cast<int32_t>(page.width), static_cast<int32_t>(page.height),
                       0, reinterpret_cast<uintptr_t>(&page), copyLine) == 1;
    _lclose(stream);
    return written;
}

bool EncodeWithLibtiff(const PageRows& page, const Coding& coding, LibtiffWrite call, Bytes& buffer,
                       Bytes& file) {
    // A new file takes new memory, with either writer. libtiff's is taken at once, in the size that
    // the file had last time.
    const size_t lastSize = file.size();
    file = Bytes();
    file.reserve(lastSize);
    MemoryFile memory{&file};
    const TiffPointer tiff = OpenForWriting(memory);
    if (tiff == nullptr) return false;
    DefineFields(tiff.get(), page, coding);
    return call == LibtiffWrite::EncodedStrip ? WriteStrips(tiff.get(), page, buffer)
                                              : WriteLines(tiff.get(), page, buffer);
}

}  // namespace vellim::bench
