#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// Which parts of Swift source are what, to be shown in colours. Making it is linear in the source;
// any thread. Offsets are in bytes.
class SwiftColoring {
  public:
    enum class Part { keyword, attribute, type, string, number, comment };
    struct Span {
        std::size_t begin = 0; // in the line
        std::size_t end = 0;
        Part part = Part::keyword;
        bool operator==(const Span&) const = default;
    };

    SwiftColoring() : SwiftColoring(std::string()) {}
    explicit SwiftColoring(std::string source);

    std::size_t lineCount() const { return m_lineBegins.size(); }
    // Without its newline.
    std::string_view line(std::size_t index) const;
    // In order; what is in none has no colour of its own.
    std::vector<Span> spansOfLine(std::size_t index) const;

  private:
    struct Stretch {
        std::uint32_t begin;
        std::uint32_t end;
        Part part;
    };
    void read();

    std::string m_source;
    std::vector<std::uint32_t> m_lineBegins;
    std::vector<Stretch> m_stretches; // in order, without overlap
};

} // namespace ombrel
