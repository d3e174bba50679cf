#pragma once

#include "platform/GeneratedContent.h"
#include "platform/GenerationSchema.h"
#include "platform/Result.h"
#include "platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The on-device language model. Everything is called on the main thread. No call of the system sets
// sampling, temperature or a limit of tokens; how long an answer may become is the service's own
// bound.
namespace ombrel {

// Whether the model can be asked, and if not the case name of the reason, such as
// "modelNotInstalled" or "modelNotReady", which messages show as it is.
struct ModelAvailability {
    std::optional<std::string> unavailableReason;
    bool isAvailable() const { return !unavailableReason; }
    bool operator==(const ModelAvailability&) const = default;
};

// Tokens as the model counts them.
struct ModelUsage {
    std::int64_t inputTokens = 0;
    std::int64_t cachedInputTokens = 0;
    std::int64_t outputTokens = 0;
    bool operator==(const ModelUsage&) const = default;
};

// What a stream has given so far: the whole text up to now.
struct ModelSnapshot {
    std::string content;
    std::optional<ModelUsage> usage;
};

// Something that the model may call while it answers. `call` never fails: what went wrong is text
// that the model reads.
class Tool {
  public:
    virtual ~Tool() = default;
    virtual std::string name() const = 0;
    virtual std::string description() const = 0;
    virtual GenerationSchema parameters() const = 0;
    virtual bool includesSchemaInInstructions() const { return true; }
    virtual Task<std::string> call(GeneratedContent arguments) = 0;
};

// One conversation of one request: the system makes a new session for each call. A session that is
// destroyed while it answers abandons the answer.
class LanguageModelSession {
  public:
    virtual ~LanguageModelSession() = default;

    // The model's whole answer. Calls the session's tools as often as the model asks for them,
    // within the service's bound.
    virtual Task<Result<std::string>> respond(std::string prompt) = 0;
    // An answer that fits the schema; an optional property that is absent has no key. A service
    // that can't be held to a schema may answer with JSON that does not fit, and fails where it
    // answers with none.
    virtual Task<Result<GeneratedContent>> respond(std::string prompt, GenerationSchema schema,
                                                   bool includeSchemaInPrompt) = 0;
    // Calls `onSnapshot` for each piece of the answer as it comes. The result is the last snapshot,
    // or nothing when the stream ended without one.
    virtual Task<Result<std::optional<ModelSnapshot>>>
    streamResponse(std::string prompt, std::function<void(const ModelSnapshot&)> onSnapshot) = 0;
    // Loads the model so that the next request starts sooner. Fails silently.
    virtual Task<void> prewarm() = 0;
};

class OnDeviceModel {
  public:
    virtual ~OnDeviceModel() = default;

    // Answers at once, from what is known.
    virtual ModelAvailability availability() = 0;
    virtual std::shared_ptr<LanguageModelSession>
    makeSession(std::string instructions, std::vector<std::shared_ptr<Tool>> tools = {}) = 0;
};

} // namespace ombrel
