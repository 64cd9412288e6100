// `vellim tag`: the tags of an image listed, shown one by one, set and deleted.
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>

#include "commands.h"
#include "document.h"
#include "losses.h"
#include "messages.h"
#include "page_source.h"
#include "tag_edit.h"
#include "tag_input.h"
#include "tag_names.h"
#include "tag_rules.h"
#include "text.h"
#include "vellim/failures.h"
#include "vellim/streams.h"

namespace vellim::tool {
namespace {

constexpr std::string_view kDateForm = "2024:12:31 23:59:59";

Outcome Misused(const std::string& text) {
    Say("", kWholeFile, text);
    return Outcome::Usage;
}

Outcome Fail(const Document& document, int32_t image, const std::string& text) {
    Say(document.name, image, text);
    return Outcome::Failed;
}

std::string NoSuchTag(uint32_t tag) {
    return "there is no tag " + TagInWords(tag) + " in it";
}

Outcome ListTags(const Document& document, int32_t image) {
    const LoadedImage loaded(document.File(), image);
    if (!loaded) return Fail(document, image, FailureInWords(TiffError()));
    std::printf("%s:\n", Place(document.name, image).c_str());
    for (const uint32_t tag : ReadTagNumbers(document.File(), image)) {
        const auto value = ReadTag(document.File(), image, tag);
        if (value) std::printf("%s\n", TagLine(document.File(), image, *value).c_str());
    }
    return Outcome::Well;
}

// Of one image, or of all where none was chosen.
Outcome ListImages(const Document& document, std::optional<int32_t> chosen) {
    Outcome outcome = Outcome::Well;
    const int32_t first = chosen.value_or(0);
    const int32_t end = chosen ? *chosen + 1 : document.imageCount;
    for (int32_t image = first; image < end; ++image)
        outcome = Worse(outcome, ListTags(document, image));
    if (document.chainBroken) {
        Say(document.name, kWholeFile, BrokenChainMessage(document));
        outcome = Worse(outcome, Outcome::Damaged);
    }
    return outcome;
}

// Strings on a line each, other elements on one line, in the form in which `set` takes them.
Outcome ShowTag(const Document& document, int32_t image, uint32_t tag) {
    const LoadedImage loaded(document.File(), image);
    if (!loaded) return Fail(document, image, FailureInWords(TiffError()));
    const auto value = ReadTag(document.File(), image, tag);
    if (!value) return Fail(document, image, NoSuchTag(tag));
    const auto words = ElementsInWords(document.File(), image, *value, SIZE_MAX);
    const bool text = value->type == TIFF_TYPE_ASCII;
    if (words.empty() && value->count > 0 && !text) {
        return Fail(document, image,
                    "values of the type " + TypeName(value->type) + " can't be shown");
    }
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : text ? "\n" : " ") + (text ? Printable(word) : word);
    std::printf("%s\n", line.c_str());
    return Outcome::Well;
}

// The types that a new value is tried as: the one that was asked for; else the one that the tag
// has, then those that the standard gives it.
std::vector<uint32_t> TypesToTry(uint32_t asked, uint32_t present, const TagRule& rule) {
    if (asked != 0) return {asked};
    std::vector<uint32_t> types;
    for (const uint32_t type : {present, rule.type, rule.widerType}) {
        if (type != 0 && std::find(types.begin(), types.end(), type) == types.end()) {
            types.push_back(type);
        }
    }
    return types;
}

// "2024:12:31 23:59:59": digits where that has digits, the rest as it is.
bool HasDateForm(std::string_view text) {
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    return std::equal(text.begin(), text.end(), kDateForm.begin(), kDateForm.end(),
                      [&](char a, char b) { return digit(b) ? digit(a) : a == b; });
}

// Whether each element is a number that the standard gives a meaning.
bool IsWithin(const TagRule& rule, const TagValue& value) {
    const auto elements = ElementsInWords(value, SIZE_MAX);
    return std::all_of(elements.begin(), elements.end(), [&](const std::string& word) {
        uint32_t number = 0;
        const char* end = word.data() + word.size();
        const auto [rest, error] = std::from_chars(word.data(), end, number);
        return error == std::errc() && rest == end && number >= rule.least && number <= rule.most;
    });
}

// What speaks against the edit as such; empty if nothing does.
std::string WhyNotEasily(const TagEdit& edit, const std::vector<std::string>& words) {
    const TagRule rule = RuleOf(edit.tag);
    const std::string name = TagInWords(edit.tag);
    if (rule.role == TagRole::DescribesData) {
        return name + " tells how the image is stored, which may be unreadable with another";
    }
    if (rule.role == TagRole::PointsIntoFile && edit.value) {
        return name + " is a place in the file, where everything moves when a tag is set";
    }
    if (!edit.value) return rule.role == TagRole::Needed ? "readers need " + name : std::string();
    if (rule.count == kDateForm.size() + 1 && !HasDateForm(words.front())) {
        return name + " has the form \"" + std::string(kDateForm) + "\"";
    }
    if (rule.most != 0 && !IsWithin(rule, *edit.value)) {
        return name + " is a number from " + std::to_string(rule.least) + " to " +
               std::to_string(rule.most);
    }
    if (rule.count != 0 && rule.count != edit.value->count) {
        const bool text = edit.value->type == TIFF_TYPE_ASCII;
        return name + " takes " + std::to_string(rule.count - (text ? 1 : 0)) +
               (text              ? " characters"
                : rule.count == 1 ? " value"
                                  : " values");
    }
    return {};
}

// What is to be edited: the document, and the claim that was laid on it before it was opened.
struct Edited {
    const Document& document;
    const EditClaim& claim;
};

Outcome EditIfAllowed(const Edited& edited, const TagEdit& edit,
                      const std::vector<std::string>& words, const TagOptions& options) {
    const std::string why = WhyNotEasily(edit, words);
    if (!why.empty() && !options.force) {
        return Fail(edited.document, edit.image, why + "; nothing was changed, --force does it");
    }
    return EditTag(edited.document, edited.claim, edit, options.acceptLoss);
}

bool IsPlain(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return (static_cast<uint8_t>(c) & 0x80U) != 0; });
}

