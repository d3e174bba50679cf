#include "platform/PropertyListReader.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

namespace ombrel {

namespace {

constexpr std::uint64_t headerSize = 8;
constexpr std::uint64_t trailerSize = 32;

std::uint64_t load(const unsigned char* from, int size) {
    std::uint64_t value = 0;
    for (int i = 0; i < size; ++i) {
        value = value << 8 | from[i];
    }
    return value;
}

bool looksLikeXml(std::string_view start) {
    start = withoutByteOrderMark(start);
    const std::size_t first = start.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        return false;
    }
    start.remove_prefix(first);
    return start.starts_with("<?xml") || start.starts_with("<!DOCTYPE plist") ||
           start.starts_with("<plist");
}

} // namespace

Result<PropertyListReader> PropertyListReader::open(PropertyListBytes bytes) {
    PropertyListReader reader(std::move(bytes));
    PropertyListBytes& file = reader.m_bytes;
    std::array<char, 64> start{};
    const std::uint64_t startSize = std::min<std::uint64_t>(start.size(), file.size());
    std::array<unsigned char, trailerSize> trailer{};
    if (!file.read(0, startSize, start.data())) {
        return failure(file.readFailure());
    }
    const std::string_view header(start.data(), startSize);
    if (looksLikeXml(header)) {
        return failure("It is an XML property list, and only binary ones can be read");
    }
    if (!header.starts_with("bplist0")) {
        return failure("It is not a binary property list");
    }
    if (file.size() < headerSize + 1 + trailerSize) {
        return failure("The property list is cut short");
    }
    reader.m_end = file.size() - trailerSize;
    if (!file.read(reader.m_end, trailerSize, trailer.data())) {
        return failure(file.readFailure());
    }
    reader.m_offsetSize = trailer[6];
    reader.m_referenceSize = trailer[7];
    reader.m_objects = load(&trailer[8], 8);
    reader.m_top = load(&trailer[16], 8);
    reader.m_offsets = load(&trailer[24], 8);
    const auto isSize = [](int size) { return size >= 1 && size <= 8; };
    if (!isSize(reader.m_offsetSize) || !isSize(reader.m_referenceSize)) {
        return failure("The property list is cut short, or its trailer is damaged");
    }
    if (reader.m_offsets < headerSize || reader.m_offsets > reader.m_end ||
        reader.m_objects >
            (reader.m_end - reader.m_offsets) / static_cast<std::uint64_t>(reader.m_offsetSize)) {
        return failure("The property list is cut short, or its table of objects is damaged");
    }
    if (reader.m_top >= reader.m_objects) {
        return failure("The property list has no root object");
    }
    return reader;
}

bool PropertyListReader::read(Node node, StoredValue& value) {
    const auto size = static_cast<std::uint64_t>(m_offsetSize);
    std::uint64_t offset = 0;
    if (node >= m_objects) {
        return fail("refers to an object that does not exist");
    }
    if (!get(m_offsets + node * size, m_offsetSize, offset)) {
        return false;
    }
    if (offset < headerSize || offset >= m_end) {
        return fail("an object lies outside the file");
    }
    std::uint64_t marker = 0;
    if (!get(offset, 1, marker)) {
        return false;
    }
    ++offset;
    value = {};
    const std::uint64_t kind = marker >> 4;
    if (kind <= 3) {
        return readScalar(static_cast<unsigned>(marker), offset, value);
    }
    value.count = marker & 15;
    if (kind == 8) { // a UID: 1 to 16 bytes
        value.kind = StoredKind::other;
        return true;
    }
    if (value.count == 15) {
        std::uint64_t sizeMarker = 0;
        if (!get(offset, 1, sizeMarker)) {
            return false;
        }
        ++offset;
        StoredValue count;
        if (sizeMarker >> 4 != 1) {
            return fail("an object's count is damaged");
        }
        if (!readScalar(static_cast<unsigned>(sizeMarker), offset, count)) {
            return false;
        }
        if (count.kind != StoredKind::integer || count.integer < 0) {
            return fail("an object is larger than the file");
        }
        offset += std::uint64_t{1} << (sizeMarker & 15);
        value.count = static_cast<std::uint64_t>(count.integer);
    }
    value.place = offset;
    std::uint64_t elementSize = 0;
    switch (kind) {
    case 4:
        value.kind = StoredKind::data;
        elementSize = 1;
        break;
    case 5: // ASCII
        value.kind = StoredKind::string;
        elementSize = 1;
        break;
    case 6: // UTF-16
        value.kind = StoredKind::string;
        elementSize = 2;
        value.isWide = true;
        break;
    case 10:
        value.kind = StoredKind::array;
        elementSize = static_cast<std::uint64_t>(m_referenceSize);
        break;
    case 11: // an ordered set
    case 12: // a set
        value.kind = StoredKind::other;
        return true;
    case 13:
        value.kind = StoredKind::dictionary;
        elementSize = 2 * static_cast<std::uint64_t>(m_referenceSize);
        break;
    default:
        return fail("an object is of no known kind");
    }
    if (offset > m_end || value.count > (m_end - offset) / elementSize) {
        return fail("an object is larger than the file");
    }
    return true;
}

