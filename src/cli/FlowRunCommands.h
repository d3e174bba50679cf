#pragma once

#include "cli/FlowCommands.h"

namespace ombrel {

// Adds what runs flows to `ombrel flow`: run, chat and export.
void addFlowRunCommands(const FlowCommand& flows);

} // namespace ombrel
