#pragma once

#include "core/Box.h"
#include "core/CowArray.h"
#include "core/DecodeError.h"
#include "core/DecodePath.h"
#include "core/Deep.h"
#include "core/Record.h"
#include "core/SharedReals.h"
#include "core/SharedText.h"
#include "core/UnknownKeys.h"
#include "platform/Data.h"
#include "platform/Date.h"
#include "platform/StoredValue.h"
#include "platform/Uuid.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace ombrel {

// Reads values by the one description of their keys from a reader (PropertyListReader, JsonReader:
// anything with their calls). The type that is asked for directs everything: an integer is taken
// where a real belongs and a whole real where an integer does, nothing else is converted. Keys that
// a record does not have are passed over and listed.
// Each call gives false when the value could not be decoded, and `error` tells why; what was given
// to it to fill then holds anything.
template <class Reader>
class Decoder {
  public:
    using Node = typename Reader::Node;

    explicit Decoder(Reader& reader) : m_reader(reader), m_allowance(reader.allowance()) {}

    const DecodeError& error() const { return m_error; }
    const UnknownKeys& unknownKeys() const { return m_unknownKeys; }

    // Decodes a value with all that is `Deep` in it, one after the other; `decode` leaves that out.
    template <class T>
    bool decodeWhole(Node node, T& out) {
        if (!decode(node, out)) {
            return false;
        }
        while (!m_deep.empty()) {
            const DeepValue next = std::move(m_deep.back());
            m_deep.pop_back();
            m_path.keep(next.outerPath);
            m_path.append(next.path);
            m_outerPath = m_path.size();
            if (!next.decode(*this, next.node, next.out)) {
                return false;
            }
        }
        return true;
    }

    bool decode(Node node, bool& out) {
        StoredValue value;
        if (!read(node, value)) {
            return false;
        }
        if (value.kind != StoredKind::boolean) {
            return mismatch(StoredKind::boolean, value);
        }
        out = value.boolean;
        return true;
    }

    bool decode(Node node, std::int64_t& out) {
        StoredValue value;
        if (!read(node, value)) {
            return false;
        }
        if (value.kind == StoredKind::real) {
            constexpr double limit = 9223372036854775808.0; // 2^63
            if (!(value.real >= -limit && value.real < limit) ||
                value.real != std::trunc(value.real)) {
                return fail("expected a whole number of 64 bits");
            }
            out = static_cast<std::int64_t>(value.real);
            return true;
        }
        if (value.kind != StoredKind::integer) {
            return mismatch(StoredKind::integer, value);
        }
        out = value.integer;
        return true;
    }

    bool decode(Node node, double& out) {
        StoredValue value;
        if (!read(node, value)) {
            return false;
        }
        return m_reader.real(value, out) || mismatch(StoredKind::real, value);
    }

    bool decode(Node node, std::string& out) {
        StoredValue value;
        if (!read(node, value)) {
            return false;
        }
        if (value.kind != StoredKind::string) {
            return mismatch(StoredKind::string, value);
        }
        return charge(value.count) && checked(m_reader.string(value, out));
    }

    bool decode(Node node, SharedReals& out) {
        std::vector<double> values;
        if (!decode(node, values)) {
            return false;
        }
        out = SharedReals(std::move(values));
        return true;
    }

    bool decode(Node node, SharedText& out) {
        std::string text;
        if (!decode(node, text)) {
            return false;
        }
        out = SharedText(std::move(text));
        return true;
    }

    bool decode(Node node, Uuid& out) {
        std::string text;
        if (!decode(node, text)) {
            return false;
        }
        const auto uuid = Uuid::parse(text);
        if (!uuid) {
            return fail("expected a UUID, found " + quoted(text));
        }
        out = *uuid;
        return true;
    }

    bool decode(Node node, Date& out) {
        StoredValue value;
        if (!read(node, value)) {
            return false;
        }
        return m_reader.date(value, out.secondsSinceReference) || mismatch(StoredKind::date, value);
    }

    bool decode(Node node, Data& out) {
        StoredValue value;
        if (!read(node, value)) {
            return false;
        }
        if (!m_reader.isData(value)) {
            return mismatch(StoredKind::data, value);
        }
        return charge(value.count) && checked(m_reader.data(value, out.bytes));
    }

