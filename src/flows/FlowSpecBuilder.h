#pragma once

#include "core/Agent.h"
#include "core/Flow.h"
#include "core/RAGIndex.h"
#include "core/ToolDefinition.h"
#include "flows/FlowSpecBuilderError.h"
#include "flows/WireFlowSpec.h"
#include "platform/Result.h"

#include <vector>

namespace ombrel {

// Turns the drawing of a flow into the tree that is run and exported.
struct FlowSpecBuilder {
    // To be called on a flow that the validator finds no error in. What it can't turn into a tree
    // of any other it refuses with the first error that it meets; a connection back to Start or
    // around a loop counts as one to a node that isn't there. The texts and vectors of attached
    // knowledge are shared with the indexes. Any thread.
    static Result<WireFlowSpec, FlowSpecBuilderError>
    build(const Flow& flow, const std::vector<Agent>& agents,
          const std::vector<ToolDefinition>& tools, const std::vector<RAGIndex>& ragIndexes);
};

} // namespace ombrel
