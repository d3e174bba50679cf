#pragma once

#include <string>
#include <string_view>

namespace ombrel {

// Takes a stream of server-sent events apart, in whatever pieces it comes.
// Format: https://html.spec.whatwg.org/multipage/server-sent-events.html
class ServerSentEvents {
  public:
    // Calls `onData` with the data of each event that the bytes complete. Returns when it gives
    // false, or at the end of the bytes.
    template <class OnData>
    void take(std::string_view bytes, OnData&& onData) {
        for (const char byte : bytes) {
            if (byte == '\n' && m_endedWithReturn) {
                m_endedWithReturn = false; // The second half of a CR LF.
                continue;
            }
            m_endedWithReturn = byte == '\r';
            if (byte != '\n' && byte != '\r') {
                m_line += byte;
                continue;
            }
            if (endLine() && !onData(takeEvent())) {
                return;
            }
        }
    }

    // What the stream ended in the middle of: the data of the last event, without its end.
    std::string rest() {
        endLine();
        return takeEvent();
    }

  private:
    // Whether an event is complete.
    bool endLine() {
        std::string line;
        line.swap(m_line);
        if (line.empty()) {
            return m_hasData;
        }
        constexpr std::string_view field = "data:";
        if (line.starts_with(field)) {
            std::string_view value = std::string_view(line).substr(field.size());
            if (value.starts_with(' ')) {
                value.remove_prefix(1);
            }
            if (m_hasData) {
                m_data += '\n';
            }
            m_data += value;
            m_hasData = true;
        }
        return false; // Other fields, and comments that keep the connection alive.
    }
    std::string takeEvent() {
        std::string data;
        data.swap(m_data);
        m_hasData = false;
        return data;
    }

    std::string m_line;
    std::string m_data;
    bool m_hasData = false;
    bool m_endedWithReturn = false;
};

} // namespace ombrel
