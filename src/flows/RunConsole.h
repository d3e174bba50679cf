#pragma once

#include "core/AppState.h"
#include "core/FlowConsoleLine.h"

#include <string>
#include <vector>

namespace ombrel {

// Appends to the console of the workspace, as one change. More than 4,000 lines are cut to the
// newest 3,500. So that lines of any length fit into memory, the oldest also go when all of them
// together are longer than 16 MiB; the newest stays, however long it is.
void appendToConsole(AppState& state, std::vector<FlowConsoleLine> lines);

// A line that a tool wrote for people. One that begins "▸ " is a step, and one that begins "✗ " a
// failure; their marks are dropped.
FlowConsoleLine readConsoleLine(std::string text);

} // namespace ombrel
