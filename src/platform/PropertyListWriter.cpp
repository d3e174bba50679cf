#include "platform/PropertyListWriter.h"

#include "platform/Text.h"

#include <algorithm>
#include <bit>
#include <limits>

// The format: a header, the objects, a table of the objects' places, and a trailer of 32 bytes. A
// container holds the numbers ("references") of its elements. Here every container is written after
// its elements, so the last object is the root.
namespace ombrel {

namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 18;

// How many bytes hold every number below `limit`, of the sizes that all readers know.
int sizeFor(std::uint64_t limit) {
    for (const int size : {1, 2, 4}) {
        if (limit < (std::uint64_t{1} << (8 * size))) {
            return size;
        }
    }
    return 8;
}

void store(char* to, std::uint64_t value, int size) {
    for (int i = 0; i < size; ++i) {
        to[i] = static_cast<char>(value >> (8 * (size - 1 - i)));
    }
}

} // namespace

PropertyListWriter::PropertyListWriter(ByteSink sink, std::uint64_t atMostObjects)
    : m_sink(std::move(sink)), m_referenceSize(sizeFor(atMostObjects)) {
    m_buffer.reserve(bufferSize + bufferSize / 8);
    put("bplist00");
}

void PropertyListWriter::nothing() {
    addToParent(beginObject());
    putByte(0x00);
}

void PropertyListWriter::boolean(bool value) {
    addToParent(beginObject());
    putByte(value ? 0x09 : 0x08);
}

void PropertyListWriter::integer(std::int64_t value) {
    addToParent(beginObject());
    putNumberObject(static_cast<std::uint64_t>(value));
}

void PropertyListWriter::real(double value) {
    addToParent(beginObject());
    putByte(0x23);
    putInteger(std::bit_cast<std::uint64_t>(value), 8);
}

void PropertyListWriter::reals(std::span<const double> values) {
    constexpr std::size_t realSize = 9; // the marker and eight bytes
    const std::uint64_t first = m_objects;
    if (!values.empty()) {
        m_runs.push_back({position(), values.size(), realSize});
        m_objects += values.size();
    }
    constexpr std::size_t block = 4096;
    for (std::size_t i = 0; i < values.size(); i += block) {
        const std::size_t count = std::min(block, values.size() - i);
        const std::size_t start = m_buffer.size();
        m_buffer.resize(start + count * realSize);
        char* to = m_buffer.data() + start;
        for (std::size_t k = 0; k < count; ++k, to += realSize) {
            to[0] = 0x23;
            store(to + 1, std::bit_cast<std::uint64_t>(values[i + k]), 8);
        }
        flushWhenFull();
    }
    addToParent(beginObject());
    putMarker(0xA0, values.size());
    const auto size = static_cast<std::size_t>(m_referenceSize);
    for (std::size_t i = 0; i < values.size(); i += block) {
        const std::size_t count = std::min(block, values.size() - i);
        const std::size_t start = m_buffer.size();
        m_buffer.resize(start + count * size);
        char* to = m_buffer.data() + start;
        for (std::size_t k = 0; k < count; ++k, to += size) {
            store(to, first + i + k, m_referenceSize);
        }
        flushWhenFull();
    }
}

void PropertyListWriter::string(std::string_view text) {
    addToParent(stringObject(text));
}

void PropertyListWriter::date(double secondsSinceReference) {
    addToParent(beginObject());
    putByte(0x33);
    putInteger(std::bit_cast<std::uint64_t>(secondsSinceReference), 8);
}

void PropertyListWriter::data(std::string_view bytes) {
    addToParent(beginObject());
    putMarker(0x40, bytes.size());
    put(bytes);
}

void PropertyListWriter::beginArray() {
    m_containers.push_back(m_references.size());
}

void PropertyListWriter::endArray() {
    const std::size_t first = m_containers.back();
    m_containers.pop_back();
    const std::uint64_t reference = beginObject();
    putMarker(0xA0, m_references.size() - first);
    for (std::size_t i = first; i < m_references.size(); ++i) {
        putInteger(m_references[i], m_referenceSize);
    }
    m_references.resize(first);
    addToParent(reference);
}

void PropertyListWriter::beginDictionary() {
    m_containers.push_back(m_references.size());
}

