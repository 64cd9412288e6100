// A first program in C++: loads each image of each file named as a DIB and prints for each "file
// image width height bits digest", as newcomer.c does by the other road. Result 1 at the first
// failure, after its message.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "vellim/vellim.h"

namespace {

// Bytes as the file stores them: lines from the top without padding, red before blue.
uint32_t DigestOf(const uint8_t* dib, const BITMAPINFOHEADER& header) {
    const auto lineBits = static_cast<uint32_t>(header.biWidth) * header.biBitCount;
    const uint32_t lineBytes = (lineBits + 7) / 8;
    const uint32_t storedBytes = (lineBits + 31) / 32 * 4;
    const uint8_t* bits = dib + header.biSize + header.biClrUsed * sizeof(RGBQUAD);
    uint32_t digest = 2166136261U;
    for (int32_t line = header.biHeight; line-- > 0;) {
        const uint8_t* row = bits + static_cast<size_t>(line) * storedBytes;
        for (uint32_t i = 0; i < lineBytes; i++) {
            const uint32_t from = header.biBitCount == 24 ? i - i % 3 + 2 - i % 3 : i;
            digest = (digest ^ row[from]) * 16777619U;
        }
    }
    return digest;
}

bool ShowImage(const char* path, int32_t image) {
    const DibHandle block = LoadTiffIntoDIB(path, image, 0);
    const auto* dib = static_cast<const uint8_t*>(GlobalLock(block));
    if (dib == nullptr || TiffError() != TIFF_SUCCESS) {
        std::array<char, TIFF_MESSAGE_BYTES> message{};
        std::fprintf(stderr, "%s: %s\n", path, TiffErrorString(message.data(), TiffError()));
        return false;
    }
    BITMAPINFOHEADER header;
    std::memcpy(&header, dib, sizeof header);
    std::printf("%s %d %d %d %u %08x\n", path, image, header.biWidth, header.biHeight,
                static_cast<unsigned>(header.biBitCount), DigestOf(dib, header));
    GlobalUnlock(block);
    return GlobalFree(block) == 0;
}

bool ShowFile(const char* path) {
    const int32_t images = GetNumberOfImagesInTiffFile(path);
    for (int32_t image = 0; image < images; image++)
        if (!ShowImage(path, image)) return false;
    return images >= 1;
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; i++)
        if (!ShowFile(argv[i])) return 1;
}
