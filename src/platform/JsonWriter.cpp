#include "platform/JsonWriter.h"

#include "platform/Base64.h"
#include "platform/Text.h"

#include <charconv>
#include <cmath>
#include <rapidjson/prettywriter.h>
#include <variant>

namespace ombrel {

namespace {

// What the library's writers write to: bytes that are handed on in pieces.
struct SinkStream {
    using Ch = char;

    void Put(char c) {
        buffer += c;
        if (buffer.size() >= (std::size_t{1} << 16)) {
            Flush();
        }
    }
    void Flush() {
        failed = failed || (!buffer.empty() && !sink(buffer));
        buffer.clear();
    }

    ByteSink sink;
    std::string buffer;
    bool failed = false;
};

using CompactWriter = rapidjson::Writer<SinkStream>;
using IndentedWriter = rapidjson::PrettyWriter<SinkStream>;

} // namespace

struct JsonWriter::Writer {
    Writer(ByteSink sink, JsonLayout layout) : stream{std::move(sink), {}, false} {
        if (layout == JsonLayout::indented) {
            writer.emplace<IndentedWriter>(stream).SetIndent(' ', 2);
        } else {
            writer.emplace<CompactWriter>(stream);
        }
    }

    template <class Call>
    void tell(const Call& call) {
        std::visit(
            [&](auto& target) {
                if constexpr (!std::is_same_v<std::decay_t<decltype(target)>, std::monostate>) {
                    call(target);
                }
            },
            writer);
    }

    SinkStream stream;
    std::variant<std::monostate, CompactWriter, IndentedWriter> writer;
};

JsonWriter::JsonWriter(ByteSink sink, JsonLayout layout)
    : m_writer(std::make_unique<Writer>(std::move(sink), layout)) {}

JsonWriter::JsonWriter(JsonWriter&&) noexcept = default;
JsonWriter::~JsonWriter() = default;

void JsonWriter::nothing() {
    m_writer->tell([](auto& writer) { writer.Null(); });
}

void JsonWriter::boolean(bool value) {
    m_writer->tell([value](auto& writer) { writer.Bool(value); });
}

void JsonWriter::integer(std::int64_t value) {
    m_writer->tell([value](auto& writer) { writer.Int64(value); });
}

void JsonWriter::real(double value) {
    if (!std::isfinite(value)) {
        string(std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf");
        return;
    }
    char text[32];
    auto* end = std::to_chars(text, text + sizeof text, value).ptr;
    if (value == 0 && std::signbit(value)) { // "-0" would be read as the integer
        *end++ = '.';
        *end++ = '0';
    }
    m_writer->tell([&](auto& writer) {
        writer.RawValue(text, static_cast<std::size_t>(end - text), rapidjson::kNumberType);
    });
}

void JsonWriter::reals(std::span<const double> values) {
    beginArray();
    for (const double value : values) {
        real(value);
    }
    endArray();
}

void JsonWriter::string(std::string_view text) {
    if (!isValidUtf8(text)) {
        string(repairUtf8(text));
        return;
    }
    m_writer->tell([text](auto& writer) {
        writer.String(text.data() ? text.data() : "",
                      static_cast<rapidjson::SizeType>(text.size()));
    });
}

void JsonWriter::date(double secondsSinceReference) {
    real(secondsSinceReference);
}

void JsonWriter::data(std::string_view bytes) {
    string(base64(bytes));
}

void JsonWriter::beginArray() {
    m_writer->tell([](auto& writer) { writer.StartArray(); });
}

void JsonWriter::endArray() {
    m_writer->tell([](auto& writer) { writer.EndArray(); });
}

void JsonWriter::beginDictionary() {
    m_writer->tell([](auto& writer) { writer.StartObject(); });
}

void JsonWriter::key(std::string_view name) {
    string(name);
}

void JsonWriter::endDictionary() {
    m_writer->tell([](auto& writer) { writer.EndObject(); });
}

bool JsonWriter::finish() {
    m_writer->stream.Flush();
    return !m_writer->stream.failed;
}

} // namespace ombrel
