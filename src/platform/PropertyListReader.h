#pragma once

#include "platform/PropertyListBytes.h"
#include "platform/Result.h"
#include "platform/StoredValue.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace ombrel {

// Reads a binary property list at any place. Any that is legal is accepted: integers of 1 to 16
// bytes, reals of 4 and 8, references and offsets of 1 to 8 bytes, objects in any order and shared.
// Nothing is read before it is asked for, and everything is checked when it is read: whatever the
// bytes are, a call gives a value or false with a `problem`.
class PropertyListReader {
  public:
    using Node = std::uint64_t; // the number of an object

    // Looks at header and trailer. Refuses XML property lists with an error that says so.
    static Result<PropertyListReader> open(PropertyListBytes bytes);

    Node top() const { return m_top; }
    // How much memory the decoded value may take, in bytes: in proportion to the file, so that one
    // whose objects are shared a billionfold is refused.
    std::uint64_t allowance() const { return (std::uint64_t{1} << 26) + 64 * m_bytes.size(); }

    // What stands at a node.
    bool read(Node node, StoredValue& value);
    bool element(const StoredValue& array, std::uint64_t index, Node& node);
    // The keys live as long as this reader.
    bool entry(const StoredValue& dictionary, std::uint64_t index, std::string_view& key,
               Node& node);
    // A string as valid UTF-8.
    bool string(const StoredValue& value, std::string& text);
    bool data(const StoredValue& value, std::string& bytes);
    // Whether the value is what is asked for: false says only that it is of another kind.
    static bool real(const StoredValue& value, double& number);
    static bool date(const StoredValue& value, double& secondsSinceReference);
    static bool isData(const StoredValue& value) { return value.kind == StoredKind::data; }
    // Fast path: reads elements of the array that are 8-byte reals, from `first` on, until one is
    // something else or there are no more; gives how many it read.
    std::uint64_t reals(const StoredValue& array, std::uint64_t first, double* to);

    // Why the last call gave false.
    const std::string& problem() const { return m_problem; }
    // Whether it was the file that could not be read, whatever its contents are.
    bool readFailed() const { return m_bytes.readFailed(); }
    static std::string_view nameOf(StoredKind kind);

  private:
    explicit PropertyListReader(PropertyListBytes bytes) : m_bytes(std::move(bytes)) {}

    bool fail(std::string_view problem);
    bool get(std::uint64_t offset, int size, std::uint64_t& number);
    bool readScalar(unsigned marker, std::uint64_t offset, StoredValue& value);

    PropertyListBytes m_bytes;
    int m_offsetSize = 0;
    int m_referenceSize = 0;
    std::uint64_t m_objects = 0;
    Node m_top = 0;
    std::uint64_t m_offsets = 0; // where the table of offsets is
    std::uint64_t m_end = 0;     // of everything before the trailer
    std::unordered_map<Node, std::string> m_keys;
    std::string m_problem;
};

} // namespace ombrel
