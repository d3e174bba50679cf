#pragma once

#include "core/Agent.h"
#include "core/FlowNode.h"

#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// An output of a node: its name, or nothing for the unnamed output of a node that has one only.
// Ports are matched by exact equality.
using FlowPort = std::optional<std::string>;

// The outputs of a node in the order in which they are drawn: one unnamed port for a Start, a
// Tool, and an agent that gives text or an object; one for each case of an agent that gives an
// enumeration, by name; "true" and "false" for a Branch; none for an End, and for an agent that is
// not among `agents`.
std::vector<FlowPort> outputPorts(const FlowNode& node, const std::vector<Agent>& agents);

} // namespace ombrel
