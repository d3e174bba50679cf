#pragma once

#include "core/AgentOutputKind.h"
#include "core/AgentProperty.h"

#include <string>
#include <vector>

namespace ombrel {

// Fields with their types and descriptions; the properties of an object stand indented below it.
std::string fieldTable(const std::vector<AgentProperty>& properties);

// An output: how much there is, and its properties or cases.
std::string outputTable(const AgentOutputKind& output);

} // namespace ombrel
