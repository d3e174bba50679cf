#include "flows/Conversation.h"

#include "tests/flows/FlowWorkspace.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ombrel {
namespace {

using test::traceLine;
using Lines = std::vector<std::string>;

// A workspace whose flow is a conversation.
struct Chat : test::FlowWorkspace {
    Chat() {
        editFlow([](Flow& flow) { flow.kind = FlowKind::conversational; });
    }
    void send(std::string message) const {
        run(sendFlowMessage(state, flowID, std::move(message), toolChain));
    }
    void setMessages(Lines messages) const {
        (*state->conversationMessages.edit())[flowID] = std::move(messages);
    }
    void setResults(Lines lines) const {
        FlowRunOutcome outcome;
        outcome.resultLines = std::move(lines);
        state->lastFlowRunOutcome = std::move(outcome);
    }
    void setTrace(std::vector<FlowTraceEvent> trace) const {
        FlowRunOutcome outcome;
        outcome.trace = std::move(trace);
        state->lastFlowRunOutcome = std::move(outcome);
    }
    Lines messages() const { return chatMessages(*state, flowID); }
    std::vector<ChatTurn> turns() const { return chatTurns(*state, flowID); }
};

FlowTraceEvent prompt(std::string detail, std::optional<std::int64_t> tokens) {
    FlowTraceEvent event;
    event.kind = "promptBuilt";
    event.detail = std::move(detail);
    event.tokenEstimate = tokens;
    return event;
}

TEST(SendFlowMessage, KeepsTheMessageWithoutWhiteSpaceAround) {
    const Chat chat;
    chat.send("  \t hello \n\n");
    EXPECT_EQ(chat.messages(), Lines{"hello"});
}

TEST(SendFlowMessage, DoesNothingWithABlankMessage) {
    const Chat chat;
    chat.send(" \n\t ");
    EXPECT_EQ(chat.messages(), Lines());
    EXPECT_TRUE(chat->conversationMessages->empty());
    EXPECT_TRUE(chat->flowConsoleLines->empty());
    EXPECT_FALSE(canSend(*chat.state, chat.flowID, " \n\t "));
    EXPECT_TRUE(canSend(*chat.state, chat.flowID, " x "));
}

TEST(SendFlowMessage, HandsAllMessagesOverTheOldestFirst) {
    const Chat chat;
    const auto copy = chat.tools.folder / "copy";
    chat.tools.setStudioCLI("cp \"$1\" " + copy.string() + "\necho 'RESULT: x'");
    chat.send("one");
    chat.send("\"two\"");
    chat.send("three\nlines");
    const std::string request = test::contentsOf(copy);
    EXPECT_NE(request.find(R"("inputJSON":"[\"one\",\"\\\"two\\\"\",\"three\\nlines\"]")"),
              std::string::npos)
        << request;
}

TEST(SendFlowMessage, SaysThatTheResultIsInTheChatTab) {
    const Chat chat;
    chat.tools.setStudioCLI("echo 'RESULT: x'");
    chat.send("hello");
    EXPECT_TRUE(chat.lastLine().text.ends_with(" — the result is in the Chat tab."));
}

TEST(SendFlowMessage, DoesNothingWhileARunGoesOn) {
    const Chat chat;
    chat->isRunningFlow = true;
    EXPECT_FALSE(canSend(*chat.state, chat.flowID, "hello"));
    chat.send("hello");
    EXPECT_EQ(chat.messages(), Lines());
}

TEST(SendFlowMessage, DoesNothingForAFlowThatIsNotThereOrHasErrors) {
    const Chat chat;
    chat.run(sendFlowMessage(chat.state, Uuid::random(), "hello", chat.toolChain));
    EXPECT_TRUE(chat->conversationMessages->empty());
    EXPECT_EQ(sendHelp(*chat.state, chat.flowID), "Send this message (U2)");
    chat.editFlow([](Flow& flow) { flow.edges.clear(); });
    chat.send("hello");
    EXPECT_TRUE(chat->conversationMessages->empty());
    EXPECT_FALSE(canSend(*chat.state, chat.flowID, "hello"));
    EXPECT_EQ(sendHelp(*chat.state, chat.flowID), "Fix the errors in the Issues tab first");
}

TEST(SendFlowMessage, KeepsTheMessageOfARunThatFailsAndSendsItAgainWithTheNext) {
    const Chat chat;
    const auto copy = chat.tools.folder / "copy";
    chat.tools.setStudioCLI("echo 'RESULT: x'; exit 1");
    chat.send("one");
    EXPECT_EQ(chat.messages(), Lines{"one"});
    EXPECT_EQ(chatReplies(*chat.state), Lines());
    EXPECT_EQ(chat.turns()[0].reply, std::nullopt);
    chat.tools.setStudioCLI("cp \"$1\" " + copy.string() + "\necho 'RESULT: x'");
    chat.send("two");
    EXPECT_NE(test::contentsOf(copy).find(R"("inputJSON":"[\"one\",\"two\"]")"), std::string::npos);
}

TEST(SendFlowMessage, KeepsConversationsOfFlowsApart) {
    const Chat chat;
    const Uuid other = chat.draw("Other");
    chat.send("one");
    chat.run(sendFlowMessage(chat.state, other, "two", chat.toolChain));
    EXPECT_EQ(chat.messages(), Lines{"one"});
    EXPECT_EQ(chatMessages(*chat.state, other), Lines{"two"});
}

TEST(RunFlow, OfASingleShotFlowReadsNoMessages) {
    const test::FlowWorkspace workspace;
    (*workspace->conversationMessages.edit())[workspace.flowID] = {"hello"};
    const auto copy = workspace.tools.folder / "copy";
    workspace.tools.setStudioCLI("cp \"$1\" " + copy.string() + "\necho 'RESULT: x'");
    workspace.runFlow();
    EXPECT_EQ(test::contentsOf(copy).find("hello"), std::string::npos);
    EXPECT_NE(test::contentsOf(copy).find(R"("inputJSON":"{\"request\":\"\"}")"),
              std::string::npos);
}

TEST(ClearConversation, EmptiesTheChatAndTheOutcome) {
    const Chat chat;
    const Uuid other = chat.draw("Other");
    chat.setMessages({"one"});
    (*chat->conversationMessages.edit())[other] = {"two"};
    chat.setResults({"RESULT: x"});
    clearConversation(*chat.state, chat.flowID);
    EXPECT_EQ(chat.messages(), Lines());
    EXPECT_EQ(*chat->lastFlowRunOutcome, std::nullopt);
    EXPECT_EQ(chat.turns(), std::vector<ChatTurn>());
    EXPECT_EQ(chatMessages(*chat.state, other), Lines{"two"});
}

TEST(ChatTurns, PairsRepliesWithMessagesByPosition) {
    const Chat chat;
    chat.setMessages({"one", "two"});
    chat.setResults({"RESULT: first", "RESULT: second", "RESULT: more"});
    const auto turns = chat.turns();
    ASSERT_EQ(turns.size(), 2U);
    EXPECT_EQ(turns[0].message, "one");
    EXPECT_EQ(turns[0].reply, "first");
    EXPECT_EQ(turns[1].reply, "second");
}

TEST(ChatTurns, ShowsAReplyWithoutABlankBehindTheMarkWhole) {
    const Chat chat;
    chat.setMessages({"one", "two", "three"});
    chat.setResults({"RESULT:first", "RESULT: ", "RESULT: RESULT: x"});
    const auto turns = chat.turns();
    EXPECT_EQ(turns[0].reply, "RESULT:first");
    EXPECT_EQ(turns[1].reply, "");
    EXPECT_EQ(turns[2].reply, "RESULT: x");
}

TEST(ChatTurns, ShowsNoReplyForAMessageWithoutResult) {
    const Chat chat;
    chat.setMessages({"one", "two", "three"});
    chat.setResults({"RESULT: first", "RESULT: second"});
    const auto turns = chat.turns();
    EXPECT_EQ(turns[2].reply, std::nullopt);
    EXPECT_FALSE(turns[2].isRunning);
}

TEST(ChatTurns, ShowsTheRunAtTheLastMessageAlone) {
    const Chat chat;
    chat.setMessages({"one", "two"});
    chat->isRunningFlow = true;
    EXPECT_FALSE(chat.turns()[0].isRunning);
    EXPECT_TRUE(chat.turns()[1].isRunning);
}

TEST(ChatTurns, OfferTheContextOfEachPrompt) {
    const Chat chat;
    chat.setMessages({"one", "two", "three"});
    FlowTraceEvent other;
    other.kind = "nodeEntered";
    chat.setTrace({prompt("first prompt", 120), other, prompt("second prompt", std::nullopt)});
    const auto turns = chat.turns();
    EXPECT_EQ(turns[0].context, (ChatTurn::Context{"~120 tokens · View Context", "first prompt"}));
    EXPECT_EQ(turns[1].context, (ChatTurn::Context{"View Context", "second prompt"}));
    EXPECT_EQ(turns[2].context, std::nullopt);
    EXPECT_EQ(promptSizeText(*chat.state), std::nullopt);
}

TEST(PromptSize, IsThatOfTheLastPrompt) {
    const Chat chat;
    EXPECT_EQ(promptSizeText(*chat.state), std::nullopt);
    chat.setTrace({prompt("first", 120), prompt("second", 34)});
    EXPECT_EQ(promptSizeText(*chat.state), "~34 tokens");
}

TEST(ConversationTexts, AreThese) {
    EXPECT_STREQ(noMessagesText, "No messages yet — send one above.");
    EXPECT_STREQ(promptSizeHelp,
                 "Estimated size of the last prompt actually sent to the model — instructions + "
                 "trimmed history + your message (Max history (tokens) in the flow inspector "
                 "controls how much history that includes).");
    EXPECT_STREQ(conversationInputNote,
                 "send() takes a plain message — there's no typed Start input for a conversational "
                 "flow. Any agent can read the trimmed transcript via a \"history\" Flow Context "
                 "field.");
}

} // namespace
} // namespace ombrel
