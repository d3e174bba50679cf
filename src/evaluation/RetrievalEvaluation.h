#pragma once

#include "core/AppState.h"
#include "platform/Task.h"

#include <memory>

namespace ombrel {

// Whether the current index can be scored: its kind has an engine, it has chunks and questions, and
// no run is on.
bool canEvaluate(const AppState& state);

// Searches for each test question of the current index under the settings in force, copied at the
// start, scores the questions, and writes the recall and the mean reciprocal rank to the variant
// that is selected at the end. Under the transform `direct` nothing shows that it runs, and it
// suspends only where a vector does not come at once; else `isEvaluating` and `evaluateProgress`
// tell how far it is. Does nothing when the index can't be scored. Main thread.
Task<void> runEvaluation(std::shared_ptr<AppState> state);

} // namespace ombrel
