#include "platform/JsonReader.h"

#include "platform/Base64.h"
#include "platform/Text.h"

#include <bit>
#include <cmath>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

namespace ombrel {

namespace {

const rapidjson::Value& valueAt(std::uint64_t place) {
    return *std::bit_cast<const rapidjson::Value*>(static_cast<std::uintptr_t>(place));
}

std::uint64_t placeOf(const rapidjson::Value& value) {
    return static_cast<std::uint64_t>(std::bit_cast<std::uintptr_t>(&value));
}

// "line 3, column 14", both from 1; columns count bytes.
std::string placeInText(std::string_view text, std::size_t offset) {
    std::size_t line = 1;
    std::size_t lineStart = 0;
    for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++line;
            lineStart = i + 1;
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(offset - lineStart + 1);
}

} // namespace

struct JsonReader::Document {
    rapidjson::Document document;
};

JsonReader::JsonReader(std::unique_ptr<Document> document) : m_document(std::move(document)) {}
JsonReader::JsonReader(JsonReader&&) noexcept = default;
JsonReader::~JsonReader() = default;

Result<JsonReader> JsonReader::open(std::string_view text) {
    text = withoutByteOrderMark(text);
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag |
                               rapidjson::kParseValidateEncodingFlag;
    auto document = std::make_unique<Document>();
    if (text.find('\0') != std::string_view::npos) { // the library would take it for the end
        return failure("The text is not JSON: there is a NUL in it (" +
                       placeInText(text, text.find('\0')) + ")");
    }
    document->document.Parse<flags>(text.data() ? text.data() : "", text.size());
    if (document->document.HasParseError()) {
        return failure(
            "The text is not JSON: " +
            std::string(rapidjson::GetParseError_En(document->document.GetParseError())) + " (" +
            placeInText(text, document->document.GetErrorOffset()) + ")");
    }
    return JsonReader(std::move(document));
}

JsonReader::Node JsonReader::top() const {
    return placeOf(m_document->document);
}

bool JsonReader::read(Node node, StoredValue& out) {
    const rapidjson::Value& value = valueAt(node);
    out = {};
    out.place = node;
    if (value.IsNull()) {
        out.kind = StoredKind::nothing;
    } else if (value.IsBool()) {
        out.kind = StoredKind::boolean;
        out.boolean = value.GetBool();
    } else if (value.IsInt64()) {
        out.kind = StoredKind::integer;
        out.integer = value.GetInt64();
        out.real = static_cast<double>(out.integer);
    } else if (value.IsNumber()) {
        out.kind = StoredKind::real;
        out.real = value.GetDouble();
    } else if (value.IsString()) {
        out.kind = StoredKind::string;
        out.count = value.GetStringLength();
    } else if (value.IsArray()) {
        out.kind = StoredKind::array;
        out.count = value.Size();
    } else {
        out.kind = StoredKind::dictionary;
        out.count = value.MemberCount();
    }
    return true;
}

bool JsonReader::element(const StoredValue& array, std::uint64_t index, Node& node) {
    node = placeOf(valueAt(array.place)[static_cast<rapidjson::SizeType>(index)]);
    return true;
}

bool JsonReader::entry(const StoredValue& dictionary, std::uint64_t index, std::string_view& key,
                       Node& node) {
    const auto& member =
        valueAt(dictionary.place).MemberBegin()[static_cast<std::ptrdiff_t>(index)];
    key = {member.name.GetString(), member.name.GetStringLength()};
    node = placeOf(member.value);
    return true;
}

bool JsonReader::string(const StoredValue& value, std::string& text) {
    const rapidjson::Value& stored = valueAt(value.place);
    text.assign(stored.GetString(), stored.GetStringLength());
    return true;
}

bool JsonReader::data(const StoredValue& value, std::string& bytes) {
    const rapidjson::Value& stored = valueAt(value.place);
    auto decoded = bytesOfBase64({stored.GetString(), stored.GetStringLength()});
    if (!decoded) {
        m_problem = "expected data in base64";
        return false;
    }
    bytes = std::move(*decoded);
    return true;
}

bool JsonReader::real(const StoredValue& value, double& number) const {
    number = value.real;
    if (value.kind == StoredKind::string) {
        const rapidjson::Value& stored = valueAt(value.place);
        const std::string_view text(stored.GetString(), stored.GetStringLength());
        number = text == "nan" ? std::nan("") : text == "-inf" ? -HUGE_VAL : HUGE_VAL;
        return text == "nan" || text == "-inf" || text == "inf";
    }
    return value.kind == StoredKind::real || value.kind == StoredKind::integer;
}

bool JsonReader::date(const StoredValue& value, double& secondsSinceReference) const {
    return real(value, secondsSinceReference);
}

std::uint64_t JsonReader::reals(const StoredValue& array, std::uint64_t first, double* to) {
    const rapidjson::Value& values = valueAt(array.place);
    std::uint64_t done = 0;
    while (first + done < array.count) {
        const auto& value = values[static_cast<rapidjson::SizeType>(first + done)];
        if (!value.IsNumber()) {
            break;
        }
        to[done++] = value.GetDouble();
    }
    return done;
}

std::string_view JsonReader::nameOf(StoredKind kind) {
    switch (kind) {
    case StoredKind::nothing:
        return "null";
    case StoredKind::boolean:
        return "true or false";
    case StoredKind::integer:
        return "a whole number";
    case StoredKind::real:
    case StoredKind::date:
        return "a number";
    case StoredKind::array:
        return "an array";
    case StoredKind::dictionary:
        return "an object";
    default:
        return "a string";
    }
}

} // namespace ombrel
