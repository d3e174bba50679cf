#pragma once

#include "core/FlowTraceEvent.h"

#include <optional>
#include <string_view>

namespace ombrel {

// Reads one line of a running flow's standard output: a JSON object with `kind` and `detail`
// (strings), `elapsedMS` (an integer), and perhaps `node` (a string) and `tokenEstimate` (an
// integer). Other keys are ignored, and a value of another type counts as missing. Nothing when the
// line is not such an object. The event gets a new id. Any thread.
std::optional<FlowTraceEvent> parseTraceLine(std::string_view line);

} // namespace ombrel