    template <RawEnum E>
    bool decode(Node node, E& out) {
        std::string text;
        if (!decode(node, text)) {
            return false;
        }
        std::string known;
        for (const auto& entry : rawValues(E{})) {
            if (entry.raw == text) {
                out = entry.value;
                return true;
            }
            known += known.empty() ? "" : ", ";
            known += quoted(entry.raw);
        }
        return fail("expected one of " + known + ", found " + quoted(text));
    }

    bool decode(Node node, std::vector<double>& out) {
        StoredValue value;
        if (!beginArray(node, value, sizeof(double))) {
            return false;
        }
        out.resize(value.count);
        for (std::uint64_t i = 0; i < value.count; ++i) {
            i += m_reader.reals(value, i, out.data() + i);
            if (i < value.count && !element(value, i, out[i])) {
                return false;
            }
        }
        return leave();
    }

    template <class T>
    bool decode(Node node, std::vector<T>& out) {
        StoredValue value;
        if (!beginArray(node, value, sizeof(T))) {
            return false;
        }
        out.clear();
        out.reserve(value.count);
        for (std::uint64_t i = 0; i < value.count; ++i) {
            if (!element(value, i, out.emplace_back())) {
                return false;
            }
        }
        return leave();
    }

    template <class T>
    bool decode(Node node, CowArray<T>& out) {
        std::vector<T> values;
        if (!decode(node, values)) {
            return false;
        }
        out = CowArray<T>(std::move(values));
        return true;
    }

    template <class T>
    bool decode(Node node, std::set<T>& out) {
        StoredValue value;
        if (!beginArray(node, value, sizeof(T))) {
            return false;
        }
        out.clear();
        for (std::uint64_t i = 0; i < value.count; ++i) {
            T member{};
            if (!element(value, i, member)) {
                return false;
            }
            out.insert(std::move(member));
        }
        return leave();
    }

    // An array: key, value, key, value. Of equal keys the last one counts.
    template <class T>
    bool decode(Node node, std::map<Uuid, T>& out) {
        StoredValue value;
        if (!beginArray(node, value, sizeof(std::pair<Uuid, T>) + mapNode)) {
            return false;
        }
        if (value.count % 2 != 0) {
            return fail("expected an even number of elements: key, value, key, value");
        }
        out.clear();
        for (std::uint64_t i = 0; i < value.count; i += 2) {
            Uuid key;
            if (!element(value, i, key) || !element(value, i + 1, out[key])) {
                return false;
            }
        }
        return leave();
    }

    template <class T>
    bool decode(Node node, std::map<std::string, T>& out) {
        Dictionary dictionary(*this);
        if (!dictionary.open(node)) {
            return false;
        }
        out.clear();
        for (std::size_t i = 0; i < dictionary.size(); ++i) {
            const Entry entry = dictionary[i];
            m_path.push(entry.key);
            if (!charge(sizeof(std::pair<std::string, T>) + mapNode + entry.key.size()) ||
                !decode(entry.node, out[std::string(entry.key)])) {
                return false;
            }
            m_path.pop();
        }
        return leave();
    }

    template <class T>
    bool decode(Node node, Box<T>& out) {
        return charge(sizeof(T)) && decode(node, *out);
    }

    template <class T>
    bool decode(Node node, Deep<T>& out) {
        m_deep.push_back({node, &out.emplace(),
                          [](Decoder& self, Node place, void* value) {
                              return self.decode(place, *static_cast<T*>(value));
                          },
                          m_outerPath, m_path.after(m_outerPath)});
        return charge(sizeof(T));
    }

    template <RecordType T>
    bool decode(Node node, T& out) {
        Dictionary dictionary(*this);
        if (!dictionary.open(node)) {
            return false;
        }
        const bool complete = std::apply(
            [&](const auto&... keys) { return (field(dictionary, keys, out) && ...); }, T::keys());
        if (!complete) {
            return false;
        }
        dictionary.reportUnknown();
        return leave();
    }

    template <ElementsType T>
    bool decode(Node node, T& out) {
        StoredValue value;
        if (!beginArray(node, value, 0)) {
            return false;
        }
        constexpr std::uint64_t count = std::tuple_size_v<decltype(T::elements())>;
        if (value.count != count) {
            return fail("expected " + std::to_string(count) + " elements");
        }
        std::uint64_t i = 0;
        const bool complete = std::apply(
            [&](const auto&... fields) { return (element(value, i++, out.*fields) && ...); },
            T::elements());
        return complete && leave();
    }

