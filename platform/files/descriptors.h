// What stands between file handles and the system's descriptors, for this room's own files.
#pragma once

#include <cerrno>
#include <cstdint>

namespace vellim {

inline constexpr int kNoDescriptor = -1;

// The descriptor behind a handle, or kNoDescriptor.
int DescriptorOf(int32_t file);

// A handle for `descriptor`, which belongs to it from here on; -1, with the descriptor closed, when
// there are no more.
int32_t RegisterDescriptor(int descriptor);

// Runs a system call again for as long as a signal interrupts it.
template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

// Which file is behind a handle, whatever paths lead to it now.
struct FileIdentity {
    uint64_t Device = 0;
    uint64_t Inode = 0;

    bool operator==(const FileIdentity&) const = default;
    [[nodiscard]] bool IsKnown() const { return *this != FileIdentity{}; }
};
FileIdentity IdentityOf(int32_t file);
// Of the file that a path leads to; not known when there is none.
FileIdentity IdentityOf(const char* path);

// Keeps others from writing the file until the handle is closed; false when another does already. A
// file system without locks is no obstacle.
bool ClaimFile(int32_t file);

// With OF_CREATE: the file must not be there yet.
inline constexpr uint32_t kMustBeNew = 0x10000;

// Bytes of the file behind a handle; -1 where they can't be told in 31 bits.
int32_t FileBytes(int32_t file);

}  // namespace vellim
