// The new file comes image by image, in byte order "II", each directory in front of its image's
// data and the first one right behind the header.

#include "container/file_rewrite.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "container/directory_writer.h"
#include "container/failure.h"
#include "container/image_copy.h"
#include "container/image_data.h"
#include "container/open_tiff.h"
#include "container/streams.h"
#include "container/tag_buffer.h"
#include "platform/files/file_replacement.h"
#include "vellim/tags.h"

namespace vellim {
namespace {

constexpr char kTemporaryEnding[] = ".~~~";

// The full path of the file and the path of its unfinished successor.
struct RewritePaths {
    OFSTRUCT Original;
    char Temporary[OFSTRUCT_PATH_BYTES + sizeof kTemporaryEnding];
};

// The ending stands for all from the last dot of the whole path on. A file that has this ending
// already gets it twice: the unfinished file mustn't have its own name.
void NameTemporary(RewritePaths& paths) {
    const std::string_view original = paths.Original.szPathName;
    const bool ended = original.ends_with(kTemporaryEnding);
    const size_t dot = ended ? std::string_view::npos : original.rfind('.');
    const size_t kept = std::min(dot, original.size());
    std::memcpy(paths.Temporary, original.data(), kept);
    std::memcpy(paths.Temporary + kept, kTemporaryEnding, sizeof kTemporaryEnding);
}

bool FindPaths(const char* path, RewritePaths& paths) {
    if (path == nullptr || OpenFile(path, &paths.Original, OF_EXIST) == -1) return false;
    if (paths.Original.szPathName[0] == '\0') return false;
    NameTemporary(paths);
    return true;
}

// The images of a file that is open and has an image `image`; else 0, with code 1 or 3.
int32_t ImagesWith(const OpenTiff& file, int32_t image) {
    if (!file) return Fail(TIFF_NO_MEMORY, 0);
    const int32_t images = NumberOfTiffImages(file.Get(), TIFF_ALL_IMAGES);
    return image >= 0 && image < images ? images : Fail(TIFF_BAD_INDEX, 0);
}

// A type that is wider in files counts by what the file's reader will hold of it.
bool CanBeStored(const TagChange& change) {
    if (!change.New) return true;
    const bool sound =
        change.Tag <= UINT16_MAX && change.New->Type <= UINT16_MAX &&
        (change.New->Value != nullptr || change.New->Count == 0) &&
        uint64_t{TiffTypeSize(change.New->Type)} * change.New->Count <= kLongestStoredValue;
    return sound || Fail(TIFF_BAD_TAG, false);
}

// Of a tag that stands twice both go.
bool Apply(const TagChange& change, TiffFileHandle file, int32_t image) {
    {
        TagBuffer tags(TagBufferOf(file, image));
        if (!tags) return Fail(TIFF_NO_MEMORY, false);
        tags.RemoveAll(change.Tag);
    }
    return !change.New || DefineTiffImageInfoBuffer(file, image, change.Tag, change.New->Value,
                                                    change.New->Type, change.New->Count) != 0;
}

// Tags are let go of behind each image, so that a long file takes no more memory than its largest
// directory.
bool WriteImages(TiffFileHandle old, int32_t changed, const TagChange& change, StreamHandle from,
                 StreamHandle to) {
    const AddedValue added{.Tag = change.Tag, .Value = change.New ? change.New->Value : nullptr};
    const uint64_t bytes = SourceBytes(from);
    uint64_t allowance = CopyAllowance(bytes);
    uint32_t at = kHeaderBytes;
    const int32_t images = NumberOfTiffImages(old, TIFF_ALL_IMAGES);
    for (int32_t i = 0; i < images; i++) {
        if (GetTiffImage(old, i) == 0) return false;
        if (i == changed && !Apply(change, old, i)) return false;
        const ImageSource source{.File = old,
                                 .Image = i,
                                 .Stream = from,
                                 .StreamBytes = bytes,
                                 .Added = i == changed && change.New ? &added : nullptr};
        const CopyTarget target{
            .Stream = to, .At = at, .ByteOrder = TIFF_LITTLE_ENDIAN, .Followed = i + 1 < images};
        const auto copied = WriteImageCopy(source, target, allowance);
        if (!copied) return false;
        at = copied->End;
        DropTiffImage(old, i);
    }
    return true;
}

}  // namespace

// The old file is claimed from the moment that it is read until its successor has taken its place,
// so that nobody adds to a file that is about to go. Should the path have come to lead to another
// file meanwhile, neither is touched.
//
// It is looked at twice. What can be refused is refused before anything is made on the
// disk; but only under the lock on the temporary name does the old file stay the same one, since an
// edit that was under way until then has put another in its place. The two looks must find as many
// images: behind a directory that can't be read a chain counts as ended, and if that was so for a
// moment only, images would be lost that can be read.
bool RewriteTiffFile(const char* path, int32_t image, const TagChange& change) {
    RewritePaths paths{};
    if (!FindPaths(path, paths)) return Fail(TIFF_IO_ERROR, false);
    const int32_t images = ImagesWith(OpenTiff(path, T_READ), image);
    if (images == 0 || !CanBeStored(change)) return false;

    const char* original = paths.Original.szPathName;
    const OpenStream to(CreateReplacement(original, paths.Temporary));
    if (!to) return Fail(TIFF_IO_ERROR, false);
    const OpenTiff old(path, T_READ);
    const int32_t imagesNow = ImagesWith(old, image);
    if (imagesNow == 0) return false;
    if (imagesNow != images) return Fail(TIFF_IO_ERROR, false);
    const OpenStream from(OpenForReading(*TiffFileAccess(old.Get())));
    const bool ours =
        from && ClaimFile(from.Get()) && IdentityOf(from.Get()) == IdentityOf(original);
    if (!ours) return Fail(TIFF_IO_ERROR, false);
    if (!WriteNewHeader(to.Get(), TIFF_LITTLE_ENDIAN, kHeaderBytes)) return false;
    if (!WriteImages(old.Get(), image, change, from.Get(), to.Get())) return false;
    return CommitReplacement(to.Get(), paths.Temporary, original) || Fail(TIFF_IO_ERROR, false);
}

}  // namespace vellim
