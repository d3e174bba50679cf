#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace ombrel {

// The bytes of a property list, read at any place: held by the caller, or of an open file through a
// few megabytes of windows. A file is read and not mapped, so that one which another program cuts
// short meanwhile is an error and not the end of the process.
class PropertyListBytes {
  public:
    // The bytes must outlive this.
    explicit PropertyListBytes(std::string_view held);
    // Of an open regular file of `size` bytes; the descriptor stays the caller's.
    PropertyListBytes(int descriptor, std::uint64_t size);

    std::uint64_t size() const { return m_size; }
    // Copies `count` bytes from `offset`. False when they are not all inside, or could not be read.
    bool read(std::uint64_t offset, std::uint64_t count, void* to);
    // Whether a place inside could not be read; what the system said of it.
    bool readFailed() const { return m_readFailed; }
    const std::string& readFailure() const { return m_readFailure; }

  private:
    static constexpr std::uint64_t windowSize = 1U << 16;
    static constexpr std::size_t windowCount = 64;
    static constexpr std::uint64_t noWindow = ~std::uint64_t{0};

    const char* window(std::uint64_t number);
    bool readFile(std::uint64_t offset, std::uint64_t count, char* to);

    const char* m_held = nullptr;
    int m_descriptor = -1;
    std::uint64_t m_size = 0;
    bool m_readFailed = false;
    std::string m_readFailure;
    std::array<std::uint64_t, windowCount> m_numbers;
    std::unique_ptr<char[]> m_windows;
};

} // namespace ombrel
