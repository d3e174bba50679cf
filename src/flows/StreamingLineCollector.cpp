#include "flows/StreamingLineCollector.h"

#include "platform/Text.h"

#include <utility>

namespace ombrel {

void StreamingLineCollector::append(std::string_view bytes) {
    // What came before holds no line feed after the line's start.
    std::size_t searched = m_data.size();
    m_data += bytes;
    if (!m_onLine) {
        return;
    }
    for (auto end = m_data.find('\n', searched); end != std::string::npos;
         end = m_data.find('\n', searched)) {
        const std::string_view line(m_data.data() + m_lineStart, end - m_lineStart);
        m_lineStart = searched = end + 1;
        m_onLine(repairUtf8(line));
    }
}

void StreamingLineCollector::finish() {
    if (m_onLine && m_lineStart < m_data.size()) {
        const std::string_view line(m_data.data() + m_lineStart, m_data.size() - m_lineStart);
        m_lineStart = m_data.size();
        m_onLine(repairUtf8(line));
    }
}

std::string StreamingLineCollector::takeText() {
    m_lineStart = 0;
    std::string data = std::exchange(m_data, {});
    return isValidUtf8(data) ? data : repairUtf8(data);
}

} // namespace ombrel
