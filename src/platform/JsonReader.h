#pragma once

#include "platform/Result.h"
#include "platform/StoredValue.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

namespace ombrel {

// A JSON text that was read whole. It has no kinds for dates and data: `date` is asked of a number
// and `data` of a base64 string. The strings "inf", "-inf" and "nan" stand for reals.
class JsonReader {
  public:
    using Node = std::uint64_t;

    // The error tells what is wrong with the text, and at which line and column.
    static Result<JsonReader> open(std::string_view text);
    JsonReader(JsonReader&&) noexcept;
    ~JsonReader();

    Node top() const;
    // A text holds everything that it stands for, so decoding it needs no bound.
    std::uint64_t allowance() const { return std::numeric_limits<std::uint64_t>::max(); }

    bool read(Node node, StoredValue& value);
    bool element(const StoredValue& array, std::uint64_t index, Node& node);
    bool entry(const StoredValue& dictionary, std::uint64_t index, std::string_view& key,
               Node& node);
    bool string(const StoredValue& value, std::string& text);
    bool data(const StoredValue& value, std::string& bytes); // of a string in base64
    // Whether the value is what is asked for: false says only that it is of another kind.
    bool real(const StoredValue& value, double& number) const;
    bool date(const StoredValue& value, double& secondsSinceReference) const;
    static bool isData(const StoredValue& value) { return value.kind == StoredKind::string; }
    std::uint64_t reals(const StoredValue& array, std::uint64_t first, double* to);

    const std::string& problem() const { return m_problem; }
    bool readFailed() const { return false; }
    static std::string_view nameOf(StoredKind kind);

  private:
    struct Document;
    explicit JsonReader(std::unique_ptr<Document> document);

    std::unique_ptr<Document> m_document;
    std::string m_problem;
};

} // namespace ombrel
