#include "flows/Conversation.h"

#include "core/JsonEncoder.h"
#include "flows/FlowDebugTabs.h"
#include "flows/FlowRun.h"
#include "flows/FlowValidator.h"
#include "platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace ombrel {

namespace {

std::string tokensText(std::int64_t tokens) {
    return "~" + std::to_string(tokens) + " tokens";
}

bool isPrompt(const FlowTraceEvent& event) {
    return event.kind == "promptBuilt";
}

ChatTurn::Context contextOf(const FlowTraceEvent& event) {
    const std::string size =
        event.tokenEstimate ? tokensText(*event.tokenEstimate) + " · " : std::string();
    return {size + "View Context", event.detail};
}

} // namespace

Task<void> sendFlowMessage(std::shared_ptr<AppState> state, Uuid flowID, std::string message,
                           std::shared_ptr<ToolChain> toolChain) {
    std::string trimmed(trimWhitespacesAndNewlines(message));
    if (trimmed.empty() || *state->isRunningFlow || !canRunFlow(*state, flowID)) {
        co_return;
    }
    (*state->conversationMessages.edit())[flowID].push_back(std::move(trimmed));
    state->isRunningFlow = true;
    state->lastFlowRunOutcome = std::nullopt;
    std::string inputJSON = encodeJson(chatMessages(*state, flowID));
    auto run = carryOutRun(std::move(state), flowID, std::move(inputJSON), "the Chat tab",
                           std::move(toolChain));
    co_await std::move(run);
}

void clearConversation(AppState& state, Uuid flowID) {
    state.conversationMessages.edit()->erase(flowID);
    state.lastFlowRunOutcome = std::nullopt;
}

std::vector<std::string> chatMessages(const AppState& state, Uuid flowID) {
    const auto messages = state.conversationMessages->find(flowID);
    return messages == state.conversationMessages->end() ? std::vector<std::string>()
                                                         : messages->second;
}

std::vector<std::string> chatReplies(const AppState& state) {
    const auto& outcome = *state.lastFlowRunOutcome;
    return outcome ? outcome->resultLines : std::vector<std::string>();
}

std::vector<FlowTraceEvent> promptEvents(const AppState& state) {
    std::vector<FlowTraceEvent> events;
    if (const auto& outcome = *state.lastFlowRunOutcome) {
        std::ranges::copy_if(outcome->trace, std::back_inserter(events), isPrompt);
    }
    return events;
}

std::vector<ChatTurn> chatTurns(const AppState& state, Uuid flowID) {
    const auto replies = chatReplies(state);
    const auto prompts = promptEvents(state);
    std::vector<ChatTurn> turns;
    for (std::string& message : chatMessages(state, flowID)) {
        ChatTurn turn;
        const std::size_t i = turns.size();
        turn.message = std::move(message);
        if (i < replies.size()) {
            turn.reply = shownResult(replies[i]);
        }
        if (i < prompts.size()) {
            turn.context = contextOf(prompts[i]);
        }
        turns.push_back(std::move(turn));
    }
    if (!turns.empty() && !turns.back().reply) {
        turns.back().isRunning = *state.isRunningFlow;
    }
    return turns;
}

std::optional<std::string> promptSizeText(const AppState& state) {
    const auto& outcome = *state.lastFlowRunOutcome;
    if (!outcome) {
        return std::nullopt;
    }
    const auto& trace = outcome->trace;
    const auto last = std::find_if(trace.rbegin(), trace.rend(), isPrompt);
    if (last == trace.rend() || !last->tokenEstimate) {
        return std::nullopt;
    }
    return tokensText(*last->tokenEstimate);
}

bool canSend(const AppState& state, Uuid flowID, std::string_view draft) {
    return !trimWhitespacesAndNewlines(draft).empty() && !*state.isRunningFlow &&
           canRunFlow(state, flowID);
}

std::string sendHelp(const AppState& state, Uuid flowID) {
    return canRunFlow(state, flowID) ? "Send this message (U2)"
                                     : "Fix the errors in the Issues tab first";
}

} // namespace ombrel
