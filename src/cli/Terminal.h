#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// One line on standard error that is drawn over again while long work runs. Draws nothing when
// standard error is not a terminal.
class ProgressLine {
  public:
    ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { clear(); }

    void show(std::string_view text);
    void clear();

  private:
    bool m_isTerminal;
    std::string m_shown;
};

// Rows under headings, each column as wide as its widest cell. The first column is aligned left,
// and so are all others but those that hold numbers only.
std::string table(const std::vector<std::string>& headings,
                  const std::vector<std::vector<std::string>>& rows);

// "1 chunk", "3 chunks".
std::string counted(std::size_t count, std::string_view noun);

// The text on one line, cut with an ellipsis after `characters` characters.
std::string oneLine(std::string_view text, std::size_t characters);

// The text with two blanks before each line, which ends with a newline.
std::string indented(std::string_view text);

} // namespace ombrel
