#pragma once

#include "core/AppState.h"
#include "core/Flow.h"

#include <string>
#include <string_view>

namespace ombrel {

// Reads a flow as people write it, for an application's agents and tools:
//
//   {"kind": "Single-shot", "maxHops": 6, "maxHistoryTokens": 2000,
//    "startInput": ["request=What the customer wrote"], "contextFields": ["history"],
//    "nodes": [{"agent": "Triage"}, {"tool": "orderStatus", "name": "status"},
//              {"branch": {"field": "amount", "operator": "greaterThan", "value": "100"},
//               "name": "isLarge", "position": [300, 160]},
//              {"end": "done", "carriesOutput": true}],
//    "edges": [["Start", "Triage"], ["Triage.refund", "isLarge"], ["isLarge.true", "done"]]}
//
// Everything can be left out: what isn't there is as in a new flow. An agent or tool of which there
// is one node without a name of its own needs no entry in `nodes`. Nodes without positions are laid
// out. A text with the key "id" is the whole record instead, as `ombrel flow show --json` prints
// it.
// Throws `Failure` that says what is wrong and where.
Flow readFlowDescription(const AppState& state, std::string_view json);

} // namespace ombrel