bool PropertyListReader::readScalar(unsigned marker, std::uint64_t offset, StoredValue& value) {
    if (marker == 0x00) {
        value.kind = StoredKind::nothing;
        return true;
    }
    if (marker == 0x08 || marker == 0x09) {
        value.kind = StoredKind::boolean;
        value.boolean = marker == 0x09;
        return true;
    }
    std::uint64_t bits = 0;
    if (marker == 0x22 || marker == 0x23) {
        if (!get(offset, marker == 0x22 ? 4 : 8, bits)) {
            return false;
        }
        value.kind = StoredKind::real;
        value.real =
            marker == 0x22
                ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)))
                : std::bit_cast<double>(bits);
        return true;
    }
    if (marker == 0x33) {
        if (!get(offset, 8, bits)) {
            return false;
        }
        value.kind = StoredKind::date;
        value.real = std::bit_cast<double>(bits);
        return true;
    }
    if (marker >= 0x10 && marker <= 0x13) {
        if (!get(offset, 1 << (marker & 15), bits)) {
            return false;
        }
        value.kind = StoredKind::integer; // of 8 bytes it has a sign, of fewer it has none
        value.integer = static_cast<std::int64_t>(bits);
        value.real = static_cast<double>(value.integer);
        return true;
    }
    if (marker == 0x14) { // 16 bytes with a sign; how numbers from 2^63 on are stored
        std::uint64_t upper = 0;
        if (!get(offset, 8, upper) || !get(offset + 8, 8, bits)) {
            return false;
        }
        const auto signedUpper = static_cast<std::int64_t>(upper);
        const auto signedBits = static_cast<std::int64_t>(bits);
        if ((signedUpper == 0 && signedBits >= 0) || (signedUpper == -1 && signedBits < 0)) {
            value.kind = StoredKind::integer;
            value.integer = signedBits;
            value.real = static_cast<double>(signedBits);
        } else {
            value.kind = StoredKind::real;
            value.real =
                std::ldexp(static_cast<double>(signedUpper), 64) + static_cast<double>(bits);
        }
        return true;
    }
    return fail("an object is of no known kind");
}

bool PropertyListReader::element(const StoredValue& array, std::uint64_t index, Node& node) {
    return get(array.place + index * static_cast<std::uint64_t>(m_referenceSize), m_referenceSize,
               node);
}

bool PropertyListReader::entry(const StoredValue& dictionary, std::uint64_t index,
                               std::string_view& key, Node& node) {
    Node keyNode = 0;
    if (!element(dictionary, index, keyNode) ||
        !element(dictionary, dictionary.count + index, node)) {
        return false;
    }
    auto found = m_keys.find(keyNode);
    if (found == m_keys.end()) {
        StoredValue value;
        if (!read(keyNode, value)) {
            return false;
        }
        if (value.kind != StoredKind::string) {
            return fail("a key is not a string");
        }
        std::string text;
        if (!string(value, text)) {
            return false;
        }
        found = m_keys.emplace(keyNode, std::move(text)).first;
    }
    key = found->second;
    return true;
}

bool PropertyListReader::string(const StoredValue& value, std::string& text) {
    if (!value.isWide) {
        text.resize(value.count);
        if (!m_bytes.read(value.place, value.count, text.data())) {
            return fail("the file could not be read");
        }
        return isAscii(text) || fail("a string has bytes that are not ASCII");
    }
    text.clear();
    std::array<unsigned char, 4096> block;
    char32_t lead = 0; // a high surrogate that waits for its other half
    for (std::uint64_t done = 0; done < 2 * value.count;) {
        const std::uint64_t size = std::min<std::uint64_t>(block.size(), 2 * value.count - done);
        if (!m_bytes.read(value.place + done, size, block.data())) {
            return fail("the file could not be read");
        }
        done += size;
        for (std::uint64_t i = 0; i < size; i += 2) {
            const char32_t unit = static_cast<char32_t>(block[i]) << 8 | block[i + 1];
            const bool isTrail = unit >= 0xDC00 && unit <= 0xDFFF;
            if (lead != 0 && isTrail) {
                appendScalar(text, 0x10000 + ((lead - 0xD800) << 10) + (unit - 0xDC00));
                lead = 0;
                continue;
            }
            if (lead != 0) {
                appendScalar(text, 0xFFFD);
                lead = 0;
            }
            if (unit >= 0xD800 && unit <= 0xDBFF) {
                lead = unit;
            } else {
                appendScalar(text, isTrail ? char32_t{0xFFFD} : unit);
            }
        }
    }
    if (lead != 0) {
        appendScalar(text, 0xFFFD);
    }
    return true;
}

