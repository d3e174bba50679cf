#pragma once

#include "core/Deep.h"
#include "core/Encode.h"
#include "platform/JsonWriter.h"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ombrel {

// Writes records that hold `Deep` values as JSON, front to back, without recursing into them: what
// stands behind such a value waits until that is written.
class DeepJsonWriter {
  public:
    explicit DeepJsonWriter(JsonWriter& writer) : m_writer(writer) {}

    // False when something other than `Deep` values was nested deeper than `maximumNesting`.
    template <class T>
    [[nodiscard]] bool write(const T& value) {
        bool isWhole = true;
        std::vector<Call> waiting; // the next one last
        later(value);
        do {
            for (auto call = m_later.rbegin(); call != m_later.rend(); ++call) {
                waiting.push_back(std::move(*call));
            }
            m_later.clear();
            const Call call = std::move(waiting.back());
            waiting.pop_back();
            isWhole = call(*this) && isWhole;
        } while (!waiting.empty() || !m_later.empty());
        return isWhole;
    }

    // For the encoder: whether what comes next has to wait, and how it does.
    bool isWaiting() const { return !m_later.empty(); }
    template <class T>
    void later(const T& value) { // which has to live
        m_later.push_back([&value](DeepJsonWriter& self) { return encode(self, value); });
    }

    void nothing() {
        tell([](JsonWriter& writer) { writer.nothing(); });
    }
    void boolean(bool value) {
        tell([value](JsonWriter& writer) { writer.boolean(value); });
    }
    void integer(std::int64_t value) {
        tell([value](JsonWriter& writer) { writer.integer(value); });
    }
    void real(double value) {
        tell([value](JsonWriter& writer) { writer.real(value); });
    }
    void reals(std::span<const double> values) {
        tell([values](JsonWriter& writer) { writer.reals(values); });
    }
    void string(std::string_view text) {
        if (!isWaiting()) {
            m_writer.string(text);
        } else {
            tell([text = std::string(text)](JsonWriter& writer) { writer.string(text); });
        }
    }
    void date(double secondsSinceReference) {
        tell([secondsSinceReference](JsonWriter& writer) { writer.date(secondsSinceReference); });
    }
    void data(std::string_view bytes) {
        tell([bytes](JsonWriter& writer) { writer.data(bytes); });
    }
    void beginArray() {
        tell([](JsonWriter& writer) { writer.beginArray(); });
    }
    void endArray() {
        tell([](JsonWriter& writer) { writer.endArray(); });
    }
    void beginDictionary() {
        tell([](JsonWriter& writer) { writer.beginDictionary(); });
    }
    void key(std::string_view name) {
        tell([name](JsonWriter& writer) { writer.key(name); });
    }
    void endDictionary() {
        tell([](JsonWriter& writer) { writer.endDictionary(); });
    }

  private:
    using Call = std::function<bool(DeepJsonWriter&)>;

    template <class Tell>
    void tell(Tell&& call) {
        if (!isWaiting()) {
            call(m_writer);
        } else {
            m_later.push_back([call = std::forward<Tell>(call)](DeepJsonWriter& self) {
                call(self.m_writer);
                return true;
            });
        }
    }

    JsonWriter& m_writer;
    std::vector<Call> m_later; // what came behind a Deep value since `write` made its last call
};

} // namespace ombrel
