#include "fax/text_reader.h"

#include "vellim/platform.h"

namespace vellim {

// NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): the block is read into
TextReader::TextReader(const char* path) : file_(_lopen(path, OF_READ)) {}

TextReader::~TextReader() {
    if (file_ != kNoFile) _lclose(file_);
}

bool TextReader::Fill() {
    const int32_t got = _lread(file_, block_.data(), kBlockBytes);
    next_ = 0;
    filled_ = got > 0 ? static_cast<uint32_t>(got) : 0;
    return filled_ > 0;
}

}  // namespace vellim
