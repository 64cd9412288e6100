#include "bridge/appended_image.h"

#include "bridge/color_maps.h"
#include "bridge/save_tags.h"
#include "vellim/encode.h"
#include "vellim/failures.h"
#include "vellim/streams.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

bool DefineSizeTags(const AppendedImage& image, const SavedPicture& picture) {
    BITMAP record = picture.record;
    // A DIB's pixels keep their depth, however few colours its table has.
    if (picture.source != SaveSource::Dib && ThreadSaveChoices().ColorCount == kTwoColors) {
        record.bmPlanes = 1;
        record.bmBitsPixel = 1;
    }
    const int32_t result = DefineGeneralTags(image.File(), image.Index(), record);
    if (result != TIFF_SUCCESS && result != TIFF_BAD_COLOR_FORMAT) SetTiffError(result);
    return result == TIFF_SUCCESS;
}

bool DefineColorTags(const AppendedImage& image, const SavedPicture& picture) {
    if (picture.header == nullptr) return DefineColorMapFromSystem(image.File(), image.Index());
    return DefineColorMapFromDib(image.File(), image.Index(), ThreadSaveChoices().PhotometricChoice,
                                 picture.header, picture.blockBytes);
}

}  // namespace

AppendedImage::AppendedImage(const char* fileName) : file_(fileName, T_APPEND) {
    // The byte order is that of a file that is new. One that is there keeps its own, which the
    // writer finds out.
    isOpen_ = file_ && ModiTiffFileInfo(file_.Get(), nullptr, TIFF_LITTLE_ENDIAN) != 0;
    if (isOpen_) image_ = DefineTiffImage(file_.Get());
}

AppendedImage::~AppendedImage() {
    if (image_ < 0) return;
    const int32_t code = TiffError();
    DropTiffImage(file_.Get(), image_);
    SetTiffError(code);
}

bool AppendedImage::DefineTags(const SavedPicture& picture, uint32_t compression) const {
    return image_ >= 0 && DefineSaveTags(file_.Get(), image_, compression, picture.header) &&
           DefineSizeTags(*this, picture) && DefineColorTags(*this, picture);
}

}  // namespace vellim