    template <PayloadEnum T>
    bool decode(Node node, T& out) {
        Dictionary dictionary(*this);
        if (!dictionary.open(node)) {
            return false;
        }
        if (dictionary.size() != 1) {
            return fail(std::string(invalidNumberOfKeys));
        }
        const Entry entry = dictionary[0];
        std::string known;
        bool isKnown = false;
        bool decoded = false;
        const auto attempt = [&]<class Alternative>(const PayloadCase<Alternative>& oneCase) {
            known += known.empty() ? "" : ", ";
            known += quoted(oneCase.name);
            if (!isKnown && oneCase.name == entry.key) {
                isKnown = true;
                m_path.push(entry.key);
                Alternative payload{};
                decoded = decode(entry.node, payload);
                if (decoded) {
                    out.value = std::move(payload);
                    m_path.pop();
                }
            }
        };
        std::apply([&](const auto&... cases) { (attempt(cases), ...); }, T::cases());
        if (!isKnown) {
            return fail("expected one of the keys " + known + ", found " + quoted(entry.key));
        }
        return decoded && leave();
    }

    // For records whose reading rules are more than their description: the entries of one
    // dictionary. While it is open, `find` and `decode` read its values by key.
    class Dictionary;
    friend class Dictionary;

    // Whether decoding can go on after a call that gave false, by not counting what it read: the
    // error is taken back. Not after a file that could not be read, which says nothing about its
    // contents.
    struct Mark {
        DecodePath path;
        std::size_t open;
        std::size_t entries;
        UnknownKeys unknownKeys;
    };
    Mark mark() const { return {m_path, m_open.size(), m_entries.size(), m_unknownKeys}; }
    bool recover(const Mark& mark) {
        if (m_reader.readFailed()) {
            return false;
        }
        m_path = mark.path;
        m_open.resize(mark.open);
        m_entries.resize(mark.entries);
        m_unknownKeys = mark.unknownKeys;
        m_error = {};
        return true;
    }

    // Fails here with a message of the caller's.
    bool fail(std::string message) {
        if (m_error.message.empty()) {
            m_error = {m_path.text(), std::move(message)};
        }
        return false;
    }

  private:
    static constexpr std::size_t mapNode = 48;   // what a node of a map takes beside its value
    static constexpr std::size_t entryCost = 16; // keeps a dictionary shared a billionfold out

    struct Entry {
        std::string_view key;
        Node node;
        bool isUsed;
    };

    // What waits until what it stands in has been decoded.
    struct DeepValue {
        Node node;
        void* out;
        bool (*decode)(Decoder& self, Node node, void* out);
        std::size_t outerPath; // steps of the path to the Deep value that this one stands in
        DecodePath path;       // from there
    };

    static std::string quoted(std::string_view text) {
        constexpr std::size_t longest = 80;
        std::string quotedText = "\"";
        quotedText += text.substr(0, longest);
        quotedText += text.size() > longest ? "…\"" : "\"";
        return quotedText;
    }

    bool mismatch(StoredKind expected, const StoredValue& found) {
        return fail("expected " + std::string(Reader::nameOf(expected)) + ", found " +
                    std::string(Reader::nameOf(found.kind)));
    }

    bool checked(bool succeeded) { return succeeded || fail(m_reader.problem()); }

    bool read(Node node, StoredValue& value) { return checked(m_reader.read(node, value)); }

    bool charge(std::uint64_t bytes) {
        if (bytes > m_allowance) {
            m_allowance = 0;
            return fail("the value would take far more memory than the file has bytes");
        }
        m_allowance -= bytes;
        return true;
    }

    // `count` things of `each` bytes.
    bool charge(std::uint64_t count, std::uint64_t each) {
        return count <= m_allowance ? charge(count * each) : charge(m_allowance + 1);
    }

    bool enter(Node node) {
        if (m_open.size() == static_cast<std::size_t>(maximumNesting)) {
            return fail("nested too deeply");
        }
        if (std::find(m_open.begin(), m_open.end(), node) != m_open.end()) {
            return fail("contains itself");
        }
        m_open.push_back(node);
        return true;
    }

    bool leave() {
        m_open.pop_back();
        return true;
    }

    bool beginArray(Node node, StoredValue& value, std::uint64_t elementSize) {
        if (!read(node, value)) {
            return false;
        }
        if (value.kind != StoredKind::array) {
            return mismatch(StoredKind::array, value);
        }
        return enter(node) && charge(value.count, elementSize);
    }

