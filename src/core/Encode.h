#pragma once

#include "core/Box.h"
#include "core/CowArray.h"
#include "core/Deep.h"
#include "core/Record.h"
#include "core/SharedReals.h"
#include "core/SharedText.h"
#include "platform/Data.h"
#include "platform/Date.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <type_traits>
#include <variant>
#include <vector>

namespace ombrel {

// Tells a value to a writer (PropertyListCounter, PropertyListWriter, JsonWriter: anything with
// their calls), by the one description of its keys. An absent optional writes no key.
template <class Writer>
class Encoder {
  public:
    explicit Encoder(Writer& writer) : m_writer(writer) {}

    void encode(bool value) { m_writer.boolean(value); }
    void encode(std::int64_t value) { m_writer.integer(value); }
    void encode(double value) { m_writer.real(value); }
    void encode(const std::string& value) { m_writer.string(value); }
    void encode(const SharedText& value) { m_writer.string(value.text()); }
    void encode(const Uuid& value) { m_writer.string(value.text()); }
    void encode(const Date& value) { m_writer.date(value.secondsSinceReference); }
    void encode(const Data& value) { m_writer.data(value.bytes); }
    void encode(const std::vector<double>& value) { m_writer.reals(value); }
    void encode(const SharedReals& value) { m_writer.reals(value.values()); }
    template <RawEnum E>
    void encode(E value) {
        m_writer.string(rawValue(value));
    }
    template <class T>
    void encode(const std::vector<T>& values) {
        array(values);
    }
    template <class T>
    void encode(const CowArray<T>& values) {
        encode(values.values());
    }
    template <class T>
    void encode(const std::set<T>& values) {
        array(values);
    }
    template <class T>
    void encode(const Box<T>& value) {
        encode(*value);
    }
    // Needs a writer that can put things off (DeepJsonWriter).
    template <class T>
    void encode(const Deep<T>& value) {
        m_writer.later(*value);
    }
    // A dictionary.
    template <class T>
    void encode(const std::map<std::string, T>& values) {
        if (!enter()) {
            return;
        }
        m_writer.beginDictionary();
        for (const auto& [key, value] : values) {
            m_writer.key(key);
            encode(value);
        }
        m_writer.endDictionary();
        --m_depth;
    }
    // An array: key, value, key, value.
    template <class T>
    void encode(const std::map<Uuid, T>& values) {
        if (!enter()) {
            return;
        }
        m_writer.beginArray();
        for (const auto& [key, value] : values) {
            encode(key);
            encode(value);
        }
        m_writer.endArray();
        --m_depth;
    }
    template <RecordType T>
    void encode(const T& record) {
        if constexpr (requires { m_writer.later(record); }) {
            if (m_writer.isWaiting()) {
                m_writer.later(record);
                return;
            }
        }
        if (!enter()) {
            return;
        }
        m_writer.beginDictionary();
        std::apply([&](const auto&... keys) { (field(keys, record), ...); }, T::keys());
        m_writer.endDictionary();
        --m_depth;
    }
    template <ElementsType T>
    void encode(const T& record) {
        if (!enter()) {
            return;
        }
        m_writer.beginArray();
        std::apply([&](const auto&... fields) { (encode(record.*fields), ...); }, T::elements());
        m_writer.endArray();
        --m_depth;
    }
    template <PayloadEnum T>
    void encode(const T& value) {
        if (!enter()) {
            return;
        }
        m_writer.beginDictionary();
        m_writer.key(std::apply(
            [&](const auto&... cases) { return std::array{cases.name...}[value.value.index()]; },
            T::cases()));
        std::visit([&](const auto& payload) { encode(payload); }, value.value);
        m_writer.endDictionary();
        --m_depth;
    }

    // Whether something was nested too deeply and written as nothing.
    bool wasTooDeep() const { return m_wasTooDeep; }

  private:
    template <class Values>
    void array(const Values& values) {
        if (!enter()) {
            return;
        }
        m_writer.beginArray();
        for (const auto& value : values) {
            encode(value);
        }
        m_writer.endArray();
        --m_depth;
    }

    template <class Owner, class Field>
    void field(const Key<Owner, Field>& key, const Owner& record) {
        const Field& value = record.*key.field;
        if constexpr (requires { value.has_value(); }) {
            if (value) {
                m_writer.key(key.name);
                encode(*value);
            }
        } else {
            m_writer.key(key.name);
            encode(value);
        }
    }

    bool enter() {
        if (m_depth == maximumNesting) {
            m_wasTooDeep = true;
            m_writer.nothing();
            return false;
        }
        ++m_depth;
        return true;
    }

    Writer& m_writer;
    int m_depth = 0;
    bool m_wasTooDeep = false;
};

// False when something was nested deeper than `maximumNesting`, and nothing was written for it.
template <class Writer, class T>
[[nodiscard]] bool encode(Writer& writer, const T& value) {
    Encoder<Writer> encoder(writer);
    encoder.encode(value);
    return !encoder.wasTooDeep();
}

} // namespace ombrel
