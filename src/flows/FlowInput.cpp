#include "flows/FlowInput.h"

#include "platform/JsonWriter.h"
#include "platform/Text.h"

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

namespace ombrel {

namespace {

using Value = std::variant<std::string, std::int64_t, double, bool>;

// Digits with perhaps a sign, and nothing else.
std::int64_t integerIn(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? value : 0;
}

// A number as C writes it, infinite when it is too large; no blanks around it.
double realIn(const std::string& text) {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    if (text.empty() || text.find_first_of(" \t\n\v\f\r") == 0) {
        return 0;
    }
    char* end = nullptr;
    const double value = strtod_l(text.c_str(), &end, plain);
    return end == text.c_str() + text.size() ? value : 0;
}

// Whether the text begins with a word of assent or a number that isn't zero.
bool booleanIn(std::string_view text) {
    while (!text.empty() && isWhitespace(decodeScalar(text, 0).scalar)) {
        text.remove_prefix(decodeScalar(text, 0).length);
    }
    if (text.starts_with('+') || text.starts_with('-')) {
        text.remove_prefix(1);
    }
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != text.npos;
}

Value valueOf(const PropertyKind& kind, const std::string& text) {
    switch (kind.baseKind()) {
    case PropertyKind::BaseKind::integer:
        return integerIn(text);
    case PropertyKind::BaseKind::number:
        return realIn(text);
    case PropertyKind::BaseKind::boolean:
        return booleanIn(text);
    default:
        return text;
    }
}

struct ValueWriter {
    JsonWriter& json;
    void operator()(const std::string& text) const { json.string(text); }
    void operator()(std::int64_t number) const { json.integer(number); }
    void operator()(double number) const { json.real(number); }
    void operator()(bool truth) const { json.boolean(truth); }
};

bool canBeTold(const std::pair<const std::string, Value>& field) {
    const double* number = std::get_if<double>(&field.second);
    return !number || std::isfinite(*number);
}

} // namespace

std::string flowInputJSON(const std::vector<AgentProperty>& fields,
                          const std::map<std::string, std::string>& typed) {
    std::map<std::string, Value> values;
    for (const AgentProperty& field : fields) {
        const auto text = typed.find(field.name);
        values[field.name] =
            valueOf(field.kind, text == typed.end() ? std::string() : text->second);
    }
    if (!std::ranges::all_of(values, canBeTold)) {
        return "{}";
    }
    std::string result;
    JsonWriter json([&result](std::string_view bytes) {
        result += bytes;
        return true;
    });
    json.beginDictionary();
    for (const auto& [name, value] : values) {
        json.key(name);
        std::visit(ValueWriter{json}, value);
    }
    json.endDictionary();
    json.finish();
    return result;
}

} // namespace ombrel