    template <class T>
    bool element(const StoredValue& array, std::uint64_t index, T& out) {
        m_path.push(index);
        Node node{};
        if (!checked(m_reader.element(array, index, node)) || !decode(node, out)) {
            return false;
        }
        m_path.pop();
        return true;
    }

    template <class Owner, class Field>
    bool field(Dictionary& dictionary, const Key<Owner, Field>& key, Owner& out) {
        Field& value = out.*key.field;
        if constexpr (requires { value.has_value(); }) {
            return dictionary.decodeIfPresent(key.name, value);
        } else if (key.rule == KeyRule::required) {
            return dictionary.decode(key.name, value);
        } else {
            return dictionary.decodeOr(key.name, value);
        }
    }

    Reader& m_reader;
    std::uint64_t m_allowance;
    DecodePath m_path;
    DecodeError m_error;
    UnknownKeys m_unknownKeys;
    std::vector<DeepValue> m_deep;
    std::size_t m_outerPath = 0;
    std::vector<Node> m_open;     // the containers that decoding is inside
    std::vector<Entry> m_entries; // of the open dictionaries
};

template <class Reader>
class Decoder<Reader>::Dictionary {
  public:
    explicit Dictionary(Decoder& decoder) : m_decoder(decoder), m_first(decoder.m_entries.size()) {}
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;
    ~Dictionary() {
        if (m_decoder.m_entries.size() > m_first) {
            m_decoder.m_entries.resize(m_first);
        }
    }

    bool open(Node node) {
        StoredValue value;
        if (!m_decoder.read(node, value)) {
            return false;
        }
        if (value.kind != StoredKind::dictionary) {
            return m_decoder.mismatch(StoredKind::dictionary, value);
        }
        if (!m_decoder.enter(node) || !m_decoder.charge(value.count, entryCost)) {
            return false;
        }
        for (std::uint64_t i = 0; i < value.count; ++i) {
            Entry entry{};
            if (!m_decoder.checked(m_decoder.m_reader.entry(value, i, entry.key, entry.node))) {
                return false;
            }
            m_decoder.m_entries.push_back(entry);
        }
        m_size = value.count;
        return true;
    }

    std::size_t size() const { return m_size; }
    const Entry& operator[](std::size_t i) const { return m_decoder.m_entries[m_first + i]; }

    // The node of a key, or nothing. The key counts as known.
    std::optional<Node> find(std::string_view key) {
        for (std::size_t i = m_first; i < m_first + m_size; ++i) {
            Entry& entry = m_decoder.m_entries[i];
            if (entry.key == key) {
                entry.isUsed = true;
                return entry.node;
            }
        }
        return std::nullopt;
    }

    template <class T>
    bool decode(std::string_view key, T& out) {
        const auto node = find(key);
        m_decoder.m_path.push(key);
        if (!node) {
            return m_decoder.fail("the key is missing");
        }
        if (!m_decoder.decode(*node, out)) {
            return false;
        }
        m_decoder.m_path.pop();
        return true;
    }

    // An absent key leaves `out` as it is.
    template <class T>
    bool decodeOr(std::string_view key, T& out) {
        bool isAbsent = false;
        return absent(key, isAbsent) && (isAbsent || decode(key, out));
    }

    // An absent key gives none.
    template <class T>
    bool decodeIfPresent(std::string_view key, std::optional<T>& out) {
        out.reset();
        bool isAbsent = false;
        return absent(key, isAbsent) && (isAbsent || decode(key, out.emplace()));
    }

    // Lists the keys that were never looked for.
    void reportUnknown() const {
        for (std::size_t i = 0; i < m_size; ++i) {
            const Entry& entry = (*this)[i];
            if (entry.isUsed) {
                continue;
            }
            UnknownKeys& unknown = m_decoder.m_unknownKeys;
            ++unknown.count;
            if (unknown.paths.size() < UnknownKeys::longestList) {
                m_decoder.m_path.push(entry.key);
                unknown.paths.push_back(m_decoder.m_path.text());
                m_decoder.m_path.pop();
            }
        }
    }

  private:
    // A key whose value is null is as good as absent.
    bool absent(std::string_view key, bool& isAbsent) {
        const auto node = find(key);
        StoredValue value;
        if (node && !m_decoder.read(*node, value)) {
            return false;
        }
        isAbsent = !node || value.kind == StoredKind::nothing;
        return true;
    }

    Decoder& m_decoder;
    std::size_t m_first;
    std::size_t m_size = 0;
};

} // namespace ombrel
