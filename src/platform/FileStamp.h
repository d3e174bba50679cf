#pragma once

#include <cstdint>
#include <sys/stat.h>

namespace ombrel {

// Tells a file from every other, and from itself after it was written again.
struct FileStamp {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modifiedNanoseconds = 0; // since 1970

    static FileStamp of(const struct stat& status);
    bool operator==(const FileStamp&) const = default;
};

} // namespace ombrel
