// `vellim fax`: a text as a TIFF file of pages. The whole text is laid out first, so that nothing
// is begun that doesn't fit; then pages are drawn and stored one by one, and memory holds one of
// them.
#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "commands.h"
#include "fax_layout.h"
#include "fax_page.h"
#include "fax_text.h"
#include "halftone.h"
#include "messages.h"
#include "output_formats.h"
#include "tiff_output.h"
#include "tiff_writer.h"
#include "vellim/tags.h"

namespace vellim::tool {
namespace {

// More than a thousand pages hold.
constexpr size_t kMostTextBytes = 64UL << 20U;
constexpr uint32_t kPageNumber = 297;
constexpr uint32_t kPageOfMany = 2;  // NewSubfileType (TIFF 6.0, section 8)

Outcome Fail(const std::string& name, const std::string& why) {
    Say(name == "-" ? "standard output" : name, kWholeFile, why);
    return Outcome::Failed;
}

std::string Count(size_t things, const std::string& name) {
    return std::to_string(things) + " " + name + (things == 1 ? "" : "s");
}

// All of a file or of standard input. Nothing, with the reason in `why`, if it can't be had or is
// no text.
std::optional<std::string> ReadText(const std::string& path, std::string& why) {
    constexpr size_t kPieceBytes = 64UL << 10U;
    const OwnedDescriptor file(path == "-" ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                           : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    std::string text;
    ssize_t got = file ? 1 : -1;
    while (got > 0 && text.size() <= kMostTextBytes) {
        const size_t before = text.size();
        text.resize(before + kPieceBytes);
        do {
            got = read(file.Get(), text.data() + before, kPieceBytes);
        } while (got < 0 && errno == EINTR);
        text.resize(before + static_cast<size_t>(std::max<ssize_t>(got, 0)));
    }
    if (got < 0) {
        why = std::strerror(errno);
    } else if (text.size() > kMostTextBytes) {
        why = "that is more text than a TIFF file's " + std::to_string(TIFF_MAX_IMAGES) +
              " pages hold";
    } else if (text.find('\0') != std::string::npos) {
        why = "it is no text in UTF-8 or Windows-1252: there are zero bytes in it";
    } else {
        return text;
    }
    return {};
}

void TellOfText(const std::string& name, const FaxText& text) {
    if (!text.isUtf8) Say(name, kWholeFile, "it isn't UTF-8, and was read as Windows-1252");
    if (text.replaced == 0) return;
    Say(name, kWholeFile, Count(text.replaced, "character") + " became \"?\"");
}

// What is read can't be what is written.
bool IsRead(const FaxOptions& options) {
    const auto same = [&](const std::string& path) {
        std::error_code error;
        return !path.empty() && std::filesystem::equivalent(path, options.output, error);
    };
    return same(options.input) || same(options.form);
}

TagValue MakeTag(uint32_t tag, uint32_t type, uint32_t count, const void* value, size_t bytes) {
    const auto* const first = static_cast<const uint8_t*>(value);
    return {tag, type, count, {first, first + bytes}};
}

std::vector<TagValue> PageTags(size_t page, size_t pages) {
    const std::array<uint16_t, 2> number = {static_cast<uint16_t>(page),
                                            static_cast<uint16_t>(pages)};
    return {MakeTag(TIFF_TAG_NEW_SUBFILE_TYPE, TIFF_TYPE_LONG, 1, &kPageOfMany, sizeof kPageOfMany),
            MakeTag(kPageNumber, TIFF_TYPE_SHORT, 2, number.data(), sizeof number)};
}

// False with the reason in `why`.
bool StorePage(BitmapHandle bitmap, TiffPage page, TiffOutput& output, std::string& why) {
    BITMAP shape = {};
    GetObjectA(bitmap, sizeof shape, &shape);
    const Picture drawn = DescribeBitmap(shape);
    page.picture = drawn;
    page.picture.type = page.plan.type;
    page.whiteIsZero = page.plan.type == kBilevel;
    auto writer = BeginTiff(page, output, why);
    if (!writer) return false;
    const LineSink lines =
        ConvertShades(drawn, page.plan.type, Halftone::FloydSteinberg, std::move(*writer));
    return PutBitmap(bitmap, lines, why) && lines.Finish();
}

// What the pages have in common. Nothing, with the reason in `why`, if they can't be stored so.
std::optional<TiffPage> PlanPages(const FaxOptions& options, const FaxJob& job, std::string& why) {
    Picture picture;
    picture.type = kBilevel;
    picture.width = job.frame.right + job.frame.left;
    if (job.form) picture = DescribeBitmap(job.form->shape);
    TiffOptions storing;
    storing.compression = FindTiffCompression(options.compression);
    auto plan = PlanTiffPage(picture, storing, why);
    if (!plan) return {};
    for (const std::string& note : plan->notes)
        Say(options.output, kWholeFile, note);
    TiffPage page;
    page.resolution = job.resolution;
    page.plan = std::move(*plan);
    return page;
}

Outcome WritePages(const FaxOptions& options, const std::vector<std::string>& texts, FaxJob& job) {
    std::string why;
    auto page = PlanPages(options, job, why);
    if (!page) return Fail(options.output, why);
    const auto output = CreateTiffOutput(options.output, 0,
                                         options.force ? Overwrite::Allow : Overwrite::Refuse, why);
    if (!output) return Fail(options.output, why);
    Progress progress(options.output, kWholeFile, static_cast<uint32_t>(texts.size()));
    for (size_t i = 0; i < texts.size(); ++i) {
        const OwnedObject bitmap = DrawFaxPage(job, texts[i], why);
        page->carried = PageTags(i, texts.size());
        if (!bitmap || !StorePage(bitmap.Get(), *page, *output, why)) {
            return Fail(options.output, "page " + std::to_string(i + 1) + ": " + why);
        }
        progress.Step(static_cast<uint32_t>(i + 1));
    }
    if (!CommitTiffOutput(*output, why)) return Fail(options.output, why);
    if (!output->copied) Say(options.output, kWholeFile, Count(texts.size(), "page"));
    return Outcome::Well;
}

}  // namespace

Outcome RunFax(const FaxOptions& options) {
    const OutputFormat* format = FormatOfPath(options.output);
    if (format != nullptr && !IsTiff(*format)) {
        Say("", kWholeFile,
            "fax writes TIFF files alone, which don't end in ." + std::string(format->name) +
                "; vellim convert makes others of them");
        return Outcome::Usage;
    }
    std::string why;
    const auto bytes = ReadText(options.input, why);
    if (!bytes) return Fail(options.input == "-" ? "standard input" : options.input, why);
    if (IsRead(options)) return Fail(options.output, "it is read from, so it can't be replaced");
    const auto job = MakeFaxJob(options, why);
    if (!job) return Fail(options.form, why);
    const FaxText text = PrepareFaxText(*bytes);
    TellOfText(options.input, text);
    const auto texts = LayOutPages(text.text, job->frame, job->letters);
    if (texts.size() > TIFF_MAX_IMAGES) {
        return Fail(options.input, "it makes " + Count(texts.size(), "page") +
                                       ", and a TIFF file holds " +
                                       std::to_string(TIFF_MAX_IMAGES) + " at most");
    }
    return WritePages(options, texts, *job);
}

}  // namespace vellim::tool
