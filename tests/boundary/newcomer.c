/* A first program in C: counts the images of each file named, decodes each line by line, and prints
 * for each "file image width height bits digest", as newcomer_dib.cpp does. Result 1 at the first
 * failure, after its message. */
#include <stdio.h>

#include "vellim/vellim.h"

typedef struct Digest {
    uint32_t value;
    uint32_t lineBytes;
    uint32_t lines;
} Digest;

static uint32_t TakeLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    Digest* digest = (Digest*)callbackData;
    if (lineNumber != digest->lines) return TIFF_BAD_INDEX;
    digest->lines++;
    for (uint32_t i = 0; i < digest->lineBytes; i++)
        digest->value = (digest->value ^ line[i]) * 16777619u;
    return TIFF_LINE_GO_ON;
}

static int Complain(const char* path) {
    char message[TIFF_MESSAGE_BYTES];
    fprintf(stderr, "%s: %s\n", path, TiffErrorString(message, TiffError()));
    return 0;
}

static int ShowImage(TiffFileHandle file, int32_t image, const char* path) {
    TiffDimensions size;
    Digest digest = {2166136261u, 0, 0};
    if (!GetTiffImage(file, image)) return Complain(path);
    if (GetTiffDimensions(file, image, &size) != 0) return Complain(path);
    digest.lineBytes = ((uint32_t)size.biWidth * size.biBitCount + 7) / 8;
    if (!DecodeTiffImage(file, image, 0, 0, (uintptr_t)&digest, TakeLine)) return Complain(path);
    if (digest.lines != (uint32_t)size.biHeight) {
        fprintf(stderr, "%s: %u lines of %d\n", path, (unsigned)digest.lines, (int)size.biHeight);
        return 0;
    }
    printf("%s %d %d %d %u %08x\n", path, (int)image, (int)size.biWidth, (int)size.biHeight,
           size.biBitCount, (unsigned)digest.value);
    return DropTiffImage(file, image);
}

static int ShowFile(const char* path) {
    TiffFileInfo info;
    int32_t image = 0;
    TiffFileHandle file = OpenTiffFile(path, T_READ);
    if (file == 0) return Complain(path);
    int good = GetTiffFileInfo(file, &info);
    while (good && (uint32_t)image < info.ImageCount)
        good = ShowImage(file, image++, path);
    return CloseTiffFile(file) && good;
}

int main(int argc, char** argv) {
    int i = 1;
    while (i < argc && ShowFile(argv[i]))
        i++;
    return i < argc;
}
