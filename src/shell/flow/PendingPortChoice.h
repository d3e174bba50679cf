#pragma once

#include "core/FlowPorts.h"
#include "platform/Uuid.h"

#include <vector>

namespace ombrel {

// A wire that was dropped on a node and could leave by several ports.
struct PendingPortChoice {
    Uuid id = Uuid::random();
    Uuid fromNodeID;
    Uuid toNodeID;
    std::vector<FlowPort> ports;
};

} // namespace ombrel
