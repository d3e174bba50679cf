#include "platform/FileOperations.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace ombrel {

int FileOperations::open(const std::string& path, int flags, mode_t mode) {
    return ::open(path.c_str(), flags | O_CLOEXEC, mode);
}

int FileOperations::close(int descriptor) {
    return ::close(descriptor);
}

ssize_t FileOperations::write(int descriptor, const void* bytes, std::size_t count) {
    return ::write(descriptor, bytes, count);
}

int FileOperations::setMode(int descriptor, mode_t mode) {
    return ::fchmod(descriptor, mode);
}

int FileOperations::setOwner(int descriptor, uid_t user, gid_t group) {
    return ::fchown(descriptor, user, group);
}

int FileOperations::synchronise(int descriptor) {
    return ::fsync(descriptor);
}

int FileOperations::status(int descriptor, struct stat& status) {
    return ::fstat(descriptor, &status);
}

int FileOperations::status(const std::string& path, struct stat& status) {
    return ::stat(path.c_str(), &status);
}

int FileOperations::lock(int descriptor) {
    return ::flock(descriptor, LOCK_EX | LOCK_NB);
}

int FileOperations::linkDescriptor(int descriptor, const std::string& to) {
    const std::string from = "/proc/self/fd/" + std::to_string(descriptor);
    return ::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), AT_SYMLINK_FOLLOW);
}

int FileOperations::link(const std::string& from, const std::string& to) {
    return ::link(from.c_str(), to.c_str());
}

int FileOperations::rename(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str());
}

int FileOperations::remove(const std::string& path) {
    return ::unlink(path.c_str());
}

FileOperations& FileOperations::system() {
    static FileOperations operations;
    return operations;
}

} // namespace ombrel
