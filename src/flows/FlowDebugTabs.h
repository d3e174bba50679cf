#pragma once

#include "core/AppState.h"
#include "core/Flow.h"
#include "core/FlowRunOutcome.h"
#include "platform/Uuid.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// Which tab of a flow's debug area is shown, and how it follows a run: to the console while the run
// goes on, and to the trace when it has succeeded. It leaves alone what the user chose meanwhile,
// and never leaves the chat.
struct FlowDebugTabs {
    enum class Tab { chat, trace, console, issues };

    // Those of a flow of this kind, in the order in which they stand.
    static std::vector<Tab> of(FlowKind kind);
    static const char* title(Tab tab);

    explicit FlowDebugTabs(FlowKind kind) : selected(of(kind).front()) {}
    void runBegan();
    // `outcome` is that of the run which ended.
    void runEnded(const std::optional<FlowRunOutcome>& outcome);
    // Chooses another tab when the flow no longer has this one.
    void kindIs(FlowKind kind);

    Tab selected;
    bool switchedToConsoleForRun = false;
};

// Whether the Run button can be pressed, and what it says.
bool canStartRun(const AppState& state, Uuid flowID);
std::string runHelp(const AppState& state, Uuid flowID);

// How the last run went, or that one goes on; empty when there was none.
std::string runStatus(const AppState& state);
// What stands in the place of the trace; empty when there is one.
std::string traceNote(const AppState& state);
// A result for people: without the mark of a result, and with its lines apart, which a tool puts
// into one line with U+2028 between them.
std::string shownResult(std::string_view line);

inline constexpr const char* noRunText = "No run yet.";
inline constexpr const char* noIssuesText = "No issues.";

} // namespace ombrel
