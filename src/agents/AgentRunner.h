#pragma once

#include "agents/AgentRunResult.h"
#include "core/Agent.h"
#include "core/RAGIndex.h"
#include "platform/Platform.h"
#include "platform/Task.h"

#include <string>
#include <string_view>
#include <vector>

// Trying an agent on one input: no flow, no tools, its instructions as they stand.
namespace ombrel {

// Whether "Run Agent" is enabled: nothing runs, and the input is not blank.
bool canRunAgent(std::string_view sampleInput, bool isRunning);

// Runs the agent. Never fails: what goes wrong becomes a result that is an error. Main thread;
// suspends while the model answers and while a query is embedded. The time is that of the
// platform's executor.
Task<AgentRunResult> runAgent(Platform platform, Agent agent, std::vector<RAGIndex> ragIndexes,
                              std::string input);

} // namespace ombrel
