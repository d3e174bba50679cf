#include "flows/TraceLine.h"

#include "platform/JsonReader.h"

#include <cmath>
#include <string>
#include <utility>

namespace ombrel {

namespace {

std::optional<std::string> stringAt(JsonReader& reader, JsonReader::Node node) {
    StoredValue value;
    std::string text;
    if (!reader.read(node, value) || value.kind != StoredKind::string ||
        !reader.string(value, text)) {
        return std::nullopt;
    }
    return text;
}

// A number without a fraction, however it is written: 5, 5.0 and 5e0 are one.
std::optional<std::int64_t> integerAt(JsonReader& reader, JsonReader::Node node) {
    StoredValue value;
    if (!reader.read(node, value)) {
        return std::nullopt;
    }
    if (value.kind == StoredKind::integer) {
        return value.integer;
    }
    constexpr double limit = 9223372036854775808.0; // 2^63
    if (value.kind == StoredKind::real && value.real >= -limit && value.real < limit &&
        value.real == std::trunc(value.real)) {
        return static_cast<std::int64_t>(value.real);
    }
    return std::nullopt;
}

} // namespace

std::optional<FlowTraceEvent> parseTraceLine(std::string_view line) {
    if (line.find('{') == std::string_view::npos) { // most lines that are no events end here
        return std::nullopt;
    }
    auto reader = JsonReader::open(line);
    StoredValue object;
    if (!reader || !reader->read(reader->top(), object) || object.kind != StoredKind::dictionary) {
        return std::nullopt;
    }
    std::optional<std::string> kind;
    std::optional<std::string> detail;
    std::optional<std::int64_t> elapsedMS;
    FlowTraceEvent event;
    for (std::uint64_t i = 0; i < object.count; ++i) {
        std::string_view key;
        JsonReader::Node node{};
        if (!reader->entry(object, i, key, node)) {
            return std::nullopt;
        }
        if (key == "kind") {
            kind = stringAt(*reader, node);
        } else if (key == "detail") {
            detail = stringAt(*reader, node);
        } else if (key == "elapsedMS") {
            elapsedMS = integerAt(*reader, node);
        } else if (key == "node") {
            event.node = stringAt(*reader, node);
        } else if (key == "tokenEstimate") {
            event.tokenEstimate = integerAt(*reader, node);
        }
    }
    if (!kind || !detail || !elapsedMS) {
        return std::nullopt;
    }
    event.id = Uuid::random();
    event.kind = std::move(*kind);
    event.detail = std::move(*detail);
    event.elapsedMS = *elapsedMS;
    return event;
}

} // namespace ombrel
