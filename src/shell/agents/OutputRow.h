#pragma once

#include "core/AgentOutputKind.h"

#include <string>
#include <vector>

namespace ombrel {

// A property or case of an output, as lists show it.
struct OutputRow {
    int depth = 0; // how many properties it is in
    std::string name;
    std::string type; // empty for a case
    std::string description;
    bool operator==(const OutputRow&) const = default;
};

// All that an output holds, each thing before those in it; of an array, its elements'.
std::vector<OutputRow> outputRows(const AgentOutputKind& output);

} // namespace ombrel
