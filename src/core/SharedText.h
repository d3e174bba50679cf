#pragma once

#include <memory>
#include <string>
#include <utility>

namespace ombrel {

// A string that may be large and is cheap to copy. Immutable.
class SharedText {
  public:
    SharedText() = default;
    SharedText(std::string text) : m_text(std::make_shared<const std::string>(std::move(text))) {}
    // Shares what somebody else keeps.
    explicit SharedText(std::shared_ptr<const std::string> text) : m_text(std::move(text)) {}
    SharedText(const char* text) : SharedText(std::string(text)) {}

    const std::string& text() const {
        static const std::string none;
        return m_text ? *m_text : none;
    }

    friend bool operator==(const SharedText& a, const SharedText& b) {
        return a.m_text == b.m_text || a.text() == b.text();
    }

  private:
    std::shared_ptr<const std::string> m_text;
};

} // namespace ombrel
