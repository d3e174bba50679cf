#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace ombrel {

// Keeps all that a program writes to one stream, and cuts it into lines as it comes. Lines end at a
// line feed, which is not part of them; a carriage return is. Main thread.
class StreamingLineCollector {
  public:
    // `onLine` is called for each line, with invalid UTF-8 repaired; it may be empty.
    explicit StreamingLineCollector(std::function<void(std::string line)> onLine = {})
        : m_onLine(std::move(onLine)) {}

    void append(std::string_view bytes);
    // The stream has ended: what follows the last line feed, when it isn't empty, is a line too.
    void finish();
    // All of it, with invalid UTF-8 repaired. The collector is empty afterwards.
    std::string takeText();

  private:
    std::function<void(std::string)> m_onLine;
    std::string m_data;
    std::size_t m_lineStart = 0; // of the line that has not ended yet
};

} // namespace ombrel
