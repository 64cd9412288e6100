#include "note_page.h"

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "image_facts.h"
#include "losses.h"
#include "messages.h"
#include "note_pixels.h"
#include "pixel_format.h"
#include "tag_names.h"
#include "tag_rules.h"
#include "tag_values.h"
#include "tiff_writer.h"
#include "vellim/codec.h"
#include "vellim/failures.h"
#include "vellim/tags.h"

namespace vellim::tool {
namespace {

enum Compression : uint32_t { kCcitt1D = 2, kGroup3 = 3, kGroup4 = 4, kLzw = 5 };
constexpr uint32_t kTwoDimensional = 1;  // of T4Options
constexpr uint32_t kDifferencing = 2;    // Predictor
constexpr uint32_t kSampleFormat = 339;

// How a page's data was compressed; nothing for what the encoders don't make.
std::optional<TiffCompression> CompressionOf(const ImageFacts& facts) {
    switch (facts.compression) {
        case TIFF_KEY_NONE:
            return TiffCompression::None;
        case kCcitt1D:
            return TiffCompression::G3;
        case kGroup3:
            return (facts.t4Options & kTwoDimensional) != 0 ? TiffCompression::G3TwoD
                                                            : TiffCompression::G3Eol;
        case kGroup4:
            return TiffCompression::G4;
        case kLzw:
            return facts.predictor == kDifferencing ? TiffCompression::LzwDifferencing
                                                    : TiffCompression::Lzw;
        case TIFF_KEY_PACKBITS:
            return TiffCompression::PackBits;
        default:
            return {};
    }
}

// Of the tags that tell of the data, those that are as true of the new data: a pixel keeps its
// form.
constexpr std::array<uint32_t, 3> kStillTrue = {TIFF_TAG_PLANAR_CONFIGURATION, TIFF_TAG_COLOR_MAP,
                                                kSampleFormat};

// Whether the tag tells of the data, which is written anew with tags of its own.
bool TellsOfData(uint32_t tag) {
    if (std::find(kStillTrue.begin(), kStillTrue.end(), tag) != kStillTrue.end()) return false;
    const TagRole role = RuleOf(tag).role;
    return role == TagRole::DescribesData || role == TagRole::PointsIntoFile ||
           tag == TIFF_TAG_PHOTOMETRIC;
}

bool IsHeldInPart(uint32_t type) {
    return type == kFieldSignedShort || (type >= kFieldSignedRational && type <= kFieldDirectory);
}

std::vector<TagValue> KeptTags(TiffFileHandle file, int32_t image) {
    std::vector<TagValue> kept;
    for (const uint32_t tag : ReadTagNumbers(file, image)) {
        auto value = ReadTag(file, image, tag);
        const bool keeps = value && tag != NOTE_TAG && !TellsOfData(tag);
        if (keeps && !IsHeldInPart(value->type)) kept.push_back(std::move(*value));
    }
    return kept;
}

struct Burning {
    const PageInfo* page = nullptr;
    NoteBand band;
    std::string failure;  // on the output's side; behind it in time comes its user
    LineSink sink;
    uint32_t came = 0;
    Progress* progress = nullptr;
};

bool PutBand(Burning& burning) {
    if (!BurnBand(burning.page->picture, burning.band)) {
        burning.failure = "not enough memory to burn the note";
        return false;
    }
    for (const std::vector<uint8_t>& line : burning.band.lines) {
        if (!burning.sink.Put(line.data())) return false;
    }
    burning.band.lines.clear();
    return true;
}

// Lines of the note's box wait until all of them are there.
bool PutLine(Burning& burning, const uint8_t* line) {
    const auto y = static_cast<int32_t>(burning.came);
    const RECT& box = burning.band.box;
    burning.progress->Step(++burning.came);
    if (y < box.top || y >= box.bottom) return burning.sink.Put(line);
    burning.band.lines.emplace_back(line, line + RowBytes(burning.page->picture));
    return y + 1 < box.bottom || PutBand(burning);
}

bool OnLine(void* data, uint8_t* line) noexcept {
    auto& burning = *static_cast<Burning*>(data);
    const Picture& picture = burning.page->picture;
    try {
        NormaliseLine(line, picture.width, picture.type, burning.page->whiteIsZero);
        return PutLine(burning, line);
    } catch (const std::bad_alloc&) {
        burning.failure = FailureMessage(TIFF_NO_MEMORY);
    } catch (const std::system_error& error) {  // no thread to be had
        burning.failure = error.what();
    }
    return false;
}

bool FillWithWhite(Burning& burning) {
    const Picture& picture = burning.page->picture;
    const std::vector<uint8_t> white = WhiteLine(picture);
    while (burning.came < picture.height) {
        if (!PutLine(burning, white.data())) return false;
    }
    return true;
}

// The tags that tell how data is coded and have for the new data what they had for the old.
std::vector<uint32_t> OptionsStillTrue(const ImageFacts& facts, const TiffPlan& plan) {
    const bool differs = plan.compression == TiffCompression::LzwDifferencing;
    std::vector<uint32_t> tags;
    if (plan.fillOrder == facts.fillOrder) tags.push_back(TIFF_TAG_FILL_ORDER);
    if (facts.predictor == (differs ? kDifferencing : 1)) tags.push_back(TIFF_TAG_PREDICTOR);
    return tags;
}

std::optional<TiffPage> PlanPage(const PageSource& source, int32_t image, const PageInfo& info,
                                 std::string& why) {
    const TiffFileHandle file = source.tiff->File();
    const ImageFacts facts = GatherFacts(file, image);
    TiffOptions options;
    options.fillOrder = facts.fillOrder;
    options.compression = CompressionOf(facts);
    if (!options.compression) {
        why = "its compression, " + CompressionName(facts.compression) + ", can't be written";
        return {};
    }
    auto plan = PlanTiffPage(info.picture, options, why);
    if (!plan) return {};
    if (plan->type != info.picture.type) {
        why = "its compression is for black and white";
        return {};
    }
    TiffPage page;
    page.picture = info.picture;
    page.whiteIsZero = info.whiteIsZero;
    page.carried = KeptTags(file, image);
    page.plan = std::move(*plan);
    for (const uint32_t tag : OptionsStillTrue(facts, page.plan)) {
        if (auto value = ReadTag(file, image, tag)) page.carried.push_back(std::move(*value));
    }
    return page;
}

}  // namespace

std::vector<uint32_t> TagsLostByBurning(TiffFileHandle file, int32_t image) {
    std::vector<uint32_t> lost = TagsLeftDangling(file, image);
    for (const uint32_t tag : ReadTagNumbers(file, image)) {
        const auto value = ReadTag(file, image, tag);
        const bool known = std::find(lost.begin(), lost.end(), tag) != lost.end();
        if (value && !known && !TellsOfData(tag) && IsHeldInPart(value->type)) lost.push_back(tag);
    }
    return lost;
}

bool AddBurnedPage(const PageSource& source, int32_t image, const NoteAnswer& note,
                   bool acceptDamage, TiffOutput& output, BurnedPage& page, std::string& why) {
    const OwnedPage opened = OpenPage(source, static_cast<uint32_t>(image), why);
    if (!opened) return false;
    const PageInfo& info = InfoOf(*opened);
    const auto planned = PlanPage(source, image, info, why);
    if (!planned) return false;
    Progress progress(source.name, image, info.picture.height);
    Burning burning;
    burning.page = &info;
    burning.progress = &progress;
    if (!FindNoteBand(info.picture, note, burning.band, why)) return false;
    auto sink = BeginTiff(*planned, output, burning.failure);
    if (sink) {
        burning.sink = std::move(*sink);
        const LinesEnd end = PushLines(*opened, {OnLine, &burning});
        page = {burning.came, info.picture.height, end.reason};
    }
    why = burning.failure;
    if (!why.empty()) return false;
    if (page.came < page.due && (page.came == 0 || !acceptDamage)) {
        why = page.reason + " (" + LinesOf(page.came, page.due) + " came)";
        return false;
    }
    const bool written = FillWithWhite(burning) && burning.sink.Finish();
    why = burning.failure;
    return written;
}

}  // namespace vellim::tool
