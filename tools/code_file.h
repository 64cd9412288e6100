// Fax code gathered in a file without a name: wherever it comes from, the library then reads it as
// a file that holds nothing else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "handles.h"

namespace vellim::tool {

struct CodeFile {
    OwnedDescriptor descriptor;
    uint64_t size = 0;
};

// False, with the reason in `why`, if it can't be had.
bool BeginCode(CodeFile& code, std::string& why);

// Adds `count` bytes of `from` that stand at `offset` there; fewer where the file ends before.
// False, with the reason in `why`, if they can't be read or written.
bool AddCode(CodeFile& code, int from, uint64_t offset, uint64_t count, std::string& why);
bool AddCode(CodeFile& code, const void* bytes, size_t count, std::string& why);

// Writes over bytes that are there.
bool ReplaceCode(CodeFile& code, uint64_t offset, const void* bytes, size_t count,
                 std::string& why);

// Leaves out what stands from `size` on.
bool CutCode(CodeFile& code, uint64_t size, std::string& why);

// The bytes at `offset`, at most `count`; fewer at the end of the code, none if it can't be read.
std::vector<uint8_t> ReadCode(const CodeFile& code, uint64_t offset, size_t count);

// The byte with its bits the other way round, as FillOrder 2 stores it.
uint8_t Mirrored(uint8_t byte);
bool MirrorCode(CodeFile& code, std::string& why);

// How many bytes stand from `offset` on; 0 if they are padding, which is a single value over and
// over but for the rest of a word.
uint64_t BytesBehind(const CodeFile& code, uint64_t offset);

}  // namespace vellim::tool
