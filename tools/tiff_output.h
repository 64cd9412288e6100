// A TIFF file that is being built: a passing file, which takes its name when it is whole.
//
//     std::string why;
//     auto output = CreateTiffOutput(path, 0, Overwrite::Refuse, why);
//     if (!output) return ...;                      // tell `why`
//     CopyTiffImage(source, 0, output->File());     // or any other call that adds an image
//     if (!CommitTiffOutput(*output, why)) ...;     // without it nothing is left
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "handles.h"
#include "passing_file.h"
#include "vellim/files.h"
#include "vellim/streams.h"

namespace vellim::tool {

struct TiffOutput {
    PassingFile passing;
    std::string target;      // as it was asked for; "-": standard output
    bool copied = false;     // the target is no file that could take a name: bytes go to it
    std::string openPath;    // what the library opens the passing file by
    int32_t imageCount = 0;  // images that it held when it was opened
    uint16_t byteOrder = TIFF_LITTLE_ENDIAN;
    OwnedTiff tiff;  // last, so that it is closed before the file goes

    [[nodiscard]] TiffFileHandle File() const { return tiff.Get(); }
    [[nodiscard]] const std::string& Path() const { return openPath; }
};

// Begins a TIFF file at `path`, which may be "-", a pipe or a device: then it is built among the
// temporary files and copied at the end. `byteOrder` is TIFF_LITTLE_ENDIAN, TIFF_BIG_ENDIAN, or 0:
// that of the file that is appended to, else little-endian.
//
// Overwrite::Append begins with a copy of the file that is there, which is locked until the output
// goes; a missing or empty one is begun anew. It is refused if it is no TIFF file, if its chain of
// images is broken, if it is full (TIFF_MAX_IMAGES, or more than can be told), or if `byteOrder`
// isn't its own.
//
// Null, with the reason in `why`, if it can't be.
std::unique_ptr<TiffOutput> CreateTiffOutput(const std::string& path, uint16_t byteOrder,
                                             Overwrite mode, std::string& why);

// Closes the TIFF file, flushes it to disk and gives it its name. False with the reason in `why`.
bool CommitTiffOutput(TiffOutput& output, std::string& why);

}  // namespace vellim::tool
