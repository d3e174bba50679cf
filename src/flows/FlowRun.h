#pragma once

#include "core/AppState.h"
#include "flows/ToolChain.h"
#include "platform/Task.h"
#include "platform/Uuid.h"

#include <memory>
#include <string>

// Runs of flows on the workspace. One goes at a time (`isRunningFlow`). While it goes on, the
// console, the phase and the highlight follow it; at its end its outcome is in
// `lastFlowRunOutcome`, whatever happened. The tasks hold the workspace only until the run has
// begun: when the project is closed the run goes on, and its outcome is dropped.
namespace ombrel {

// Runs a flow with the sample input values as its input. Nothing happens when a run goes on, or
// when the flow is not there or has errors.
Task<void> runFlow(std::shared_ptr<AppState> state, Uuid flowID,
                   std::shared_ptr<ToolChain> toolChain = ToolChain::ofThisProcess());

// Begins and carries out a run of a flow that is there, for a caller that has set `isRunningFlow`.
// `inputJSON` is the run's input, `resultTab` names the place where people find its result.
Task<void> carryOutRun(std::shared_ptr<AppState> state, Uuid flowID, std::string inputJSON,
                       std::string resultTab, std::shared_ptr<ToolChain> toolChain);

} // namespace ombrel
