#include "cli/Terminal.h"

#include "platform/Text.h"

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace ombrel {

namespace {

std::size_t terminalWidth() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    return 80;
}

bool isNumeric(std::string_view cell) {
    return cell.empty() || cell == "–" || cell.find_first_not_of("0123456789.,%") == cell.npos;
}

} // namespace

ProgressLine::ProgressLine() : m_isTerminal(isatty(STDERR_FILENO) == 1) {}

void ProgressLine::show(std::string_view text) {
    if (!m_isTerminal || text == m_shown) {
        return;
    }
    m_shown = text;
    const std::string line = oneLine(text, terminalWidth() - 1);
    std::fprintf(stderr, "\r\033[K%s", line.c_str());
    std::fflush(stderr);
}

void ProgressLine::clear() {
    if (!m_shown.empty()) {
        std::fputs("\r\033[K", stderr);
        std::fflush(stderr);
        m_shown.clear();
    }
}

std::string table(const std::vector<std::string>& headings,
                  const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    std::vector<bool> alignRight;
    for (std::size_t column = 0; column < headings.size(); ++column) {
        std::size_t width = characterCount(headings[column]);
        bool numeric = column > 0;
        for (const auto& row : rows) {
            width = std::max(width, characterCount(row[column]));
            numeric = numeric && isNumeric(row[column]);
        }
        widths.push_back(width);
        alignRight.push_back(numeric);
    }
    std::string text;
    const auto addLine = [&](const std::vector<std::string>& cells) {
        std::string line;
        for (std::size_t column = 0; column < cells.size(); ++column) {
            const std::string padding(widths[column] - characterCount(cells[column]), ' ');
            line += column > 0 ? "  " : "";
            line += alignRight[column] ? padding + cells[column] : cells[column] + padding;
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    };
    addLine(headings);
    for (const auto& row : rows) {
        addLine(row);
    }
    return text;
}

std::string counted(std::size_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string oneLine(std::string_view text, std::size_t characters) {
    std::string line(text);
    std::replace_if(
        line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
    if (characterCount(line) > characters) {
        line = std::string(firstCharacters(line, characters - 1)) + "…";
    }
    return line;
}

std::string indented(std::string_view text) {
    std::string result;
    for (const std::string_view line : splitNewlines(text)) {
        result += "  " + std::string(line) + "\n";
    }
    return result;
}

} // namespace ombrel
