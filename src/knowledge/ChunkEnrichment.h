#pragma once

#include "core/DocumentChunk.h"
#include "platform/OnDeviceModel.h"
#include "platform/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// What the model writes about a chunk. Main thread; suspends while the model answers. A model that
// is unavailable or fails gives nothing.
namespace ombrel {

// One sentence on what the chunk is about and where it stands in the document.
Task<std::optional<std::string>> contextualNote(std::shared_ptr<OnDeviceModel> model,
                                                DocumentChunk chunk, std::string documentName);

// At most `count` questions that the chunk answers, as the model wrote them.
Task<std::vector<std::string>> generateQuestions(std::shared_ptr<OnDeviceModel> model,
                                                 DocumentChunk chunk, std::int64_t count);

} // namespace ombrel