void PropertyListWriter::key(std::string_view name) {
    auto found = m_keys.find(name);
    if (found == m_keys.end()) {
        found = m_keys.emplace(name, stringObject(name)).first;
    }
    m_references.push_back(found->second);
}

void PropertyListWriter::endDictionary() {
    const std::size_t first = m_containers.back();
    m_containers.pop_back();
    const std::uint64_t reference = beginObject();
    putMarker(0xD0, (m_references.size() - first) / 2);
    for (const std::size_t part : {std::size_t{0}, std::size_t{1}}) { // keys, then values
        for (std::size_t i = first + part; i < m_references.size(); i += 2) {
            putInteger(m_references[i], m_referenceSize);
        }
    }
    m_references.resize(first);
    addToParent(reference);
}

bool PropertyListWriter::finish() {
    const std::uint64_t table = position();
    const int offsetSize = sizeFor(table);
    for (const Run& run : m_runs) {
        for (std::uint64_t i = 0; i < run.count; ++i) {
            putInteger(run.offset + i * run.size, offsetSize);
        }
    }
    putInteger(0, 6); // five bytes that mean nothing, and the sort version
    putByte(static_cast<unsigned>(offsetSize));
    putByte(static_cast<unsigned>(m_referenceSize));
    putInteger(m_objects, 8);
    putInteger(m_objects - 1, 8);
    putInteger(table, 8);
    flush();
    return !m_failed;
}

// Every object starts with this, and its bytes follow at once.
std::uint64_t PropertyListWriter::beginObject() {
    m_runs.push_back({position(), 1, 0});
    return m_objects++;
}

void PropertyListWriter::addToParent(std::uint64_t reference) {
    if (!m_containers.empty()) {
        m_references.push_back(reference);
    }
}

std::uint64_t PropertyListWriter::stringObject(std::string_view text) {
    const std::uint64_t reference = beginObject();
    if (isAscii(text)) {
        putMarker(0x50, text.size());
        put(text);
        return reference;
    }
    std::string units;
    units.reserve(2 * text.size());
    const auto append = [&units](char32_t unit) {
        units += static_cast<char>(unit >> 8);
        units += static_cast<char>(unit);
    };
    for (std::size_t i = 0; i < text.size();) {
        const DecodedScalar decoded = decodeScalar(text, i);
        i += decoded.length;
        if (decoded.scalar < 0x10000) {
            append(decoded.scalar);
        } else {
            append(0xD800 + ((decoded.scalar - 0x10000) >> 10));
            append(0xDC00 + ((decoded.scalar - 0x10000) & 0x3FF));
        }
    }
    putMarker(0x60, units.size() / 2);
    put(units);
    return reference;
}

void PropertyListWriter::put(std::string_view bytes) {
    if (bytes.size() >= bufferSize) {
        flush();
        if (!m_failed) {
            m_failed = !m_sink(bytes);
        }
        m_flushed += bytes.size();
        return;
    }
    m_buffer += bytes;
    flushWhenFull();
}

void PropertyListWriter::putByte(unsigned byte) {
    m_buffer += static_cast<char>(byte);
}

void PropertyListWriter::putInteger(std::uint64_t value, int size) {
    char bytes[8];
    store(bytes, value, size);
    put({bytes, static_cast<std::size_t>(size)});
}

// The kind in the upper half of a byte, the count in the lower half or, from 15 on, as an integer
// object after it.
void PropertyListWriter::putMarker(unsigned kind, std::uint64_t count) {
    if (count < 15) {
        putByte(kind | static_cast<unsigned>(count));
        return;
    }
    putByte(kind | 15);
    putNumberObject(count);
}

// Integers of 1, 2 and 4 bytes have no sign; negative ones take 8.
void PropertyListWriter::putNumberObject(std::uint64_t value) {
    const int size = value > std::numeric_limits<std::uint32_t>::max() ? 8 : sizeFor(value);
    putByte(0x10U | static_cast<unsigned>(std::countr_zero(static_cast<unsigned>(size))));
    putInteger(value, size);
}

void PropertyListWriter::flushWhenFull() {
    if (m_buffer.size() >= bufferSize) {
        flush();
    }
}

void PropertyListWriter::flush() {
    if (!m_failed && !m_buffer.empty()) {
        m_failed = !m_sink(m_buffer);
    }
    m_flushed += m_buffer.size();
    m_buffer.clear();
}

} // namespace ombrel
