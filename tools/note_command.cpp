// `vellim note`: the notes of images shown, set, deleted, and burned into the pixels.
#include <algorithm>
#include <cstdio>
#include <string_view>

#include "commands.h"
#include "messages.h"
#include "note_copy.h"
#include "note_dialog_answer.h"
#include "note_text.h"
#include "page_source.h"
#include "tag_edit.h"
#include "tag_names.h"
#include "tag_values.h"
#include "text.h"
#include "vellim/failures.h"
#include "vellim/streams.h"
#include "windows_1252.h"

namespace vellim::tool {
namespace {

constexpr uint8_t kNoteMark = '~';
constexpr const char* kNoNote = "there is no note in it";

Outcome Misused(const std::string& text) {
    Say("", kWholeFile, text);
    return Outcome::Usage;
}

Outcome Fail(const PageSource& source, int32_t image, const std::string& text) {
    Say(source.name, image, text);
    return Outcome::Failed;
}

// ---- What an image has. ----

enum class Found { Nothing, Note, UnreadableNote, Other };

struct ImageNote {
    Found found = Found::Nothing;
    NoteRecord box = {};  // without the text
    std::string text;     // as stored; of another program's, the tag's
};

// Whatever the tag that notes are kept in has. False, and told, if it can't be read.
bool FindNote(const PageSource& source, int32_t image, ImageNote& note) {
    const TiffFileHandle file = source.tiff->File();
    const LoadedImage loaded(file, image);
    if (!loaded) {
        Fail(source, image, FailureInWords(TiffError()));
        return false;
    }
    const auto value = ReadTag(file, image, NOTE_TAG);
    if (!value) return true;
    note.found = Found::Other;
    note.text = ReadText(file, image, NOTE_TAG);
    if (value->bytes.empty() || value->bytes.front() != kNoteMark) return true;
    OwnedNote stored;
    note.found = Found::UnreadableNote;
    if (GetNoteTagFromTiff(file, static_cast<uint32_t>(image), &stored.record) == 0) return true;
    note.found = Found::Note;
    note.text = TextOf(stored.record);
    note.box = stored.record;
    note.box.Text = 0;
    return true;
}

// ---- show ----

void Print(const PageSource& source, int32_t image, const ImageNote& note) {
    const NoteRecord& box = note.box;
    std::printf("%s: %s note at %d,%d, %lld x %lld pixels\n", Place(source.name, image).c_str(),
                box.Opaque != 0 ? "opaque" : "transparent", box.Left, box.Top,
                static_cast<long long>(box.Right) - box.Left,
                static_cast<long long>(box.Bottom) - box.Top);
    for (const std::string_view line : SplitNoteLines(note.text))
        std::printf("    %s\n", Printable(FromWindows1252(line)).c_str());
}

// Of one image, or of all where none was chosen. Only of one that was chosen a note is missed.
Outcome Show(const PageSource& source, std::optional<int32_t> chosen) {
    Outcome outcome = Outcome::Well;
    bool any = false;
    const int32_t first = chosen.value_or(0);
    const int32_t end = chosen ? *chosen + 1 : source.tiff->imageCount;
    for (int32_t image = first; image < end; ++image) {
        ImageNote note;
        if (!FindNote(source, image, note)) outcome = Outcome::Failed;
        if (note.found == Found::Note) Print(source, image, note);
        if (note.found == Found::UnreadableNote) {
            Say(source.name, image, "its note is damaged and can't be read");
            outcome = Worse(outcome, Outcome::Damaged);
        }
        any = any || note.found == Found::Note || note.found == Found::UnreadableNote;
    }
    if (source.tiff->chainBroken) {
        Say(source.name, kWholeFile, BrokenChainMessage(*source.tiff));
        outcome = Worse(outcome, Outcome::Damaged);
    }
    if (any || outcome != Outcome::Well) return outcome;
    if (chosen) return Fail(source, *chosen, kNoNote);
    Say(source.name, kWholeFile, "there are no notes in it");
    return Outcome::Well;
}

// ---- set, delete and burn ----

// What is changed, and where the change goes: to the claimed file itself where no output is named.
struct Job {
    const PageSource& source;
    const EditClaim& claim;
    int32_t image;
    const NoteOptions& options;
};

Outcome Write(const Job& job, NoteChange change) {
    const NoteOptions& options = job.options;
    NoteTarget target;
    target.acceptLoss = options.acceptLoss;
    const bool itself = options.output.empty();
    target.path = itself ? options.file : options.output;
    target.mode = itself || options.force ? Overwrite::Allow : Overwrite::Refuse;
    if (itself) target.claim = &job.claim;
    change.image = job.image;
    return WriteChanged(job.source, change, target);
}

Outcome EditNoteTag(const Job& job, const TagEdit& edit, const std::string& words) {
    if (!job.options.output.empty()) return Write(job, {0, edit, {}, words});
    return EditTag(*job.source.tiff, job.claim, edit, job.options.acceptLoss);
}

// The tag of a note, as the library builds it from the tags of an image in memory. Nothing, with
// the reason in `why`, if it doesn't hold the note.
std::optional<TagValue> MakeNoteTag(const Job& job, const NoteAnswer& answer, std::string& why) {
    OwnedNote note;
    const TiffFileHandle file = job.source.tiff->File();
    const LoadedImage loaded(file, job.image);
    const auto image = static_cast<uint32_t>(job.image);
    if (!loaded || !WriteNote(answer, note) || AddNoteTagToTiff(file, image, &note.record) == 0) {
        why = loaded ? FailureMessage(TIFF_NO_MEMORY) : FailureInWords(TiffError());
        return {};
    }
    auto value = ReadTag(file, job.image, NOTE_TAG);
    const std::string text = ReadText(file, job.image, NOTE_TAG);
    if (value && text.ends_with("," + answer.text)) return value;
    why = "the text is too long: with its place and size a note has " +
          std::to_string(NOTE_TAG_BYTES) + " bytes, and this one " +
          std::to_string(answer.text.size()) + " of text alone";
    return {};
}

// Why no note can be placed there; empty if it can. What isn't known of the picture is no obstacle.
std::string WhyNotThere(const Job& job, const POINT& at) {
    const TiffFileHandle file = job.source.tiff->File();
    const LoadedImage loaded(file, job.image);
    const uint32_t width = ReadNumber(file, job.image, TIFF_TAG_IMAGE_WIDTH).value_or(0);
    const uint32_t height = ReadNumber(file, job.image, TIFF_TAG_IMAGE_LENGTH).value_or(0);
    const bool beyond = (width != 0 && static_cast<uint32_t>(at.x) >= width) ||
                        (height != 0 && static_cast<uint32_t>(at.y) >= height);
    if (!beyond) return {};
    return "the place of the note lies outside the picture, which is " + std::to_string(width) +
           " x " + std::to_string(height);
}

bool IsCutWhenShown(const std::string& text) {
    const auto lines = SplitNoteLines(text);
    return std::any_of(lines.begin(), lines.end(),
                       [](std::string_view line) { return line.size() > kShownNoteBytes; });
}

Outcome Set(const Job& job, const ImageNote& before) {
    const NoteOptions& options = job.options;
    if (before.found == Found::Other && !options.force) {
        return Fail(job.source, job.image,
                    TagInWords(NOTE_TAG) + " is \"" + Printable(before.text) +
                        "\" by another program; with --force a note takes its place");
    }
    std::string why;
    auto text = MakeNoteText(*options.text, why);
    if (!text) return Fail(job.source, job.image, why);
    NoteAnswer answer{std::move(*text), options.opaque, *options.at};
    why = WhyNotThere(job, answer.at);
    if (!why.empty()) return Fail(job.source, job.image, why);
    auto value = MakeNoteTag(job, answer, why);
    if (!value) return Fail(job.source, job.image, why);
    const Outcome outcome =
        EditNoteTag(job, {job.image, NOTE_TAG, std::move(*value)}, "note set in the copy");
    if (outcome < Outcome::Failed && IsCutWhenShown(answer.text)) {
        Say(job.source.name, job.image,
            "of a line of the note, viewers show " + std::to_string(kShownNoteBytes) +
                " characters; burned in, it is whole");
    }
    return outcome;
}

// An image without a note is what was asked for: no failure.
Outcome Delete(const Job& job, const ImageNote& before) {
    if (before.found == Found::Note || before.found == Found::UnreadableNote) {
        return EditNoteTag(job, {job.image, NOTE_TAG, {}}, "note left out of the copy");
    }
    if (!job.options.output.empty()) return Write(job, {0, {}, {}, kNoNote});
    Say(job.source.name, job.image, std::string(kNoNote) + "; nothing was changed");
    return Outcome::Well;
}

Outcome Burn(const Job& job, const ImageNote& before) {
    if (before.found == Found::UnreadableNote) {
        return Fail(job.source, job.image, "its note is damaged and can't be burned in");
    }
    if (before.found != Found::Note) return Fail(job.source, job.image, kNoNote);
    const NoteAnswer note{before.text, before.box.Opaque != 0, {before.box.Left, before.box.Top}};
    return Write(job, {0, {}, note, "note burned in"});
}

// ---- The command. ----

bool Edits(const NoteOptions& options) {
    return options.action != "show";
}

// What is wrong with the arguments; empty if nothing is.
std::string WrongArguments(const NoteOptions& options) {
    const bool sets = options.action == "set";
    const bool writes = !options.output.empty();
    if (sets && (!options.text || !options.at)) return "set takes a text and its place, --at X,Y";
    if (!sets && (options.text || options.at || options.opaque)) {
        return "a text, --at and --opaque go with set";
    }
    if (options.action == "burn" && !writes && !options.force) {
        return "burn can't be undone: give it -o OUT, or --force to change the file itself";
    }
    if (!Edits(options) && (writes || options.force)) return "show writes nothing";
    if (Edits(options) && !writes && IsPlace(options.file)) {
        return "only a file can be changed; -o OUT makes a changed copy";
    }
    return {};
}

// The TIFF file of notes. The library copies from files alone, by their names where they have any.
std::optional<PageSource> OpenNoted(const std::string& path, std::string& why) {
    auto source = OpenPageSource(path, {}, why);
    if (!source) return {};
    if (!source->tiff) {
        why = "it is a " + std::string(source->Kind()) + " file, which has no notes";
        return {};
    }
    if (IsPlace(path)) return source;
    source->tiff = OpenDocument(path, why);
    if (!source->tiff) return {};
    return source;
}

// The image that was chosen, or the only one; none where there are several. False, and told, if it
// isn't there.
bool ChooseImage(const PageSource& source, uint32_t chosen, std::optional<int32_t>& image) {
    const auto count = static_cast<uint32_t>(source.tiff->imageCount);
    std::string why;
    if (count == 0) {
        why = "there are no images in it";
    } else if (chosen > count) {
        why = "there is no image " + std::to_string(chosen) + ": the last one is image " +
              std::to_string(count);
    }
    if (!why.empty()) {
        Fail(source, kWholeFile, why);
        return false;
    }
    if (chosen != 0 || count == 1) image = static_cast<int32_t>(std::max(chosen, 1U)) - 1;
    return true;
}

Outcome Act(const PageSource& source, const EditClaim& claim, const NoteOptions& options) {
    std::optional<int32_t> image;
    if (!ChooseImage(source, options.image, image)) return Outcome::Failed;
    if (!Edits(options)) {
        return Show(source, options.image == 0 ? std::optional<int32_t>() : image);
    }
    if (!image) {
        return Misused("there are " + std::to_string(source.tiff->imageCount) +
                       " images in it; choose one with --image");
    }
    ImageNote before;
    if (!FindNote(source, *image, before)) return Outcome::Failed;
    const Job job{source, claim, *image, options};
    if (options.action == "set") return Set(job, before);
    return options.action == "delete" ? Delete(job, before) : Burn(job, before);
}

}  // namespace

Outcome RunNote(const NoteOptions& options) {
    const std::string wrong = WrongArguments(options);
    if (!wrong.empty()) return Misused(wrong);
    std::string why;
    EditClaim claim;
    const bool itself = Edits(options) && options.output.empty();
    const bool claimed = !itself || ClaimForEdit(options.file, claim, why);
    const auto source = claimed ? OpenNoted(options.file, why) : std::nullopt;
    if (source) return Act(*source, claim, options);
    Say(options.file, kWholeFile, why);
    return Outcome::Failed;
}

}  // namespace vellim::tool
