#pragma once

#include "core/FlowRunHighlight.h"
#include "core/FlowTraceEvent.h"
#include "platform/Uuid.h"

#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// Takes the highlight one step of the run further. Kinds of event that it doesn't know change
// nothing. The same for what arrives live and for a trace that is gone through afterwards.
void apply(FlowRunHighlight& highlight, const FlowTraceEvent& event);

// Ends the run. A run that failed marks the node where it went wrong, when it reached any.
void finish(FlowRunHighlight& highlight, bool succeeded);

FlowRunHighlight::NodeState state(const FlowRunHighlight& highlight, Uuid nodeID);

// What the banner over the canvas says: "Running · step 3".
std::string bannerText(const FlowRunHighlight& highlight);

// The detail of one node: "Step 2", and a row for each thing that it saw.
struct RunBubble {
    struct Row {
        std::string label;
        std::string text;
        bool operator==(const Row&) const = default;
    };
    std::string title;
    std::vector<Row> rows;
    bool operator==(const RunBubble&) const = default;
};

// Nothing when the node saw nothing.
std::optional<RunBubble> runBubble(const FlowRunHighlight& highlight, Uuid nodeID);

} // namespace ombrel
