/* Writing directories, and editing what is stored: tags of images in files on disk, and images
 * copied from file to file without being decoded.
 *
 * No failure loses what was stored. A file is edited by writing it anew beside the old one and then
 * putting it in the old one's place in a single step; an image is copied by adding it behind all
 * else and hooking it into the chain last of all. */
#ifndef VELLIM_EDIT_H
#define VELLIM_EDIT_H

#include "vellim/base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Writes the tags in memory of `image` as a directory (TIFF 6.0, section 2) at the end of the disk
 * file and hooks it into the chain, whose images then include this one. Image data isn't touched.
 * The file must have its header: one that was never written, or a memory TIFF, is refused with 6.
 *
 * Gives 0 for success, and else a code, which isn't stored: 1 (no tags in memory), 6 (I/O), 9 (a
 * value of 32,768 bytes or more, which couldn't be read back; nothing is written). */
VELLIM_API int32_t WriteTiffImageDirectory(TiffFileHandle file, int32_t image);

/* Below: 1 for success, 0 for failure with the failure code set. */

/* Stores `count` elements of `type` (TIFF 6.0, section 2; host order) from `value` as tag `tag` of
 * stored image `image`, in the place of a tag of that number. The file is written anew, in byte
 * order "II"; images, tags and strips come through whole, each image's directory now in front of
 * its strips, which lie one behind the other without gaps. Only images that the chain reaches come
 * through. Elements of the types 8 (SSHORT) and 10 to 13 (SRATIONAL, FLOAT, DOUBLE, IFD) are taken
 * at their true width, 2, 8, 4, 8 and 4 bytes.
 *
 * The file keeps its name and mode, its owner where the system lets it, and what symbolic links
 * lead to it. While the new file is written it has the old one's path with "~~~" for all behind the
 * last dot. After a failure the old file stands as it was; the unfinished one stays too.
 *
 * Codes: 1 (not a TIFF file, or no memory), 3 (no such image), 6 (no such path; I/O; the file is
 * being written to; another edit under way under the same name), 9 (a value of 32,768 bytes or
 * more, nothing being written; a strip table that isn't of SHORT or LONG, or that grows too long
 * when SHORT offsets no longer do), 10 (a JPEG table tag without elements), 13 (an image that has
 * no strips, or for Compression 6 no tiles). */
VELLIM_API int32_t AddTiffTagToImage(const char* path, int32_t image, uint32_t tag, uint32_t type,
                                     const void* value, uint32_t count);

/* Takes tag `tag` out of stored image `image`, in the same way. An image without that tag is no
 * failure. */
VELLIM_API int32_t DeleteTiffTagOfImage(const char* path, int32_t image, uint32_t tag);

/* Adds stored image `image` of `source` to `destination`, both disk files, as the last of its
 * chain; strips are copied as they are. Afterwards the tags of neither image are in memory, and
 * `source` can't be written through any more. After a failure the destination's images are the
 * ones that it had. Codes: 1, 3, 6, 9, 10, 13; 6 also for a file that is being written to, or that
 * another has taken the place of since `destination` was opened. */
VELLIM_API int32_t CopyTiffImage(TiffFileHandle source, int32_t image, TiffFileHandle destination);

/* The same between paths: `destinationPath` is opened with `mode` (of TiffOpenMode), `sourcePath`
 * with T_READ. */
VELLIM_API int32_t CopyTiffImageInFile(const char* sourcePath, int32_t image,
                                       const char* destinationPath, int32_t mode);

#ifdef __cplusplus
}
#endif

#endif /* VELLIM_EDIT_H */
