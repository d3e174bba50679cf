#include "knowledge/BuildTexts.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

namespace ombrel {

namespace {

std::string countedText(std::string_view what, Progress progress) {
    return std::string(what) + " \u2014 " + std::to_string(progress.completed) + " of " +
           std::to_string(progress.total);
}

} // namespace

std::string_view buildButtonHelp(const AppState& state) {
    return settingsChangedSinceBuild(state) ? staleBuildHelp : buildHelp;
}

std::string buildStatusText(const AppState& state, Date now) {
    const RAGIndex& index = state.currentIndex();
    if (index.isEnriching) {
        return enrichingText(index.enrichProgress.value_or(Progress{}));
    }
    if (index.importProgress) {
        return countedText("Reading files", *index.importProgress);
    }
    if (index.embedProgress) {
        return countedText("Embedding chunks", *index.embedProgress);
    }
    const std::optional<Date> finishedAt = state.project->lastBuildFinishedAt;
    if (!finishedAt) {
        return "Not built yet";
    }
    const std::string built = relativeDate(*finishedAt, now);
    if (settingsChangedSinceBuild(state)) {
        return "settings changed since " + built;
    }
    return state.project->lastBuiltDescription + " \u00b7 " + built;
}

std::string enrichingText(Progress progress) {
    return countedText("Enriching chunks", progress);
}

std::string relativeDate(Date then, Date now) {
    struct Unit {
        double seconds;
        std::string_view name;
    };
    static constexpr std::array<Unit, 5> units = {{{365.0 * 86400, "year"},
                                                   {30.0 * 86400, "month"},
                                                   {86400, "day"},
                                                   {3600, "hour"},
                                                   {60, "minute"}}};
    const double passed = now.secondsSinceReference - then.secondsSinceReference;
    for (const Unit& unit : units) {
        if (passed >= unit.seconds) {
            // A file may hold any date.
            constexpr double largest = 1e15;
            const auto count = static_cast<std::int64_t>(std::min(passed / unit.seconds, largest));
            return std::to_string(count) + " " + std::string(unit.name) + (count == 1 ? "" : "s") +
                   " ago";
        }
    }
    return "just now";
}

} // namespace ombrel
