#pragma once

#include "platform/JsonReader.h"
#include "platform/PropertyListWriter.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace ombrel::test {

template <class Writer>
void copyJson(JsonReader& json, JsonReader::Node node, Writer& writer) {
    StoredValue value;
    json.read(node, value);
    std::string text;
    JsonReader::Node child = 0;
    std::string_view key;
    switch (value.kind) {
    case StoredKind::nothing:
        return writer.nothing();
    case StoredKind::boolean:
        return writer.boolean(value.boolean);
    case StoredKind::integer:
        return writer.integer(value.integer);
    case StoredKind::real:
        return writer.real(value.real);
    case StoredKind::array:
        writer.beginArray();
        for (std::uint64_t i = 0; i < value.count; ++i) {
            json.element(value, i, child);
            copyJson(json, child, writer);
        }
        return writer.endArray();
    case StoredKind::dictionary:
        writer.beginDictionary();
        for (std::uint64_t i = 0; i < value.count; ++i) {
            json.entry(value, i, key, child);
            writer.key(key);
            copyJson(json, child, writer);
        }
        return writer.endDictionary();
    default:
        json.string(value, text);
        return writer.string(text);
    }
}

// The binary property list of the same value, so that a test can write down a file as text.
inline std::string propertyListOfJson(std::string_view text) {
    auto json = JsonReader::open(text);
    if (!json) {
        throw std::runtime_error(json.error().message);
    }
    PropertyListCounter counter;
    copyJson(*json, json->top(), counter);
    std::string bytes;
    PropertyListWriter writer(
        [&bytes](std::string_view piece) {
            bytes += piece;
            return true;
        },
        counter.objects());
    copyJson(*json, json->top(), writer);
    return writer.finish() ? bytes : "";
}

} // namespace ombrel::test
