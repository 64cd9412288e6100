// MO:DCA files: documents of structured fields, in which image objects hold IOCA segments; and the
// short form that the library writes, a segment between three bytes before and three behind it.
#include <array>

#include "content_place.h"
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
    uint64_t strayBytes = 0;
    ContentPlaces images;
};

void AddObject(Inventory& inventory, int descriptor, uint64_t at) {
    SegmentWalk walk;
    walk.bytes = BytesInFields(descriptor, at);
    bool empty = true;
    for (; NextContent(walk); empty = false)
        AddContent(inventory.images, at);
    if (empty) ++inventory.emptyObjects;
}

void CountOther(Inventory& inventory, uint32_t id) {
    for (size_t i = 0; i < kOtherKinds.size(); ++i) {
        if (kOtherKinds[i].id == id) ++inventory.others[i];
    }
}

// Picture data outside of an object begins one.
Inventory TakeInventory(int descriptor) {
    Inventory inventory;
    ByteSource source = SourceOf(descriptor);
    StructuredField field;
    bool inObject = false;
    uint64_t at = 0;
    for (; ReadField(source, at, field); at = field.next) {
        const bool begins = field.id == kBeginImage || (field.id == kPictureData && !inObject);
        if (begins) AddObject(inventory, descriptor, at);
        inObject = (inObject || begins) && field.id != kEndImage;
        CountOther(inventory, field.id);
    }
    inventory.strayBytes = source.size - at;
    return inventory;
}

}  // namespace

bool IsModca(std::string_view head) {
    return IsStructured(head) || FindMarkedSegment(head).has_value();
}

std::vector<uint64_t> FindModcaImages(int descriptor, std::vector<std::string>& beside) {
    const std::string head = ReadHead(descriptor);
    if (!IsStructured(head)) {
        const auto start = FindMarkedSegment(head);
        return start ? ContentsInARow(descriptor, *start, beside) : std::vector<uint64_t>();
    }
    Inventory inventory = TakeInventory(descriptor);
    for (size_t i = 0; i < kOtherKinds.size(); ++i)
        TellBeside(beside, kOtherKinds[i].words, inventory.others[i], "field");
    TellBeside(beside, "images without content", inventory.emptyObjects, "object");
    TellBeside(beside, "what is no structured field", inventory.strayBytes, "byte");
    TellBeyond(beside, inventory.images);
    return std::move(inventory.images.packed);
}

std::optional<RasterPage> OpenModca(int descriptor, uint64_t offset, std::string& why) {
    const ContentPlace place = Unpacked(offset);
    SegmentWalk walk;
    walk.bytes = IsStructured(ReadHead(descriptor)) ? BytesInFields(descriptor, place.at)
                                                    : BytesInARow(descriptor, place.at);
    return OpenContent(walk, place.number, why);
}

}  // namespace vellim::tool
