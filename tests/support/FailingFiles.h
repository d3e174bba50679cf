#pragma once

#include "platform/FileOperations.h"

#include <cerrno>
#include <unistd.h>

namespace ombrel::test {

// The real operations, of which one fails or is the process's last.
class FailingFiles : public FileOperations {
  public:
    enum class Ending { fails, killsBefore, killsAfter };

    // Operation number `at`, from 0, ends like that; none when `at` is negative.
    FailingFiles(int at, Ending ending, int error = EIO)
        : m_at(at), m_ending(ending), m_error(error) {}

    // How many operations there were.
    int count() const { return m_count; }

    int open(const std::string& path, int flags, mode_t mode) override {
        return run([&] { return FileOperations::open(path, flags, mode); });
    }
    int close(int descriptor) override {
        const bool fails = m_count == m_at && m_ending == Ending::fails;
        const int result = run([&] { return FileOperations::close(descriptor); });
        if (fails) {
            FileOperations::close(descriptor); // as the system does when it reports an error
        }
        return result;
    }
    ssize_t write(int descriptor, const void* bytes, std::size_t size) override {
        return run([&] { return FileOperations::write(descriptor, bytes, size); });
    }
    int setMode(int descriptor, mode_t mode) override {
        return run([&] { return FileOperations::setMode(descriptor, mode); });
    }
    int setOwner(int descriptor, uid_t user, gid_t group) override {
        return run([&] { return FileOperations::setOwner(descriptor, user, group); });
    }
    int synchronise(int descriptor) override {
        return run([&] { return FileOperations::synchronise(descriptor); });
    }
    int status(int descriptor, struct stat& status) override {
        return run([&] { return FileOperations::status(descriptor, status); });
    }
    int status(const std::string& path, struct stat& status) override {
        return run([&] { return FileOperations::status(path, status); });
    }
    int lock(int descriptor) override {
        return run([&] { return FileOperations::lock(descriptor); });
    }
    int linkDescriptor(int descriptor, const std::string& to) override {
        return run([&] { return FileOperations::linkDescriptor(descriptor, to); });
    }
    int link(const std::string& from, const std::string& to) override {
        return run([&] { return FileOperations::link(from, to); });
    }
    int rename(const std::string& from, const std::string& to) override {
        return run([&] { return FileOperations::rename(from, to); });
    }
    int remove(const std::string& path) override {
        return run([&] { return FileOperations::remove(path); });
    }

  private:
    template <class Operation>
    auto run(const Operation& operation) -> decltype(operation()) {
        const bool isHere = m_count++ == m_at;
        if (isHere && m_ending == Ending::killsBefore) {
            _exit(9);
        }
        if (isHere && m_ending == Ending::fails) {
            errno = m_error;
            return -1;
        }
        const auto result = operation();
        if (isHere) {
            _exit(9);
        }
        return result;
    }

    int m_at;
    Ending m_ending;
    int m_error;
    int m_count = 0;
};

} // namespace ombrel::test