Outcome SetTag(const Edited& edited, TagEdit edit, uint32_t askedType, const TagOptions& options) {
    const Document& document = edited.document;
    uint32_t present = 0;
    {
        const LoadedImage loaded(document.File(), edit.image);
        if (!loaded) return Fail(document, edit.image, FailureInWords(TiffError()));
        GetTiffImageInfoBuffer(document.File(), edit.image, edit.tag, nullptr, &present, nullptr);
    }
    const std::vector<std::string>& words = options.values;
    std::string why =
        "it isn't known which type " + TagInWords(edit.tag) + " has; give it with --type";
    for (const uint32_t type : TypesToTry(askedType, present, RuleOf(edit.tag))) {
        edit.value = ParseTagValue(edit.tag, type, words, why);
        if (edit.value) break;
    }
    if (!edit.value) return Misused(why);
    const Outcome outcome = EditIfAllowed(edited, edit, words, options);
    const bool plain = std::all_of(words.begin(), words.end(), IsPlain);
    if (outcome < Outcome::Failed && !plain) {
        Say(document.name, edit.image,
            "the text isn't plain ASCII and was stored as it is (UTF-8); some programs will "
            "show other letters");
    }
    return outcome;
}

// An image without the tag is what was asked for: no failure.
Outcome DeleteTag(const Edited& edited, const TagEdit& edit, const TagOptions& options) {
    const Document& document = edited.document;
    bool there = false;
    {
        const LoadedImage loaded(document.File(), edit.image);
        if (!loaded) return Fail(document, edit.image, FailureInWords(TiffError()));
        there = GetTiffImageInfo(document.File(), edit.image, edit.tag, nullptr) != 0;
    }
    if (there) return EditIfAllowed(edited, edit, {}, options);
    Say(document.name, edit.image, NoSuchTag(edit.tag) + "; nothing was changed");
    return Outcome::Well;
}

// What is wrong with the words behind the action; empty if nothing is.
std::string WrongArguments(const TagOptions& options) {
    const bool tag = !options.tag.empty();
    const bool values = !options.values.empty();
    if (options.action == "list") return tag ? "list takes no tag; get shows one" : "";
    if (options.action == "set") return values ? "" : "set takes a tag and its new value";
    return tag && !values ? "" : options.action + " takes one tag, by its number or its name";
}

// The image that was chosen, or the only one; none where there are several. Failed, and told, if it
// isn't there.
Outcome ChooseImage(const Document& document, uint32_t chosen, std::optional<int32_t>& image) {
    const auto count = static_cast<uint32_t>(document.imageCount);
    if (count == 0) return Fail(document, kWholeFile, "there are no images in it");
    if (chosen > count) {
        return Fail(document, kWholeFile,
                    "there is no image " + std::to_string(chosen) + ": the last one is image " +
                        std::to_string(count));
    }
    if (chosen != 0) image = static_cast<int32_t>(chosen) - 1;
    if (chosen == 0 && count == 1) image = 0;
    return Outcome::Well;
}

Outcome Act(const Edited& edited, uint32_t tag, uint32_t type, const TagOptions& options) {
    const Document& document = edited.document;
    std::optional<int32_t> image;
    const Outcome outcome = ChooseImage(document, options.image, image);
    if (outcome != Outcome::Well) return outcome;
    if (options.action == "list") return ListImages(document, image);
    if (!image) {
        return Misused("there are " + std::to_string(document.imageCount) +
                       " images in it; choose one with --image");
    }
    if (options.action == "get") return ShowTag(document, *image, tag);
    const TagEdit edit{*image, tag, {}};
    return options.action == "set" ? SetTag(edited, edit, type, options)
                                   : DeleteTag(edited, edit, options);
}

// "CALS" and the like, for a file of another kind than TIFF; empty if it isn't.
std::string OtherKind(const std::string& path) {
    if (IsPlace(path)) return {};
    std::string why;
    const auto source = OpenPageSource(path, {}, why);
    return source && !source->tiff ? std::string(source->Kind()) : std::string();
}

}  // namespace

Outcome RunTag(const TagOptions& options) {
    const std::string wrong = WrongArguments(options);
    if (!wrong.empty()) return Misused(wrong);
    const bool lists = options.action == "list";
    const uint32_t tag = lists ? 0 : FindTag(options.tag);
    if (!lists && tag == 0) {
        return Misused("there is no tag \"" + Printable(options.tag) +
                       "\"; vellim info --tags shows names and numbers");
    }
    const uint32_t type = options.type.empty() ? 0 : FindType(options.type);
    if (type == 0 && !options.type.empty()) {
        return Misused("there is no type \"" + Printable(options.type) + "\"");
    }
    std::string why;
    EditClaim claim;
    const bool edits = options.action == "set" || options.action == "delete";
    const bool claimed = !edits || IsPlace(options.file) || ClaimForEdit(options.file, claim, why);
    const auto document = claimed ? OpenDocument(options.file, why) : std::nullopt;
    if (document) return Act({*document, claim}, tag, type, options);
    const std::string kind = OtherKind(options.file);
    if (!kind.empty()) why = "it is a " + kind + " file, which has no tags";
    Say(options.file, kWholeFile, why);
    return Outcome::Failed;
}

}  // namespace vellim::tool
