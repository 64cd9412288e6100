// Where a picture is written: a file that takes its name only when it is whole, or a stream.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "handles.h"
#include "passing_file.h"

namespace vellim::tool {

struct OutputFile {
    PassingFile passing;     // where it is a file
    OwnedDescriptor stream;  // where it is written in place
    bool seekable = false;
    int64_t base = 0;  // position of the picture's first byte, for WriteAt
    std::vector<uint8_t> buffer;
    std::string failure;  // why something failed, in words

    [[nodiscard]] int Descriptor() const {
        return stream ? stream.Get() : passing.descriptor.Get();
    }
};

// Begins a file, or goes on at standard output for "-". What is no regular file (a pipe, a device)
// is written in place. Null, with the reason in `why`, if it can't be.
std::unique_ptr<OutputFile> CreateOutput(const std::string& path, Overwrite mode, std::string& why);

// Appends bytes, through a buffer.
bool Write(OutputFile& output, const void* bytes, size_t count);
bool Write(OutputFile& output, const std::string& text);

// Writes at a place of a seekable output; bytes left out read as 0.
bool WriteAt(OutputFile& output, uint64_t offset, const void* bytes, size_t count);

// Writes what is still in the buffer and gives the file its name. Without it nothing is left of a
// file.
bool Commit(OutputFile& output);

}  // namespace vellim::tool
