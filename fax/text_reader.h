// A text file read byte by byte, out of blocks.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace vellim {

class TextReader {
  public:
    explicit TextReader(const char* path);
    ~TextReader();
    TextReader(const TextReader&) = delete;
    TextReader& operator=(const TextReader&) = delete;

    explicit operator bool() const { return file_ != kNoFile; }

    // Nothing at the end of the file, and where it can't be read on.
    std::optional<uint8_t> Next() {
        if (next_ == filled_ && !Fill()) return std::nullopt;
        return block_[next_++];
    }

  private:
    static constexpr int32_t kNoFile = -1;
    static constexpr uint32_t kBlockBytes = 16384;

    bool Fill();

    int32_t file_;
    uint32_t next_ = 0;
    uint32_t filled_ = 0;
    std::array<uint8_t, kBlockBytes> block_;
};

}  // namespace vellim
