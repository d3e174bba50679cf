#include "platform/PropertyListBytes.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace ombrel {

PropertyListBytes::PropertyListBytes(std::string_view held)
    : m_held(held.data()), m_size(held.size()) {}

PropertyListBytes::PropertyListBytes(int descriptor, std::uint64_t size)
    : m_descriptor(descriptor), m_size(size),
      m_windows(std::make_unique_for_overwrite<char[]>(windowCount * windowSize)) {
    m_numbers.fill(noWindow);
}

bool PropertyListBytes::read(std::uint64_t offset, std::uint64_t count, void* to) {
    if (offset > m_size || count > m_size - offset) {
        return false;
    }
    if (count == 0) {
        return true;
    }
    if (m_descriptor < 0) {
        std::memcpy(to, m_held + offset, count);
        return true;
    }
    auto* out = static_cast<char*>(to);
    if (count >= windowSize) {
        return readFile(offset, count, out);
    }
    while (count > 0) {
        const char* bytes = window(offset / windowSize);
        if (!bytes) {
            return false;
        }
        const std::uint64_t start = offset % windowSize;
        const std::uint64_t part = std::min(count, windowSize - start);
        std::memcpy(out, bytes + start, part);
        out += part;
        offset += part;
        count -= part;
    }
    return true;
}

// The bytes of one window's stretch of the file, or null when they could not be read.
const char* PropertyListBytes::window(std::uint64_t number) {
    const std::size_t place = number % windowCount;
    char* bytes = m_windows.get() + place * windowSize;
    if (m_numbers[place] != number) {
        m_numbers[place] = noWindow;
        const std::uint64_t start = number * windowSize;
        if (!readFile(start, std::min(windowSize, m_size - start), bytes)) {
            return nullptr;
        }
        m_numbers[place] = number;
    }
    return bytes;
}

bool PropertyListBytes::readFile(std::uint64_t offset, std::uint64_t count, char* to) {
    while (count > 0 && !m_readFailed) {
        const ssize_t got = pread(m_descriptor, to, count, static_cast<off_t>(offset));
        if (got > 0) {
            to += got;
            offset += static_cast<std::uint64_t>(got);
            count -= static_cast<std::uint64_t>(got);
        } else if (got == 0) {
            m_readFailed = true;
            m_readFailure = "The file became shorter while it was being read";
        } else if (errno != EINTR) {
            m_readFailed = true;
            m_readFailure = std::strerror(errno);
        }
    }
    return count == 0;
}

} // namespace ombrel
