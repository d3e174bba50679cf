#include "platform/GeneratedContent.h"

#include "platform/Text.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace ombrel {

namespace {

// How deep arrays and structures may stand inside one another: far more than any schema asks for,
// and little enough for the recursion over a value.
constexpr std::size_t maximumDepth = 256;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

std::size_t digitsAt(std::string_view text, std::size_t offset) {
    std::size_t end = offset;
    while (end < text.size() && isDigit(text[end])) {
        ++end;
    }
    return end - offset;
}

// The length of the JSON number that starts the text; 0 when there is none.
std::size_t numberLength(std::string_view text) {
    std::size_t length = text.starts_with('-') ? 1 : 0;
    const std::size_t whole = digitsAt(text, length);
    if (whole == 0 || (whole > 1 && text[length] == '0')) {
        return 0;
    }
    length += whole;
    if (length < text.size() && text[length] == '.') {
        const std::size_t fraction = digitsAt(text, length + 1);
        if (fraction == 0) {
            return 0;
        }
        length += 1 + fraction;
    }
    if (length < text.size() && (text[length] == 'e' || text[length] == 'E')) {
        std::size_t sign = length + 1;
        if (sign < text.size() && (text[sign] == '+' || text[sign] == '-')) {
            ++sign;
        }
        const std::size_t exponent = digitsAt(text, sign);
        if (exponent == 0) {
            return 0;
        }
        length = sign + exponent;
    }
    return length;
}

// The parser refuses a number that no double can hold, even where it is asked for the text only. So
// it is given this copy, in which every number is a small one of the same length; the text of a
// number is then taken from the original.
std::string withSmallNumbers(std::string_view json) {
    std::string copy(json);
    bool isInString = false;
    for (std::size_t i = 0; i < json.size();) {
        const char c = json[i];
        if (isInString) {
            isInString = c != '"';
            i += c == '\\' ? 2 : 1;
            continue;
        }
        const std::size_t length = c == '-' || isDigit(c) ? numberLength(json.substr(i)) : 0;
        if (length >= 3) {
            copy.replace(i, length, "1e" + std::string(length - 2, '0'));
        }
        isInString = c == '"';
        i += std::max<std::size_t>(length, 1);
    }
    return copy;
}

// Builds the value from the parser's events, without recursion.
class Builder {
  public:
    Builder(std::string_view json, const rapidjson::MemoryStream& stream)
        : m_json(json), m_stream(stream) {}

    bool Null() { return put(GeneratedContent::Null{}); }
    bool Bool(bool value) { return put(value); }
    bool RawNumber(const char*, rapidjson::SizeType length, bool) {
        const std::size_t start = m_stream.Tell() - length;
        return put(GeneratedContent::Number{std::string(m_json.substr(start, length))});
    }
    bool String(const char* text, rapidjson::SizeType length, bool) {
        return put(valid(text, length));
    }
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        auto& entries = std::get<GeneratedContent::Structure>(m_open.back()->kind);
        entries.emplace_back().key = valid(text, length);
        return true;
    }
    bool StartObject() { return open(GeneratedContent::Structure{}); }
    bool StartArray() { return open(GeneratedContent::Array{}); }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool EndArray(rapidjson::SizeType) { return close(); }
    // Numbers come as text.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(std::int64_t) { return false; }
    bool Uint64(std::uint64_t) { return false; }
    bool Double(double) { return false; }

    GeneratedContent take() { return std::move(m_result); }
    bool isTooDeep() const { return m_isTooDeep; }

  private:
    // The parser makes invalid UTF-8 of an escaped low surrogate that stands alone.
    static std::string valid(const char* text, rapidjson::SizeType length) {
        return repairUtf8(std::string_view(text, length));
    }
    // Where the next value goes.
    GeneratedContent& place() {
        if (m_open.empty()) {
            return m_result;
        }
        if (auto* array = std::get_if<GeneratedContent::Array>(&m_open.back()->kind)) {
            return array->emplace_back();
        }
        return std::get<GeneratedContent::Structure>(m_open.back()->kind).back().value;
    }
    template <class Kind>
    bool put(Kind value) {
        place().kind = std::move(value);
        return true;
    }
    template <class Kind>
    bool open(Kind container) {
        m_isTooDeep = m_open.size() == maximumDepth;
        GeneratedContent& opened = place();
        opened.kind = std::move(container);
        m_open.push_back(&opened);
        return !m_isTooDeep;
    }
    bool close() {
        m_open.pop_back();
        return true;
    }

    std::string_view m_json;
    const rapidjson::MemoryStream& m_stream;
    GeneratedContent m_result;
    // From the outermost inwards. Only the innermost grows, so the others stay where they are.
    std::vector<GeneratedContent*> m_open;
    bool m_isTooDeep = false;
};

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void write(Writer& writer, const GeneratedContent& content) {
    struct Visitor {
        Writer& to;
        void operator()(GeneratedContent::Null) const { to.Null(); }
        void operator()(bool value) const { to.Bool(value); }
        void operator()(const GeneratedContent::Number& number) const {
            to.RawValue(number.text.data(), number.text.size(), rapidjson::kNumberType);
        }
        void operator()(const std::string& text) const { string(text); }
        void operator()(const GeneratedContent::Array& elements) const {
            to.StartArray();
            for (const GeneratedContent& element : elements) {
                write(to, element);
            }
            to.EndArray();
        }
        void operator()(const GeneratedContent::Structure& entries) const {
            to.StartObject();
            for (const auto& [key, value] : entries) {
                string(key);
                write(to, value);
            }
            to.EndObject();
        }
        void string(const std::string& text) const {
            const std::string valid = repairUtf8(text);
            to.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
        }
    };
    std::visit(Visitor{writer}, content.kind);
}

} // namespace

double GeneratedContent::Number::value() const {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(text.c_str(), nullptr, plain);
}

bool GeneratedContent::operator==(const GeneratedContent& other) const {
    return kind == other.kind;
}

bool GeneratedContent::Entry::operator==(const Entry& other) const {
    return key == other.key && value == other.value;
}

const GeneratedContent* GeneratedContent::find(std::string_view key) const {
    if (const auto* entries = std::get_if<Structure>(&kind)) {
        const std::string valid = repairUtf8(key);
        for (const auto& [name, value] : *entries) {
            if (name == valid) {
                return &value;
            }
        }
    }
    return nullptr;
}

std::string GeneratedContent::text() const {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    write(writer, *this);
    return {buffer.GetString(), buffer.GetSize()};
}

Result<GeneratedContent> GeneratedContent::parse(std::string_view json) {
    const std::string valid = repairUtf8(json);
    const std::string parsed = withSmallNumbers(valid);
    rapidjson::MemoryStream stream(parsed.data(), parsed.size());
    Builder builder(valid, stream);
    rapidjson::Reader reader;
    constexpr unsigned flags =
        rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, builder);
    if (builder.isTooDeep()) {
        return failure("The JSON is nested more than " + std::to_string(maximumDepth) +
                       " levels deep.");
    }
    if (result.IsError()) {
        return failure(std::string("The JSON can't be read at byte ") +
                       std::to_string(result.Offset() + 1) + ": " +
                       rapidjson::GetParseError_En(result.Code()));
    }
    if (stream.Tell() != parsed.size()) { // a zero byte ends the parser's reading
        return failure("The JSON can't be read at byte " + std::to_string(stream.Tell() + 1) +
                       ": There is more after it.");
    }
    return builder.take();
}

} // namespace ombrel
