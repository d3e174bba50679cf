#pragma once

#include "core/AppState.h"
#include "core/DocumentChunk.h"
#include "platform/OnDeviceModel.h"
#include "platform/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

// Test questions that the model writes. Main thread.
namespace ombrel {

// How many questions the face of the system drafts at once.
inline constexpr std::int64_t draftLimit = 15;

// Drafts a question for each of the first `limit` chunks whose section has none yet, one after the
// other (`isDrafting`, `draftProgress`), into the index that is current at the start. A chunk for
// which the model writes nothing is passed over. Does nothing when no chunk is left or a drafting
// runs on the index.
Task<void> draftQuestions(std::shared_ptr<AppState> state, std::int64_t limit);

// A question that the chunk answers; nothing when the model is unavailable, fails or writes
// nothing.
Task<std::optional<std::string>> draftQuestion(std::shared_ptr<OnDeviceModel> model,
                                               DocumentChunk chunk);

} // namespace ombrel
