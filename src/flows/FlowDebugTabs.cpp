#include "flows/FlowDebugTabs.h"

#include "flows/FlowValidator.h"

#include <algorithm>

namespace ombrel {

std::vector<FlowDebugTabs::Tab> FlowDebugTabs::of(FlowKind kind) {
    std::vector<Tab> tabs{Tab::trace, Tab::console, Tab::issues};
    if (kind == FlowKind::conversational) {
        tabs.insert(tabs.begin(), Tab::chat);
    }
    return tabs;
}

const char* FlowDebugTabs::title(Tab tab) {
    switch (tab) {
    case Tab::chat:
        return "Chat";
    case Tab::trace:
        return "Trace";
    case Tab::console:
        return "Console";
    case Tab::issues:
        break;
    }
    return "Issues";
}

void FlowDebugTabs::runBegan() {
    if (selected == Tab::trace) {
        selected = Tab::console;
        switchedToConsoleForRun = true;
    }
}

void FlowDebugTabs::runEnded(const std::optional<FlowRunOutcome>& outcome) {
    if (!switchedToConsoleForRun) {
        return;
    }
    switchedToConsoleForRun = false;
    if (outcome && !outcome->errorMessage && selected == Tab::console) {
        selected = Tab::trace;
    }
}

void FlowDebugTabs::kindIs(FlowKind kind) {
    const auto tabs = of(kind);
    if (std::ranges::find(tabs, selected) == tabs.end()) {
        selected = tabs.front();
    }
}

bool canStartRun(const AppState& state, Uuid flowID) {
    return !*state.isRunningFlow && canRunFlow(state, flowID);
}

std::string runHelp(const AppState& state, Uuid flowID) {
    return canRunFlow(state, flowID) ? "Run this flow (U1)"
                                     : "Fix the errors in the Issues tab first";
}

std::string runStatus(const AppState& state) {
    if (*state.isRunningFlow) {
        return "Run in progress — the Console tab shows each step.";
    }
    const auto& outcome = *state.lastFlowRunOutcome;
    if (!outcome) {
        return "";
    }
    return outcome->errorMessage ? "Failed" : "Succeeded";
}

std::string traceNote(const AppState& state) {
    if (*state.isRunningFlow) {
        return "Running… the trace appears here when the run finishes. The Console tab shows each "
               "step as it happens.";
    }
    return *state.lastFlowRunOutcome
               ? ""
               : "Press Run to follow along here: generating the flow's Swift code, compiling it, "
                 "then running it on the on-device model.";
}

std::string shownResult(std::string_view line) {
    constexpr std::string_view prefix = "RESULT: ";
    constexpr std::string_view separator = "\u2028";
    line.remove_prefix(line.starts_with(prefix) ? prefix.size() : 0);
    std::string shown;
    for (std::size_t at = 0; at < line.size();) {
        const std::size_t end = std::min(line.find(separator, at), line.size());
        shown.append(line, at, end - at);
        if (end < line.size()) {
            shown += '\n';
        }
        at = end + separator.size();
    }
    return shown;
}

} // namespace ombrel
