// What an image would lose when it is copied, or when its file is written anew for an edit.
//
// Both carry the directory, its values and the strips (or JPEG tiles and tables). Whatever else a
// tag only points to stays behind, and so do images that the chain doesn't lead to.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "document.h"

namespace vellim::tool {

// Why the image, whose tags are in memory, can't be carried into a file of byte order `order` at
// all, in words; empty if it can.
std::string CarryObstacle(const Document& document, int32_t image, uint16_t order);

// The tags of an image in memory that point to something which stays behind.
std::vector<uint32_t> TagsLeftDangling(TiffFileHandle file, int32_t image);

// "ExifIFD (34665) points to a directory, which would be lost"
std::string DanglingInWords(TiffFileHandle file, int32_t image, uint32_t tag);

// "ExifIFD (34665) was left out, with the directory that it pointed to"
std::string LeftOutInWords(TiffFileHandle file, int32_t image, uint32_t tag);

// What becomes of images behind the document's last one, in words; empty if there are none.
std::string ImagesOutOfReach(const Document& document);

// TIFF_LITTLE_ENDIAN or TIFF_BIG_ENDIAN.
uint16_t ByteOrderOf(TiffFileHandle file);

}  // namespace vellim::tool
