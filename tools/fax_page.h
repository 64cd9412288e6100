// Pages of text as the library's page maker draws them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "fax_layout.h"
#include "font_context.h"
#include "image_facts.h"
#include "passing_file.h"
#include "picture.h"
#include "vellim/fax.h"

namespace vellim::tool {

// A form's pixels, as a device bitmap has them.
struct FaxForm {
    BITMAP shape = {};
    std::vector<uint8_t> bits;
};

struct FaxJob {
    FaxPageRequest request = {};
    LOGFONT font = {};      // that the request points to
    Resolution resolution;  // as it is stored
    std::optional<FaxForm> form;
    FaxLetters letters;
    FaxFrame frame;
    PassingFile textFile;
};

// Null, with the reason in `why`, if there can be no such page.
std::unique_ptr<FaxJob> MakeFaxJob(const FaxOptions& options, std::string& why);

// A bitmap of a page that LayOutPages has made, on the form if there is one. 0, with the reason in
// `why`, if it can't be drawn.
OwnedObject DrawFaxPage(FaxJob& job, const std::string& text, std::string& why);

// What a bitmap's rows are.
Picture DescribeBitmap(const BITMAP& bitmap);

// Gives the bitmap's rows to `lines`, from the top. False, with the reason in `why` where `lines`
// doesn't know it.
bool PutBitmap(BitmapHandle bitmap, const LineSink& lines, std::string& why);

}  // namespace vellim::tool
