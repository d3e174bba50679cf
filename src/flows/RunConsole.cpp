#include "flows/RunConsole.h"

#include "platform/Uuid.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

namespace ombrel {

namespace {

constexpr std::size_t mostLines = 4000;
constexpr std::size_t keptLines = 3500;
constexpr std::size_t mostBytes = std::size_t{16} << 20;
constexpr std::string_view stepMark = "▸ ";
constexpr std::string_view failureMark = "✗ ";

// How many of the last lines fit.
std::size_t fittingLines(const std::vector<FlowConsoleLine>& lines) {
    std::size_t bytes = 0;
    const auto last = std::find_if(lines.rbegin(), lines.rend(), [&](const FlowConsoleLine& line) {
        bytes += line.text.size();
        return bytes > mostBytes;
    });
    const auto count = static_cast<std::size_t>(last - lines.rbegin());
    return std::max(count, std::min<std::size_t>(lines.size(), 1));
}

void keepLast(std::vector<FlowConsoleLine>& lines, std::size_t count) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(count));
}

} // namespace

void appendToConsole(AppState& state, std::vector<FlowConsoleLine> lines) {
    if (lines.empty()) {
        return;
    }
    const auto console = state.flowConsoleLines.edit();
    for (FlowConsoleLine& line : lines) {
        console->push_back(std::move(line));
        if (console->size() > mostLines) {
            keepLast(*console, keptLines);
        }
    }
    keepLast(*console, fittingLines(*console));
}

FlowConsoleLine readConsoleLine(std::string text) {
    FlowConsoleLine line;
    line.id = Uuid::random();
    if (text.starts_with(stepMark)) {
        line.kind = FlowConsoleLine::Kind::step;
        text.erase(0, stepMark.size());
    } else if (text.starts_with(failureMark)) {
        line.kind = FlowConsoleLine::Kind::failure;
        text.erase(0, failureMark.size());
    }
    line.text = std::move(text);
    return line;
}

} // namespace ombrel
