#pragma once

#include "core/AppState.h"
#include "core/FlowTraceEvent.h"
#include "flows/ToolChain.h"
#include "platform/Task.h"
#include "platform/Uuid.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Conversational flows. The workspace keeps the user's messages; every message starts a run that
// gets all of them, and the replies are those of the last run.
namespace ombrel {

// Sends a message, without white space around it, with those before it, and carries the run out as
// `runFlow` does. Nothing happens when the message is blank, when a run goes on, or when the flow
// is not there or has errors. A message stays also when its run fails.
Task<void> sendFlowMessage(std::shared_ptr<AppState> state, Uuid flowID, std::string message,
                           std::shared_ptr<ToolChain> toolChain = ToolChain::ofThisProcess());

// Forgets the messages of the flow, and the last outcome.
void clearConversation(AppState& state, Uuid flowID);

// The user's messages, in order.
std::vector<std::string> chatMessages(const AppState& state, Uuid flowID);
// The result lines of the last run, as they stand.
std::vector<std::string> chatReplies(const AppState& state);
// The steps of the last run that sent a prompt to the model, in order.
std::vector<FlowTraceEvent> promptEvents(const AppState& state);

// One message of a chat and what belongs to it. Replies and prompts pair with messages by position.
struct ChatTurn {
    std::string message;
    std::optional<std::string> reply; // as `shownResult` tells it
    bool isRunning = false;           // a run works on the reply
    struct Context {
        std::string label;  // "~120 tokens · View Context"
        std::string prompt; // the text that was sent
        bool operator==(const Context&) const = default;
    };
    std::optional<Context> context;
    bool operator==(const ChatTurn&) const = default;
};
// The chat of a flow as it is shown; empty when there are no messages.
std::vector<ChatTurn> chatTurns(const AppState& state, Uuid flowID);

// "~120 tokens", of the last prompt of the last run; nothing when it isn't known.
std::optional<std::string> promptSizeText(const AppState& state);
// Whether a draft can be sent now.
bool canSend(const AppState& state, Uuid flowID, std::string_view draft);
// What the send button says.
std::string sendHelp(const AppState& state, Uuid flowID);

inline constexpr const char* noMessagesText = "No messages yet — send one above.";
inline constexpr const char* promptSizeHelp =
    "Estimated size of the last prompt actually sent to the model — instructions + trimmed history "
    "+ your message (Max history (tokens) in the flow inspector controls how much history that "
    "includes).";
// What the inspector says where a single-shot flow has its input fields.
inline constexpr const char* conversationInputNote =
    "send() takes a plain message — there's no typed Start input for a conversational flow. Any "
    "agent can read the trimmed transcript via a \"history\" Flow Context field.";

} // namespace ombrel
