#include "platform/TextFile.h"

#include "platform/Text.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ombrel {

namespace {

namespace fs = std::filesystem;

// What one text file may have; what is made of it takes several times as much memory.
constexpr std::int64_t largestTextFile = std::int64_t{1} << 30;

std::string openingError(int number) {
    switch (number) {
    case ENOENT:
    case ENOTDIR:
        return "The file couldn't be opened because it doesn't exist.";
    case EACCES:
    case EPERM:
        return "The file couldn't be opened because you don't have permission to view it.";
    default:
        return "The file couldn't be opened: " + std::generic_category().message(number) + ".";
    }
}

class Descriptor {
  public:
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }
    int number() const { return m_number; }

  private:
    int m_number;
};

} // namespace

Result<std::string> readTextFile(const fs::path& file) {
    struct stat attributes {};
    // Asked before opening, since opening a device can do something.
    if (::stat(file.c_str(), &attributes) != 0) {
        return failure(openingError(errno));
    }
    if (!S_ISREG(attributes.st_mode)) {
        return failure(notARegularFile);
    }
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (descriptor.number() < 0) {
        return failure(openingError(errno));
    }
    if (::fstat(descriptor.number(), &attributes) != 0) {
        return failure(openingError(errno));
    }
    if (!S_ISREG(attributes.st_mode)) {
        return failure(notARegularFile);
    }
    constexpr const char* tooLarge = "The file couldn't be opened because it is larger than 1 GB.";
    if (attributes.st_size > largestTextFile) {
        return failure(tooLarge);
    }
    // One byte more than it should have tells the end without another round.
    std::string text(static_cast<std::size_t>(attributes.st_size) + 1, '\0');
    std::size_t length = 0;
    while (true) {
        if (length == text.size()) {
            if (static_cast<std::int64_t>(length) > largestTextFile) {
                return failure(tooLarge);
            }
            text.resize(length * 2);
        }
        const ssize_t count =
            ::read(descriptor.number(), text.data() + length, text.size() - length);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return failure("The file couldn't be read: " + std::generic_category().message(errno) +
                           ".");
        }
        if (count == 0) {
            break;
        }
        length += static_cast<std::size_t>(count);
    }
    text.resize(length);
    if (!isValidUtf8(text)) {
        return failure("The file couldn't be opened because it isn't valid UTF-8 text.");
    }
    return text;
}

} // namespace ombrel
