#include "platform/Uuid.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <random>
#include <sys/random.h>

namespace ombrel {

namespace {

constexpr std::size_t textLength = 36;
constexpr std::string_view digits = "0123456789ABCDEF";

bool isDashPlace(std::size_t place) {
    return place == 8 || place == 13 || place == 18 || place == 23;
}

int digitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

// The system's random bytes, fetched many at a time: one call for each identifier would cost more
// than everything else about making a chunk.
class RandomBytes {
  public:
    std::array<std::uint8_t, 16> take() {
        if (m_used == m_bytes.size()) {
            refill();
        }
        std::array<std::uint8_t, 16> taken;
        std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(m_used), taken.size(),
                    taken.begin());
        m_used += taken.size();
        return taken;
    }

  private:
    void refill() {
        std::size_t filled = 0;
        while (filled < m_bytes.size()) {
            const ssize_t got = getrandom(m_bytes.data() + filled, m_bytes.size() - filled, 0);
            if (got > 0) {
                filled += static_cast<std::size_t>(got);
            } else if (errno != EINTR) {
                std::random_device device;
                std::generate(m_bytes.begin() + static_cast<std::ptrdiff_t>(filled), m_bytes.end(),
                              [&] { return static_cast<std::uint8_t>(device()); });
                filled = m_bytes.size();
            }
        }
        m_used = 0;
    }

    std::array<std::uint8_t, 4096> m_bytes;
    std::size_t m_used = m_bytes.size();
};

} // namespace

Uuid Uuid::random() {
    thread_local RandomBytes source;
    Uuid id{source.take()};
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0f) | 0x40); // version 4
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3f) | 0x80); // the RFC's variant
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != textLength) {
        return std::nullopt;
    }
    Uuid id;
    std::size_t place = 0;
    for (std::uint8_t& byte : id.bytes) {
        if (isDashPlace(place)) {
            if (text[place] != '-') {
                return std::nullopt;
            }
            ++place;
        }
        const int high = digitValue(text[place]);
        const int low = digitValue(text[place + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        byte = static_cast<std::uint8_t>(high * 16 + low);
        place += 2;
    }
    return id;
}

std::string Uuid::text() const {
    std::string text;
    text.reserve(textLength);
    for (const std::uint8_t byte : bytes) {
        if (isDashPlace(text.size())) {
            text += '-';
        }
        text += digits[byte >> 4];
        text += digits[byte & 0x0f];
    }
    return text;
}

} // namespace ombrel
