#pragma once

#include "platform/ByteSink.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace ombrel {

// Counts the objects of a property list before it is written: it takes the same calls as the
// writer, and the writer needs to know how large a reference must be.
class PropertyListCounter {
  public:
    void nothing() { ++m_objects; }
    void boolean(bool) { ++m_objects; }
    void integer(std::int64_t) { ++m_objects; }
    void real(double) { ++m_objects; }
    void reals(std::span<const double> values) { m_objects += values.size() + 1; }
    void string(std::string_view) { ++m_objects; }
    void date(double) { ++m_objects; }
    void data(std::string_view) { ++m_objects; }
    void beginArray() { ++m_objects; }
    void endArray() {}
    void beginDictionary() { ++m_objects; }
    void key(std::string_view) { ++m_objects; } // written once however often it is used
    void endDictionary() {}

    // At least as many as the writer makes of the same calls.
    std::uint64_t objects() const { return m_objects; }

  private:
    std::uint64_t m_objects = 0;
};

// Writes one binary property list ("bplist00") front to back while it is told the value: no tree of
// it is held, only the references of open containers, the distinct keys and the places of objects
// (a long array of reals takes one entry of them).
// The calls must make up exactly one value; every element of a dictionary is a `key` and then its
// value. Keys must stay in memory until `finish`.
// Strings are UTF-8; invalid sequences are stored as U+FFFD.
class PropertyListWriter {
  public:
    // `atMostObjects` as PropertyListCounter gave it.
    PropertyListWriter(ByteSink sink, std::uint64_t atMostObjects);

    void nothing();
    void boolean(bool value);
    void integer(std::int64_t value);
    void real(double value);
    void reals(std::span<const double> values); // an array of them
    void string(std::string_view text);
    void date(double secondsSinceReference);
    void data(std::string_view bytes);
    void beginArray();
    void endArray();
    void beginDictionary();
    void key(std::string_view name);
    void endDictionary();

    // Writes what stands at the end of the file. False when the sink refused something.
    [[nodiscard]] bool finish();

  private:
    // `count` objects one after another, each of `size` bytes.
    struct Run {
        std::uint64_t offset;
        std::uint64_t count;
        std::uint64_t size;
    };

    std::uint64_t beginObject(); // its reference
    void addToParent(std::uint64_t reference);
    std::uint64_t stringObject(std::string_view text);
    void put(std::string_view bytes);
    void putByte(unsigned byte);
    void putInteger(std::uint64_t value, int size); // big-endian
    void putMarker(unsigned kind, std::uint64_t count);
    void putNumberObject(std::uint64_t value);
    void flushWhenFull();
    void flush();
    std::uint64_t position() const { return m_flushed + m_buffer.size(); }

    ByteSink m_sink;
    int m_referenceSize;
    bool m_failed = false;
    std::string m_buffer;
    std::uint64_t m_flushed = 0;
    std::uint64_t m_objects = 0;
    std::vector<Run> m_runs;
    std::vector<std::uint64_t> m_references; // of open containers' elements
    std::vector<std::size_t> m_containers;   // where each open container's begin in m_references
    std::unordered_map<std::string_view, std::uint64_t> m_keys;
};

} // namespace ombrel