bool PropertyListReader::data(const StoredValue& value, std::string& bytes) {
    bytes.resize(value.count);
    return m_bytes.read(value.place, value.count, bytes.data()) ||
           fail("the file could not be read");
}

bool PropertyListReader::real(const StoredValue& value, double& number) {
    number = value.real;
    return value.kind == StoredKind::real || value.kind == StoredKind::integer;
}

bool PropertyListReader::date(const StoredValue& value, double& secondsSinceReference) {
    secondsSinceReference = value.real;
    return value.kind == StoredKind::date;
}

// Writers put the reals of an array one after another, and their places too. So whole stretches are
// read at once: the references, while they count up their places, while those go up by one real's
// size the reals.
std::uint64_t PropertyListReader::reals(const StoredValue& array, std::uint64_t first, double* to) {
    constexpr std::uint64_t block = 512;
    constexpr std::uint64_t realSize = 9;
    std::array<unsigned char, block * realSize> buffer;
    std::array<Node, block> nodes;
    const auto referenceSize = static_cast<std::uint64_t>(m_referenceSize);
    const auto offsetSize = static_cast<std::uint64_t>(m_offsetSize);
    std::uint64_t done = 0;
    while (first + done < array.count) {
        const std::uint64_t count = std::min(block, array.count - first - done);
        if (!m_bytes.read(array.place + (first + done) * referenceSize, count * referenceSize,
                          buffer.data())) {
            return done;
        }
        for (std::uint64_t i = 0; i < count; ++i) {
            nodes[i] = load(&buffer[i * referenceSize], m_referenceSize);
        }
        for (std::uint64_t i = 0; i < count;) {
            std::uint64_t run = 1;
            while (i + run < count && nodes[i + run] == nodes[i] + run) {
                ++run;
            }
            if (nodes[i] >= m_objects || run > m_objects - nodes[i] ||
                !m_bytes.read(m_offsets + nodes[i] * offsetSize, run * offsetSize, buffer.data())) {
                return done;
            }
            const std::uint64_t offset = load(buffer.data(), m_offsetSize);
            std::uint64_t adjacent = 1;
            while (adjacent < run && load(&buffer[adjacent * offsetSize], m_offsetSize) ==
                                         offset + adjacent * realSize) {
                ++adjacent;
            }
            if (offset < headerSize || offset > m_end || adjacent * realSize > m_end - offset ||
                !m_bytes.read(offset, adjacent * realSize, buffer.data())) {
                return done;
            }
            for (std::uint64_t k = 0; k < adjacent; ++k, ++done) {
                if (buffer[k * realSize] != 0x23) {
                    return done;
                }
                to[done] = std::bit_cast<double>(load(&buffer[k * realSize + 1], 8));
            }
            i += adjacent;
        }
    }
    return done;
}

std::string_view PropertyListReader::nameOf(StoredKind kind) {
    switch (kind) {
    case StoredKind::nothing:
        return "nothing";
    case StoredKind::boolean:
        return "a boolean";
    case StoredKind::integer:
        return "an integer";
    case StoredKind::real:
        return "a real";
    case StoredKind::date:
        return "a date";
    case StoredKind::data:
        return "data";
    case StoredKind::string:
        return "a string";
    case StoredKind::array:
        return "an array";
    case StoredKind::dictionary:
        return "a dictionary";
    case StoredKind::other:
        break;
    }
    return "a UID or a set";
}

bool PropertyListReader::fail(std::string_view problem) {
    m_problem = m_bytes.readFailed() ? std::string_view(m_bytes.readFailure()) : problem;
    return false;
}

bool PropertyListReader::get(std::uint64_t offset, int size, std::uint64_t& number) {
    std::array<unsigned char, 8> bytes;
    if (offset > m_end || static_cast<std::uint64_t>(size) > m_end - offset ||
        !m_bytes.read(offset, static_cast<std::uint64_t>(size), bytes.data())) {
        return fail("an object is larger than the file");
    }
    number = load(bytes.data(), size);
    return true;
}

} // namespace ombrel
