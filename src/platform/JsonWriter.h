#pragma once

#include "platform/ByteSink.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace ombrel {

enum class JsonLayout { compact, indented };

// Writes one JSON text front to back. The calls must make up exactly one value; every element of a
// dictionary is a `key` and then its value.
// Reals are the shortest text that reads back the same, and the strings "inf", "-inf" and "nan".
// Dates are numbers (seconds since 2001-01-01 UTC), data is base64. Strings are repaired to valid
// UTF-8.
class JsonWriter {
  public:
    explicit JsonWriter(ByteSink sink, JsonLayout layout = JsonLayout::compact);
    JsonWriter(JsonWriter&&) noexcept;
    ~JsonWriter();

    void nothing();
    void boolean(bool value);
    void integer(std::int64_t value);
    void real(double value);
    void reals(std::span<const double> values); // an array of them
    void string(std::string_view text);
    void date(double secondsSinceReference);
    void data(std::string_view bytes);
    void beginArray();
    void endArray();
    void beginDictionary();
    void key(std::string_view name);
    void endDictionary();

    // Hands what is left to the sink. False when the sink refused something.
    bool finish();

  private:
    struct Writer;
    std::unique_ptr<Writer> m_writer;
};

} // namespace ombrel
