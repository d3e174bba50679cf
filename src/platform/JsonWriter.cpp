#include "platform/JsonWriter.h"

#include "platform/Base64.h"
#include "platform/RealText.h"
#include "platform/Text.h"

#include <algorithm>
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
        if (buffer.size() >= pieceSize) {
            Flush();
        }
    }
    void append(std::string_view text) {
        if (text.size() >= pieceSize) {
            Flush();
            failed = failed || !sink(text);
            return;
        }
        buffer += text;
        if (buffer.size() >= pieceSize) {
            Flush();
        }
    }
    void Flush() {
        failed = failed || (!buffer.empty() && !sink(buffer));
        buffer.clear();
    }

    static constexpr std::size_t pieceSize = std::size_t{1} << 16;

    ByteSink sink;
    std::string buffer;
    bool failed = false;
};

using CompactWriter = rapidjson::Writer<SinkStream>;
using IndentedWriter = rapidjson::PrettyWriter<SinkStream>;

// Returns the end of the text of a finite number.
char* realText(double value, char* to) {
    char* end = writeReal(value, to);
    if (value == 0 && std::signbit(value)) { // "-0" would be read as the integer
        *end++ = '.';
        *end++ = '0';
    }
    return end;
}

bool isEscaped(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

void appendEscaped(SinkStream& stream, char c) {
    constexpr std::string_view plain = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    constexpr std::string_view digits = "0123456789ABCDEF";
    const std::size_t place = plain.find(c);
    if (place != std::string_view::npos) {
        const char text[] = {'\\', letters[place]};
        stream.append({text, sizeof text});
    } else {
        const char text[] = {
            '\\', 'u', '0', '0', digits[static_cast<unsigned char>(c) >> 4], digits[c & 0xf]};
        stream.append({text, sizeof text});
    }
}

// The text behind its first quote.
void appendString(SinkStream& stream, std::string_view text) {
    while (!text.empty()) {
        const auto end = std::ranges::find_if(text, isEscaped);
        const auto length = static_cast<std::size_t>(end - text.begin());
        stream.append(text.substr(0, length));
        if (end != text.end()) {
            appendEscaped(stream, *end);
        }
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    stream.append("\"");
}

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
    char text[longestRealText];
    const char* end = realText(value, text);
    m_writer->tell([&](auto& writer) {
        writer.RawValue(text, static_cast<std::size_t>(end - text), rapidjson::kNumberType);
    });
}

void JsonWriter::reals(std::span<const double> values) {
    // The library is told of the first byte only: the rest needs none of its bookkeeping.
    if (auto* compact = std::get_if<CompactWriter>(&m_writer->writer);
        compact && std::ranges::all_of(values, [](double value) { return std::isfinite(value); })) {
        compact->RawValue("[", 1, rapidjson::kArrayType);
        char text[longestRealText + 1] = ",";
        for (std::size_t i = 0; i < values.size(); ++i) {
            const char* end = realText(values[i], text + 1);
            m_writer->stream.append({i == 0 ? text + 1 : text, end});
        }
        m_writer->stream.append("]");
        return;
    }
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
    m_writer->tell([](auto& writer) { writer.RawValue("\"", 1, rapidjson::kStringType); });
    appendString(m_writer->stream, text);
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
