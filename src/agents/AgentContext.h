#pragma once

#include "agents/AgentRetrievedContext.h"
#include "core/Agent.h"
#include "core/RAGIndex.h"
#include "platform/Platform.h"
#include "platform/Task.h"

#include <string>
#include <string_view>
#include <vector>

// The knowledge that an agent is given for a run.
namespace ombrel {

// Searches each attached index for the input; an entry for each attachment whose index is among
// `ragIndexes`, in the order of the attachments, and none at all for a blank input. Main thread;
// suspends only while a query is embedded.
Task<std::vector<AgentRetrievedContext>> retrieveAgentContext(Platform platform, Agent agent,
                                                              std::vector<RAGIndex> ragIndexes,
                                                              std::string input);

// The instructions, and behind them what was retrieved, numbered from 1 through all entries.
std::string instructionsWithContext(std::string_view instructions,
                                    const std::vector<AgentRetrievedContext>& retrieved);

} // namespace ombrel
