// The image is decoded, darkened and encoded line by line. The encoder tells anew how the data is
// stored; all other tags are those of the image. Values of types that the library doesn't hold in
// memory in full are put in by an edit of the file.
#include "stamp_page.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <system_error>

#include "image_facts.h"
#include "messages.h"
#include "pixel_format.h"
#include "tag_input.h"
#include "tag_names.h"
#include "tag_rewrite.h"
#include "tag_rules.h"
#include "tiff_writer.h"
#include "vellim/codec.h"
#include "vellim/failures.h"
#include "vellim/tags.h"

namespace vellim::tool {
namespace {

constexpr StampDots kUnknownDots = {200, 200};
constexpr uint32_t kLzw = 5;  // Compression
constexpr uint32_t kPredictorDifferencing = 2;

// ---- Tags. ----

bool IsWide(uint32_t type) {
    return type == kFieldSignedShort || type == kFieldSignedRational || type == kFieldFloat ||
           type == kFieldDouble;
}

// Whether the tag holds for the data as it is stored anew.
bool IsKept(uint32_t tag, const ImageFacts& facts) {
    constexpr uint32_t kSampleFormat = 339;
    if (tag == TIFF_TAG_COLOR_MAP || tag == kSampleFormat) return true;
    if (tag == TIFF_TAG_FILL_ORDER) return facts.fillOrder == TIFF_FILL_MSB_FIRST;
    if (tag == TIFF_TAG_PLANAR_CONFIGURATION) return facts.planes == 1;
    if (tag == TIFF_TAG_PREDICTOR) return facts.compression == kLzw && facts.predictor == 1;
    if (tag == TIFF_TAG_T6_OPTIONS) return facts.compression == TIFF_KEY_GROUP4;
    const TagRole role = RuleOf(tag).role;
    return role == TagRole::Free || role == TagRole::Needed;
}

struct KeptTags {
    std::vector<TagValue> plain;
    std::vector<TagValue> wide;
};

bool ReadKeptTags(TiffFileHandle file, int32_t image, const ImageFacts& facts, KeptTags& kept,
                  std::string& why) {
    for (const uint32_t tag : ReadTagNumbers(file, image)) {
        auto value = ReadTag(file, image, tag);
        if (!value || value->type == kFieldDirectory || !IsKept(tag, facts)) continue;
        if (!IsWide(value->type)) {
            kept.plain.push_back(std::move(*value));
            continue;
        }
        const auto words = ElementsInWords(file, image, *value, value->count);
        value = ParseTagValue(tag, value->type, words, why);
        if (!value) {
            why.insert(0, TagInWords(tag) + " can't be carried over: ");
            return false;
        }
        kept.wide.push_back(std::move(*value));
    }
    return true;
}

// ---- The plan. ----

TiffCompression CompressionOf(const ImageFacts& facts) {
    switch (facts.compression) {
        case TIFF_KEY_NONE:
            return TiffCompression::None;
        case TIFF_KEY_CCITT_1D_BARE:
            return TiffCompression::G3;
        case TIFF_KEY_GROUP3_1D:
            return (facts.t4Options & 1U) != 0 ? TiffCompression::G3TwoD : TiffCompression::G3Eol;
        case TIFF_KEY_GROUP4:
            return TiffCompression::G4;
        case TIFF_KEY_PACKBITS:
            return TiffCompression::PackBits;
        case kLzw:
            return facts.predictor == kPredictorDifferencing ? TiffCompression::LzwDifferencing
                                                             : TiffCompression::Lzw;
        default:
            return TiffCompression::LzwDifferencing;
    }
}

struct StampPlan {
    TiffPage page;
    KeptTags tags;
    StampDots dots;
};

StampDots DotsOf(const std::optional<Resolution>& resolution) {
    constexpr double kMost = 65535;
    if (!resolution || resolution->unit == kNoUnit) return kUnknownDots;
    const auto dots = [&](const Rational& axis) {
        return static_cast<uint32_t>(
            std::lround(std::clamp(DotsPerInch(axis, resolution->unit), 0.0, kMost)));
    };
    const StampDots found = {dots(resolution->x), dots(resolution->y)};
    return found.x == 0 || found.y == 0 ? kUnknownDots : found;
}

// A page of one bit in colours of its own can't be coded as a fax and keep them.
bool PlanStorage(const PageInfo& info, const ImageFacts& facts, StampPlan& plan,
                 std::vector<std::string>& notes, std::string& why) {
    TiffOptions storing;
    storing.compression = CompressionOf(facts);
    storing.fillOrder = facts.fillOrder;
    auto storage = PlanTiffPage(info.picture, storing, why);
    if (storage && storage->type != info.picture.type) {
        storing.compression = TiffCompression::Lzw;
        storage = PlanTiffPage(info.picture, storing, why);
        notes.emplace_back("it has colours, and is stored with lzw");
    }
    if (!storage) return false;
    plan.page.plan = std::move(*storage);
    plan.page.picture = info.picture;
    plan.page.whiteIsZero = info.whiteIsZero;
    plan.page.carried = plan.tags.plain;
    plan.dots = DotsOf(info.resolution);
    return true;
}

// ---- Lines. ----

struct StampRun {
    const Picture* picture = nullptr;
    bool whiteIsZero = false;
    const StampPatch* patch = nullptr;
    const LineSink* writer = nullptr;
    uint32_t linesCame = 0;
    std::string failure;  // on the output's side
};

bool TakeLine(void* data, uint8_t* line) noexcept {
    auto& run = *static_cast<StampRun*>(data);
    try {
        NormaliseLine(line, run.picture->width, run.picture->type, run.whiteIsZero);
        StampLine(*run.patch, *run.picture, run.linesCame, line);
        if (!run.writer->Put(line)) return false;
        ++run.linesCame;
        return true;
    } catch (const std::bad_alloc&) {
        run.failure = FailureMessage(TIFF_NO_MEMORY);
    } catch (const std::system_error& error) {
        run.failure = error.what();
    }
    return false;
}

bool FillWithWhite(StampRun& run) {
    const std::vector<uint8_t> white = WhiteLine(*run.picture);
    std::vector<uint8_t> line(white.size());
    for (uint32_t y = run.linesCame; y < run.picture->height; ++y) {
        std::copy(white.begin(), white.end(), line.begin());
        StampLine(*run.patch, *run.picture, y, line.data());
        if (!run.writer->Put(line.data())) return false;
    }
    return true;
}

struct Stamping {
    const PageSource& source;
    uint32_t image;
    bool acceptLoss;
};

// Outcome::Failed with the reason in `why`. Lines that are missing are told if that is accepted.
Outcome WriteLines(const Stamping& stamping, SourcePage& page, const StampPatch& patch,
                   const TiffPage& stored, TiffOutput& output, std::string& why) {
    const PageInfo& info = InfoOf(page);
    StampRun run;
    run.picture = &info.picture;
    run.whiteIsZero = info.whiteIsZero;
    run.patch = &patch;
    const auto writer = BeginTiff(stored, output, why);
    if (!writer) return Outcome::Failed;
    run.writer = &*writer;
    const LinesEnd end = PushLines(page, {TakeLine, &run});
    if (!run.failure.empty()) why = run.failure;
    if (!why.empty()) return Outcome::Failed;
    const bool damaged = run.linesCame < info.picture.height || !end.whole;
    if (damaged) {
        why = end.reason + " (" + LinesOf(run.linesCame, info.picture.height) + " came)";
        if (!stamping.acceptLoss || run.linesCame == 0) return Outcome::Failed;
        Say(stamping.source.name, static_cast<int32_t>(stamping.image), why);
        why.clear();
    }
    if (!FillWithWhite(run) || !writer->Finish()) return Outcome::Failed;
    return damaged ? Outcome::Damaged : Outcome::Well;
}

bool PutWideTags(const KeptTags& tags, TiffOutput& file, std::string& why) {
    file.tiff.Reset();
    for (const TagValue& value : tags.wide) {
        const int32_t code = ChangeTag(file.passing, {0, value.tag, value});
        if (code == TIFF_SUCCESS) continue;
        why = TagInWords(value.tag) + " can't be carried over: " + FailureInWords(code);
        return false;
    }
    return true;
}

// What is known of the image before its lines. False with the reason in `why`.
bool ReadPlan(const PageSource& source, uint32_t image, const PageInfo& info, StampPlan& plan,
              std::vector<std::string>& notes, std::string& why) {
    const TiffFileHandle file = source.tiff->File();
    const auto index = static_cast<int32_t>(image);
    const ImageFacts facts = GatherFacts(file, index);
    return ReadKeptTags(file, index, facts, plan.tags, why) &&
           PlanStorage(info, facts, plan, notes, why);
}

// Stores the image in a file of its own. Null, with the reason in `why`, if that can't be.
std::unique_ptr<TiffOutput> Store(const Stamping& stamping, const StampText& text, uint32_t x,
                                  uint32_t y, Outcome& outcome, std::string& why) {
    const OwnedPage page = OpenPage(stamping.source, stamping.image, why);
    if (!page) return nullptr;
    const PageInfo& info = InfoOf(*page);
    StampPlan plan;
    std::vector<std::string> notes;
    if (!ReadPlan(stamping.source, stamping.image, info, plan, notes, why)) return nullptr;
    const auto patch = DrawStamp(text, x, y, info.picture, plan.dots, why);
    if (!patch) return nullptr;
    if (patch->cut) notes.emplace_back("the text runs over the page's edge");
    for (const std::string& note : notes)
        Say(stamping.source.name, static_cast<int32_t>(stamping.image), note);
    auto file = CreateTiffOutput("-", 0, Overwrite::Refuse, why);
    if (!file) return nullptr;
    outcome = WriteLines(stamping, *page, *patch, plan.page, *file, why);
    if (outcome == Outcome::Failed || !PutWideTags(plan.tags, *file, why)) return nullptr;
    return file;
}

}  // namespace

StampedPage StampPage(const PageSource& source, uint32_t image, const StampText& text, uint32_t x,
                      uint32_t y, bool acceptLoss) {
    StampedPage stamped;
    std::string why;
    stamped.file = Store({source, image, acceptLoss}, text, x, y, stamped.outcome, why);
    if (stamped.file) return stamped;
    Say(source.name, static_cast<int32_t>(image), why);
    stamped.outcome = Outcome::Failed;
    return stamped;
}

}  // namespace vellim::tool
