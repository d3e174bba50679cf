#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel::test {

inline std::string bigEndian(std::uint64_t value, int size) {
    std::string bytes;
    for (int i = size - 1; i >= 0; --i) {
        bytes += i >= 8 ? '\0' : static_cast<char>(value >> (8 * i));
    }
    return bytes;
}

// Puts a binary property list together object by object, as other programs do or as nobody would:
// any sizes, any order, any references.
struct PropertyListBuilder {
    int referenceSize = 1;
    int offsetSize = 2;
    std::vector<std::string> objects; // their bytes
    std::uint64_t top = 0;

    std::uint64_t add(std::string bytes) {
        objects.push_back(std::move(bytes));
        return objects.size() - 1;
    }
    std::uint64_t ascii(std::string_view text) {
        return add(marker(0x50, text.size()) + std::string(text));
    }
    std::uint64_t real(double value) {
        return add("\x23" + bigEndian(std::bit_cast<std::uint64_t>(value), 8));
    }
    std::uint64_t array(const std::vector<std::uint64_t>& elements) {
        return add(marker(0xA0, elements.size()) + references(elements));
    }
    std::uint64_t dictionary(const std::vector<std::uint64_t>& keys,
                             const std::vector<std::uint64_t>& values) {
        return add(marker(0xD0, keys.size()) + references(keys) + references(values));
    }
    std::string references(const std::vector<std::uint64_t>& nodes) const {
        std::string bytes;
        for (const std::uint64_t node : nodes) {
            bytes += bigEndian(node, referenceSize);
        }
        return bytes;
    }
    static std::string marker(unsigned kind, std::uint64_t count) {
        if (count < 15) {
            return std::string(1, static_cast<char>(kind | count));
        }
        return std::string(1, static_cast<char>(kind | 15)) + "\x12" + bigEndian(count, 4);
    }
    static std::string trailer(int offsets, int references, std::uint64_t count, std::uint64_t root,
                               std::uint64_t table) {
        return std::string(6, '\0') + static_cast<char>(offsets) + static_cast<char>(references) +
               bigEndian(count, 8) + bigEndian(root, 8) + bigEndian(table, 8);
    }

    // The file, with `gap` between the table of offsets and the trailer.
    std::string bytes(std::string_view gap = "") const {
        std::string file = "bplist00";
        std::string table;
        for (const std::string& object : objects) {
            table += bigEndian(file.size(), offsetSize);
            file += object;
        }
        const std::uint64_t place = file.size();
        return file + table + std::string(gap) +
               trailer(offsetSize, referenceSize, objects.size(), top, place);
    }
};

} // namespace ombrel::test
