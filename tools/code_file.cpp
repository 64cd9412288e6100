#include "code_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "passing_file.h"

namespace vellim::tool {
namespace {

constexpr size_t kCopyBytes = 64UL << 10U;
// The library's positions have 31 bits; a little is left for what is put behind the code.
constexpr uint64_t kMostCodeBytes = std::numeric_limits<int32_t>::max() - 64;

bool Fail(std::string& why) {
    why = std::strerror(errno);
    return false;
}

// The number of bytes read; fewer than `count` at the end alone. -1 with errno.
ssize_t ReadAt(int descriptor, uint64_t offset, uint8_t* bytes, size_t count) {
    size_t got = 0;
    while (got < count) {
        const ssize_t n =
            pread(descriptor, bytes + got, count - got, static_cast<off_t>(offset + got));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return -1;
        if (n == 0) break;
        got += static_cast<size_t>(n);
    }
    return static_cast<ssize_t>(got);
}

}  // namespace

bool BeginCode(CodeFile& code, std::string& why) {
    code.descriptor = CreateNamelessFile(why);
    code.size = 0;
    return static_cast<bool>(code.descriptor);
}

bool ReplaceCode(CodeFile& code, uint64_t offset, const void* bytes, size_t count,
                 std::string& why) {
    const auto* from = static_cast<const uint8_t*>(bytes);
    while (count > 0) {
        const ssize_t n = pwrite(code.descriptor.Get(), from, count, static_cast<off_t>(offset));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return Fail(why);
        from += n;
        offset += static_cast<uint64_t>(n);
        count -= static_cast<size_t>(n);
    }
    return true;
}

bool AddCode(CodeFile& code, const void* bytes, size_t count, std::string& why) {
    if (count > kMostCodeBytes || code.size > kMostCodeBytes - count) {
        why = "a page of more than 2 GB of code isn't served";
        return false;
    }
    if (!ReplaceCode(code, code.size, bytes, count, why)) return false;
    code.size += count;
    return true;
}

bool AddCode(CodeFile& code, int from, uint64_t offset, uint64_t count, std::string& why) {
    std::vector<uint8_t> buffer(static_cast<size_t>(std::min<uint64_t>(count, kCopyBytes)));
    while (count > 0) {
        const auto wanted = static_cast<size_t>(std::min<uint64_t>(count, buffer.size()));
        const ssize_t got = ReadAt(from, offset, buffer.data(), wanted);
        if (got < 0) return Fail(why);
        if (!AddCode(code, buffer.data(), static_cast<size_t>(got), why)) return false;
        if (static_cast<size_t>(got) < wanted) break;
        offset += wanted;
        count -= wanted;
    }
    return true;
}

bool CutCode(CodeFile& code, uint64_t size, std::string& why) {
    if (ftruncate(code.descriptor.Get(), static_cast<off_t>(size)) != 0) return Fail(why);
    code.size = size;
    return true;
}

std::vector<uint8_t> ReadCode(const CodeFile& code, uint64_t offset, size_t count) {
    if (offset >= code.size) return {};
    std::vector<uint8_t> bytes(static_cast<size_t>(std::min<uint64_t>(count, code.size - offset)));
    const ssize_t got = ReadAt(code.descriptor.Get(), offset, bytes.data(), bytes.size());
    bytes.resize(static_cast<size_t>(std::max<ssize_t>(got, 0)));
    return bytes;
}

uint8_t Mirrored(uint8_t byte) {
    uint32_t mirrored = 0;
    for (uint32_t i = 0; i < 8; ++i)
        mirrored |= (byte >> i & 1U) << (7 - i);
    return static_cast<uint8_t>(mirrored);
}

bool MirrorCode(CodeFile& code, std::string& why) {
    for (uint64_t at = 0; at < code.size; at += kCopyBytes) {
        std::vector<uint8_t> bytes = ReadCode(code, at, kCopyBytes);
        std::transform(bytes.begin(), bytes.end(), bytes.begin(), Mirrored);
        if (!ReplaceCode(code, at, bytes.data(), bytes.size(), why)) return false;
    }
    return true;
}

uint64_t BytesBehind(const CodeFile& code, uint64_t offset) {
    constexpr uint64_t kWordRest = 3;
    const uint64_t paddingAt = offset + kWordRest;
    const std::vector<uint8_t> value = ReadCode(code, paddingAt, 1);
    if (value.empty()) return 0;
    for (uint64_t at = paddingAt; at < code.size; at += kCopyBytes) {
        const std::vector<uint8_t> bytes = ReadCode(code, at, kCopyBytes);
        const bool same = std::all_of(bytes.begin(), bytes.end(),
                                      [&value](uint8_t byte) { return byte == value.front(); });
        if (!same) return code.size - offset;
    }
    return 0;
}

}  // namespace vellim::tool
