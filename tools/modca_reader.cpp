// MO:DCA files: documents of structured fields, in which image objects hold IOCA segments; and the
// short form that the library writes, a segment between three bytes before and three behind it.
#include <array>

#include "ioca_page.h"
#include "segment_start.h"
#include "structured_fields.h"

namespace vellim::tool {
namespace {

// What is counted of that which isn't served.
struct OtherKind {
    uint32_t id;
    std::string_view words;
};

constexpr std::array<OtherKind, 9> kOtherKinds = {{
    {0xD3EE9B, "presentation text"},
    {0xD3EE89, "fonts"},
    {0xD3EEBB, "graphics"},
    {0xD3EEEB, "bar codes"},
    {0xD3EE92, "object containers"},
    {0xD3EE7B, "IM images"},
    {0xD3AFC3, "included objects"},
    {0xD3AF5F, "included page segments"},
    {0xD3AFD8, "included page overlays"},
}};

struct Inventory {
    std::array<uint64_t, kOtherKinds.size()> others{};
    uint64_t emptyObjects = 0;
    StrayBytes betweenFields;
    uint64_t betweenSegments = 0;  // stray bytes as well
    std::vector<uint64_t> images;
};

// An object's descriptor tells of one image: the first is come to from the beginning of the object,
// the others from where they are, so that many in one object take no longer.
void AddObject(Inventory& inventory, int descriptor, const StructuredField& begin) {
    SegmentWalk walk;
    walk.bytes = BytesInFields(descriptor, PlaceInField(begin.at, 0));
    const size_t first = inventory.images.size();
    AddPlaces(walk, inventory.images);
    inventory.betweenSegments += walk.stray.total;
    if (inventory.images.size() == first) {
        ++inventory.emptyObjects;
    } else if (walk.bytes.wholeObject) {
        inventory.images[first] = PlaceInField(begin.at, 0);
    }
}

void CountOther(Inventory& inventory, uint32_t id) {
    for (size_t i = 0; i < kOtherKinds.size(); ++i) {
        if (kOtherKinds[i].id == id) ++inventory.others[i];
    }
}

void TellBeside(Beside& beside, std::string_view words, uint64_t count, std::string_view unit) {
    if (count == 0) return;
    std::string text(words);
    text.append(" (").append(std::to_string(count)).append(" ").append(unit);
    beside.kinds.push_back(text.append(count == 1 ? ")" : "s)"));
}

// Picture data outside of an object begins one.
Inventory TakeInventory(int descriptor) {
    Inventory inventory;
    ByteSource source = SourceOf(descriptor);
    StructuredField field;
    bool inObject = false;
    for (uint64_t at = 0; FindField(source, at, field, inventory.betweenFields); at = field.next) {
        const bool begins = field.id == kBeginImage || (field.id == kPictureData && !inObject);
        if (begins) AddObject(inventory, descriptor, field);
        inObject = (inObject || begins) && field.id != kEndImage;
        CountOther(inventory, field.id);
    }
    return inventory;
}

}  // namespace

bool IsModca(std::string_view head) {
    return IsStructured(head) || FindMarkedSegment(head).has_value();
}

std::vector<uint64_t> FindModcaImages(int descriptor, Beside& beside) {
    const std::string head = ReadHead(descriptor);
    if (!IsStructured(head)) {
        const auto start = FindMarkedSegment(head);
        return start ? FindInARow(descriptor, *start, beside) : std::vector<uint64_t>();
    }
    Inventory inventory = TakeInventory(descriptor);
    for (size_t i = 0; i < kOtherKinds.size(); ++i)
        TellBeside(beside, kOtherKinds[i].words, inventory.others[i], "field");
    TellBeside(beside, "images without content", inventory.emptyObjects, "object");
    TellStray(beside.stray, inventory.betweenSegments, "segment");
    TellStray(beside.stray, inventory.betweenFields.total, "structured field");
    return std::move(inventory.images);
}

std::optional<RasterPage> OpenModca(int descriptor, uint64_t offset, std::string& why) {
    if (!IsStructured(ReadHead(descriptor))) return OpenIoca(descriptor, offset, why);
    SegmentWalk walk;
    walk.bytes = BytesInFields(descriptor, offset);
    walk.inSegment = !walk.bytes.wholeObject;
    return OpenContent(walk, why);
}

}  // namespace vellim::tool
