#pragma once

#include "platform/FileStamp.h"

#include <cstddef>
#include <string>
#include <sys/stat.h>
#include <sys/types.h>

namespace ombrel {

// The system calls of a save, one function each with the system's own conventions (-1 and errno).
// Only a test puts something else in their place: one call that fails, or one that never returns.
class FileOperations {
  public:
    virtual ~FileOperations() = default;

    virtual int open(const std::string& path, int flags, mode_t mode);
    virtual int close(int descriptor);
    virtual ssize_t write(int descriptor, const void* bytes, std::size_t count);
    virtual int setMode(int descriptor, mode_t mode);
    virtual int setOwner(int descriptor, uid_t user, gid_t group);
    virtual int synchronise(int descriptor);
    virtual int status(int descriptor, struct stat& status);
    virtual int status(const std::string& path, struct stat& status);
    virtual int lock(int descriptor); // exclusive, does not wait
    virtual int linkDescriptor(int descriptor, const std::string& to);
    virtual int link(const std::string& from, const std::string& to);
    virtual int rename(const std::string& from, const std::string& to);
    virtual int remove(const std::string& path);

    // The real ones.
    static FileOperations& system();
};

} // namespace ombrel
