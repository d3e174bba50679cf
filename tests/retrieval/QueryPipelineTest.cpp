#include "retrieval/QueryPipeline.h"

#include "core/TokenEstimate.h"
#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

#include <chrono>

namespace ombrel {
namespace {

using std::chrono::milliseconds;
using test::ModelAnswer;
using test::ModelCall;
using Texts = std::vector<std::string>;

constexpr const char* answerInstructions =
    "Answer the question using only the provided context. If the answer isn't in the context, say "
    "you don't know.";
constexpr const char* nothingMatched =
    "Nothing in the indexed content matched this question closely enough to answer.";

DocumentChunk makeChunk(std::string text, std::int64_t tokens, Texts breadcrumb = {"doc"}) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.text = std::move(text);
    chunk.tokenCount = tokens;
    chunk.breadcrumb = std::move(breadcrumb);
    return chunk;
}

class QueryPipeline : public testing::Test {
  protected:
    QueryPipeline() {
        settings.index = IndexKind::keyword;
        settings.transform = QueryTransform::direct;
    }
    void addChunks(std::vector<DocumentChunk> chunks) {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = "doc.md";
        pairs.push_back({source, std::move(chunks)});
    }
    PlaygroundResult query(std::string question, AnswerObserver observer = {}) {
        return test::run(*platform.executor, runQuery(platform.platform, std::move(question), pairs,
                                                      settings, std::move(observer)));
    }
    // The room for context that packing leaves of the budget.
    void setRoom(std::int64_t room, const std::string& question) {
        settings.contextBudget = static_cast<double>(room + estimateTokens(answerInstructions) +
                                                     estimateTokens(question) + 800);
    }
    std::vector<bool> inPrompt(const PlaygroundResult& result) const {
        std::vector<bool> flags;
        for (const RetrievedChunk& row : result.retrieved) {
            flags.push_back(row.inPrompt);
        }
        return flags;
    }

    test::TestPlatform platform = test::makeTestPlatform();
    IndexedChunks pairs;
    BuildSettings settings;
};

TEST_F(QueryPipeline, AnswersFromThePackedHits) {
    addChunks({makeChunk("the last bus leaves at nine", 7, {"Handbook", "Travel"}),
               makeChunk("lunch is at noon", 4)});
    platform.model->queue.push_back("At nine.");
    const PlaygroundResult result = query(" last bus? ");
    EXPECT_EQ(result.question, " last bus? ");
    EXPECT_EQ(result.rewrittenQuery, " last bus? ");
    EXPECT_EQ(result.fullPrompt, "Context:\n[1] Handbook > Travel: the last bus leaves at nine"
                                 "\n\nQuestion:  last bus? ");
    EXPECT_EQ(result.answer, "At nine.");
    ASSERT_EQ(result.retrieved.size(), 1U);
    EXPECT_EQ(result.retrieved[0].rank, 1);
    EXPECT_EQ(result.retrieved[0].breadcrumb, (Texts{"Handbook", "Travel"}));
    EXPECT_EQ(result.retrieved[0].snippet, "the last bus leaves at nine");
    EXPECT_EQ(result.retrieved[0].keywordScore, 1.0);
    EXPECT_EQ(result.retrieved[0].fusedScore, 1.0);
    EXPECT_TRUE(result.retrieved[0].inPrompt);
    EXPECT_FALSE(result.retrieved[0].usedParent);
    EXPECT_NE(result.retrieved[0].id, pairs[0].chunks[0].id);
    EXPECT_EQ(result.rewriteMS, 0);
    EXPECT_EQ(result.instructionsTokens, estimateTokens(answerInstructions));
    EXPECT_EQ(result.questionTokens, 2);
    EXPECT_EQ(result.contextTokens, 7);
    EXPECT_EQ(result.answerReserveTokens, 800);
    EXPECT_TRUE(result.isLive);
    ASSERT_EQ(platform.model->calls.size(), 1U);
    EXPECT_EQ(platform.model->calls[0].kind, ModelCall::Kind::stream);
    EXPECT_EQ(platform.model->calls[0].instructions, answerInstructions);
    EXPECT_EQ(platform.model->calls[0].prompt, result.fullPrompt);
    EXPECT_TRUE(platform.model->calls[0].tools.empty());
}

TEST_F(QueryPipeline, NumbersPiecesByRankAndFillsTheBudgetWithSmallerHits) {
    // More of the word makes a better rank.
    addChunks({makeChunk("bus bus bus", 500), makeChunk("bus bus road", 900),
               makeChunk("bus road road", 300)});
    settings.topK = 3;
    setRoom(900, "bus");
    platform.model->queue.push_back("ok");
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.fullPrompt, "Context:\n[1] doc: bus bus bus\n\n[3] doc: bus road road"
                                 "\n\nQuestion: bus");
    EXPECT_EQ(inPrompt(result), (std::vector<bool>{true, false, true}));
    EXPECT_EQ(result.contextTokens, 800);
}

TEST_F(QueryPipeline, PacksNothingUnderASmallBudgetAndDoesNotAskTheModel) {
    addChunks({makeChunk("bus", 1)});
    settings.contextBudget = 500;
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.answer, nothingMatched);
    EXPECT_EQ(result.answerBreakdown, std::nullopt);
    EXPECT_EQ(inPrompt(result), std::vector<bool>{false});
    EXPECT_EQ(result.contextTokens, 0);
    EXPECT_EQ(result.fullPrompt, "Context:\n\n\nQuestion: bus");
    EXPECT_EQ(platform.model->sessionCount, 0U);
}

TEST_F(QueryPipeline, PacksAChunkWithoutTokensUnderABudgetOfZero) {
    addChunks({makeChunk("bus", 0)});
    settings.contextBudget = -1e300;
    platform.model->queue.push_back("ok");
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(inPrompt(result), std::vector<bool>{true});
    EXPECT_EQ(result.answer, "ok");
}

TEST_F(QueryPipeline, FillsTheBudgetExactly) {
    addChunks({makeChunk("bus", 10)});
    setRoom(10, "bus");
    platform.model->queue.push_back("ok");
    EXPECT_EQ(inPrompt(query("bus")), std::vector<bool>{true});
    setRoom(9, "bus");
    EXPECT_EQ(inPrompt(query("bus")), std::vector<bool>{false});
}

TEST_F(QueryPipeline, CountsAndSendsTheParentInPlaceOfTheChunk) {
    DocumentChunk chunk = makeChunk("bus", 1);
    chunk.parentText = "the whole section on the bus, forty chars";
    addChunks({chunk});
    settings.contextBudget = 3000;
    platform.model->queue.push_back("ok");
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.contextTokens, 10);
    EXPECT_EQ(result.fullPrompt,
              "Context:\n[1] doc: the whole section on the bus, forty chars\n\nQuestion: bus");
    EXPECT_TRUE(result.retrieved.at(0).usedParent);
    EXPECT_EQ(result.retrieved.at(0).snippet, "bus");
    setRoom(9, "bus");
    const PlaygroundResult small = query("bus");
    EXPECT_EQ(inPrompt(small), std::vector<bool>{false});
    EXPECT_TRUE(small.retrieved.at(0).usedParent);
}

TEST_F(QueryPipeline, CutsSnippetsAfter160Characters) {
    std::string text = "bus ";
    for (int i = 0; i < 200; ++i) {
        text += "\u00e9";
    }
    addChunks({makeChunk(text, 1)});
    platform.model->queue.push_back("ok");
    EXPECT_EQ(query("bus").retrieved.at(0).snippet, text.substr(0, 4 + 156 * 2));
}

TEST_F(QueryPipeline, BearsAnyTokenCount) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    addChunks({makeChunk("bus bus bus", 5), makeChunk("bus bus road", largest),
               makeChunk("bus road road", std::numeric_limits<std::int64_t>::min())});
    settings.contextBudget = 1e300;
    platform.model->queue.push_back("ok");
    EXPECT_EQ(inPrompt(query("bus")), (std::vector<bool>{true, false, true}));
}

TEST_F(QueryPipeline, SaysThatNothingMatchedWithoutHits) {
    addChunks({makeChunk("bus", 1)});
    const PlaygroundResult result = query("zebra");
    EXPECT_TRUE(result.retrieved.empty());
    EXPECT_EQ(result.answer, nothingMatched);
    EXPECT_EQ(platform.model->sessionCount, 0U);
}

TEST_F(QueryPipeline, KeepsTheHitsWhenTheModelIsUnavailable) {
    addChunks({makeChunk("bus stop", 1), makeChunk("bus lane", 1)});
    platform.model->unavailableReason = "modelNotReady";
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.answer,
              "Retrieved 2 chunk(s). On-device model unavailable (modelNotReady) \u2014 enable "
              "Apple Intelligence to generate a real answer.");
    EXPECT_EQ(result.answerBreakdown, std::nullopt);
    EXPECT_EQ(inPrompt(result), (std::vector<bool>{true, true}));
}

TEST_F(QueryPipeline, DropsWhatWasStreamedWhenTheStreamFails) {
    addChunks({makeChunk("bus", 1)});
    platform.model->queue.push_back(
        ModelAnswer::streamFails({{"At"}, {"At ni"}}, "The server went away."));
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.answer, "Retrieved 1 chunk(s), but the on-device model failed to answer: The "
                             "server went away.");
    EXPECT_EQ(result.answerBreakdown, std::nullopt);
    EXPECT_EQ(result.retrieved.size(), 1U);
}

TEST_F(QueryPipeline, SplitsTheWaitAtTheFirstSnapshotAndTakesTheLastUsage) {
    addChunks({makeChunk("bus", 1)});
    platform.model->queue.push_back(
        ModelAnswer::streams({{"At", std::nullopt, milliseconds(1200)},
                              {"At nine", ModelUsage{10, 2, 3}, milliseconds(300)},
                              {"At nine.", std::nullopt, milliseconds(34)}}));
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.answer, "At nine.");
    EXPECT_EQ(result.answerBreakdown, (AnswerBreakdown{1200, 334, 10, 2, 3}));
    EXPECT_DOUBLE_EQ(result.answerSeconds, 1.534);
}

TEST_F(QueryPipeline, CountsAStreamWithoutSnapshotsAsPromptTime) {
    addChunks({makeChunk("bus", 1)});
    ModelAnswer empty = ModelAnswer::streams({});
    empty.takes = milliseconds(70);
    platform.model->queue.push_back(empty);
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.answer, "");
    EXPECT_EQ(result.answerBreakdown, (AnswerBreakdown{70, 0, 0, 0, 0}));
}

TEST_F(QueryPipeline, ShowsTheObserverEverySnapshot) {
    addChunks({makeChunk("bus", 1)});
    platform.model->queue.push_back(ModelAnswer::streams({{"a"}, {"ab"}, {"abc"}}));
    Texts seen;
    query("bus", [&](const ModelSnapshot& snapshot) { seen.push_back(snapshot.content); });
    EXPECT_EQ(seen, (Texts{"a", "ab", "abc"}));
}

TEST_F(QueryPipeline, SearchesForTheRewrittenQuery) {
    addChunks({makeChunk("bus", 1), makeChunk("train", 1)});
    settings.transform = QueryTransform::rewrite;
    ModelAnswer rewritten(" train \n");
    rewritten.takes = milliseconds(40);
    platform.model->queue = {rewritten, ModelAnswer("ok")};
    const PlaygroundResult result = query("bus?");
    EXPECT_EQ(result.rewrittenQuery, "train");
    EXPECT_EQ(result.rewriteMS, 40);
    EXPECT_EQ(result.retrieved.at(0).snippet, "train");
    EXPECT_EQ(result.fullPrompt, "Context:\n[1] doc: train\n\nQuestion: bus?");
    EXPECT_EQ(
        platform.model->calls.at(0).instructions,
        "Rewrite the person's question into a short, effective search query for a keyword and "
        "semantic search index over a knowledge base. Keep the key terms, drop filler words, and "
        "don't turn it into a full sentence. Reply with only the rewritten query, no preamble or "
        "quotation marks.");
    EXPECT_EQ(platform.model->calls.at(0).prompt, "bus?");
    EXPECT_EQ(platform.model->calls.at(0).kind, ModelCall::Kind::respond);
}

TEST_F(QueryPipeline, SearchesForADraftedPassageAsAWhole) {
    addChunks({makeChunk("bus", 1), makeChunk("train", 1)});
    settings.transform = QueryTransform::hyde;
    platform.model->queue = {ModelAnswer("The train\nleaves."), ModelAnswer("ok")};
    const PlaygroundResult result = query("when?");
    EXPECT_EQ(result.rewrittenQuery, "The train\nleaves.");
    EXPECT_EQ(result.retrieved.at(0).snippet, "train");
    EXPECT_EQ(platform.model->calls.at(0).instructions,
              "Given a person's question, write a short passage (2-4 sentences) as if it were an "
              "excerpt from documentation that directly answers it. State it plainly as fact, in "
              "the voice of the source material \u2014 don't hedge, and don't mention that it's "
              "hypothetical or that you're guessing. Reply with only the passage text, no preamble "
              "or quotation marks.");
}

TEST_F(QueryPipeline, MergesTheHitsOfQueryVariantsByRank) {
    addChunks({makeChunk("bus", 1), makeChunk("train station", 1), makeChunk("tram", 1)});
    settings.transform = QueryTransform::multiQuery;
    platform.model->queue = {ModelAnswer("\n tram\t\n\nstation\r\n train \nbus\nplane"),
                             ModelAnswer("ok")};
    const PlaygroundResult result = query("how to travel?");
    EXPECT_EQ(result.rewrittenQuery, "tram | station | train");
    ASSERT_EQ(result.retrieved.size(), 2U);
    EXPECT_EQ(result.retrieved[0].snippet, "train station");
    EXPECT_EQ(result.retrieved[0].fusedScore, 1.0);
    EXPECT_EQ(result.retrieved[1].snippet, "tram");
    EXPECT_EQ(result.retrieved[1].fusedScore, 0.5);
    EXPECT_EQ(platform.model->calls.at(0).instructions,
              "Given a person's question, write up to 3 different short search queries that could "
              "each independently find the answer in a knowledge base \u2014 vary the wording and "
              "angle of each one rather than repeating the question. Reply with only the queries, "
              "one per line, no numbering, no preamble.");
}

TEST_F(QueryPipeline, SearchesForTheQuestionWhereATransformGivesNothing) {
    addChunks({makeChunk("bus", 1)});
    for (const QueryTransform transform :
         {QueryTransform::rewrite, QueryTransform::hyde, QueryTransform::multiQuery}) {
        settings.transform = transform;
        for (const ModelAnswer& given : {ModelAnswer(" \n\t"), ModelAnswer::fails("busy")}) {
            platform.model->queue = {given, ModelAnswer("ok")};
            const PlaygroundResult result = query(" bus ");
            EXPECT_EQ(result.rewrittenQuery, " bus ");
            EXPECT_EQ(result.retrieved.size(), 1U);
            EXPECT_EQ(result.answer, "ok");
        }
    }
}

TEST_F(QueryPipeline, SearchesOnceForTheQuestionWhenTheModelIsUnavailable) {
    addChunks({makeChunk("bus", 1)});
    settings.transform = QueryTransform::multiQuery;
    settings.index = IndexKind::vector;
    platform.model->unavailableReason = "modelNotInstalled";
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.rewrittenQuery, "bus");
    EXPECT_EQ(platform.embedder->texts(), Texts{"bus"});
    EXPECT_EQ(platform.model->sessionCount, 0U);
}

TEST_F(QueryPipeline, ReadsNoRerankSetting) {
    addChunks({makeChunk("bus bus", 1), makeChunk("bus stop", 1)});
    platform.model->answer = [](const ModelCall&) { return ModelAnswer("ok"); };
    PlaygroundResult plain = query("bus");
    settings.rerank = true;
    PlaygroundResult reranked = query("bus");
    EXPECT_EQ(platform.model->calls.size(), 2U);
    ASSERT_EQ(plain.retrieved.size(), reranked.retrieved.size());
    for (std::size_t i = 0; i < plain.retrieved.size(); ++i) {
        reranked.retrieved[i].id = plain.retrieved[i].id;
    }
    EXPECT_EQ(plain, reranked);
}

TEST_F(QueryPipeline, KeepsTheFirstTopKTruncated) {
    addChunks({makeChunk("bus a", 1), makeChunk("bus b", 1), makeChunk("bus c", 1)});
    settings.topK = 2.9;
    platform.model->queue.push_back("ok");
    EXPECT_EQ(query("bus").retrieved.size(), 2U);
    settings.topK = 0.5;
    EXPECT_EQ(query("bus").answer, nothingMatched);
}

TEST_F(QueryPipeline, MeasuresTheSearch) {
    DocumentChunk chunk = makeChunk("bus", 1);
    chunk.embedding = test::bagOfWords("bus");
    addChunks({chunk});
    settings.index = IndexKind::vector;
    platform.embedder->vectorOf = [this](std::string_view text) {
        platform.executor->moveClock(std::chrono::microseconds(12'900));
        return test::bagOfWords(text);
    };
    platform.model->queue.push_back("ok");
    const PlaygroundResult result = query("bus");
    EXPECT_EQ(result.searchMS, 12);
    EXPECT_EQ(result.retrieved.at(0).vectorScore, 1.0);
}

class Ask : public testing::Test {
  protected:
    Ask() {
        setSettings([](BuildSettings& settings) {
            settings.index = IndexKind::keyword;
            settings.transform = QueryTransform::direct;
        });
        SourceDocument source;
        source.id = Uuid::random();
        auto index = state->editCurrentIndex();
        index->chunksByDocument[source.id] =
            std::vector<DocumentChunk>{makeChunk("the bus", 2, {"doc", "Bus"})};
        index->sources.push_back(source);
        index->playgroundQuestion = "bus";
    }
    template <class Change>
    void setSettings(Change change) {
        Variant variant = state->currentVariant();
        change(variant.settings);
        state->updateVariant(variant);
    }
    void runAsk() { test::run(*platform.executor, ask(state)); }
    const RAGIndex& index() const { return state->currentIndex(); }

    test::Workspace workspace;
    test::TestPlatform& platform = workspace.platform;
    std::shared_ptr<AppState> state = workspace.state;
};

TEST_F(Ask, StoresTheResultAndRecordsTheLatency) {
    platform.model->queue.push_back(ModelAnswer::streams({{"nine", {}, milliseconds(1500)}}));
    EXPECT_TRUE(workspace.schedules([this] { runAsk(); }));
    ASSERT_TRUE(index().playgroundResult);
    EXPECT_EQ(index().playgroundResult->question, "bus");
    EXPECT_EQ(index().playgroundResult->answer, "nine");
    EXPECT_FALSE(index().isAsking);
    EXPECT_EQ(state->currentVariant().recordedLatencies, std::vector<double>{1.5});
}

TEST_F(Ask, AddsALatencyForEachAsk) {
    platform.model->unavailableReason = "modelNotReady";
    runAsk();
    runAsk();
    EXPECT_EQ(state->currentVariant().recordedLatencies.size(), 2U);
}

TEST_F(Ask, AddsTheTimesOfAllStages) {
    PlaygroundResult result;
    result.answerSeconds = 1.5;
    result.rewriteMS = 100;
    result.searchMS = 20;
    result.packMS = 3;
    EXPECT_DOUBLE_EQ(totalSeconds(result), 1.623);
}

TEST_F(Ask, IsRefusedUnderSpotlightAndWithoutChunks) {
    setSettings([](BuildSettings& settings) { settings.index = IndexKind::spotlight; });
    EXPECT_FALSE(canAsk(*state));
    state->editCurrentIndex()->warmUpStatus = "warm";
    const RAGIndex before = index();
    runAsk();
    EXPECT_EQ(index(), before);
    setSettings([](BuildSettings& settings) { settings.index = IndexKind::keyword; });
    EXPECT_TRUE(canAsk(*state));
    state->addRAGIndex();
    EXPECT_FALSE(canAsk(*state));
}

TEST_F(Ask, DoesNotNeedEmbeddings) {
    setSettings([](BuildSettings& settings) { settings.index = IndexKind::vector; });
    EXPECT_TRUE(canAsk(*state));
    runAsk();
    EXPECT_EQ(index().playgroundResult->answer, nothingMatched);
}

TEST_F(Ask, TakesTheQuestionAndTheSettingsOfItsStart) {
    platform.model->gate.close();
    state->editCurrentIndex()->warmUpStatus = "warm";
    const auto done = test::start(*platform.executor, ask(state));
    EXPECT_TRUE(index().isAsking);
    EXPECT_EQ(index().warmUpStatus, std::nullopt);
    EXPECT_EQ(index().playgroundResult, std::nullopt);
    state->editCurrentIndex()->playgroundQuestion = "something else";
    setSettings([](BuildSettings& settings) { settings.index = IndexKind::spotlight; });
    platform.model->queue.push_back("ok");
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_EQ(index().playgroundResult->question, "bus");
    EXPECT_EQ(index().playgroundResult->answer, "ok");
    EXPECT_EQ(state->currentVariant().settings.index, IndexKind::spotlight);
}

TEST_F(Ask, KeepsTheLastResultUntilTheNewOne) {
    platform.model->queue = {ModelAnswer("one"), ModelAnswer("two")};
    runAsk();
    platform.model->gate.close();
    test::start(*platform.executor, ask(state));
    EXPECT_EQ(index().playgroundResult->answer, "one");
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_EQ(index().playgroundResult->answer, "two");
}

TEST_F(Ask, NeverLeavesAnIndexAskingThatIsSwitchedAwayFrom) {
    const Uuid first = index().id;
    platform.model->gate.close();
    const auto done = test::start(*platform.executor, ask(state));
    const Uuid second = state->addRAGIndex().id;
    state->editIndex(second, [](RAGIndex& other) { other.isAsking = true; });
    platform.model->queue.push_back("ok");
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_FALSE(state->ragIndex(first)->isAsking);
    EXPECT_TRUE(state->ragIndex(second)->isAsking);
    EXPECT_EQ(state->ragIndex(first)->playgroundResult, std::nullopt);
    EXPECT_EQ(state->ragIndex(second)->playgroundResult->answer, "ok");
    EXPECT_EQ(state->currentVariant().recordedLatencies.size(), 1U);
}

TEST_F(Ask, EndsWhenItsIndexIsDeleted) {
    const Uuid first = index().id;
    platform.model->gate.close();
    const auto done = test::start(*platform.executor, ask(state));
    state->addRAGIndex();
    state->deleteRAGIndex(first);
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_TRUE(*done);
    EXPECT_FALSE(index().isAsking);
}

TEST_F(Ask, SavesTheFirstRowAsATestCase) {
    EXPECT_FALSE(saveAsTestCase(*state));
    platform.model->queue.push_back("ok");
    runAsk();
    EXPECT_TRUE(workspace.schedules([this] { EXPECT_TRUE(saveAsTestCase(*state)); }));
    ASSERT_EQ(index().testQuestions.size(), 1U);
    const TestQuestion& saved = index().testQuestions[0];
    EXPECT_EQ(saved.question, "bus");
    EXPECT_EQ(saved.expectedBreadcrumb, (Texts{"doc", "Bus"}));
    EXPECT_EQ(saved.lastGotBreadcrumb, std::nullopt);
    EXPECT_EQ(saved.lastRank, std::nullopt);
    EXPECT_EQ(saved.status, QuestionStatus::notEvaluated);
    EXPECT_FALSE(saved.isDrafted);
}

TEST_F(Ask, SavesNoTestCaseWithoutRows) {
    state->editCurrentIndex()->playgroundQuestion = "zebra";
    runAsk();
    EXPECT_FALSE(workspace.schedules([this] { EXPECT_FALSE(saveAsTestCase(*state)); }));
    EXPECT_TRUE(index().testQuestions.empty());
}

TEST_F(Ask, WarmsTheModelUp) {
    ModelAnswer reply("OK");
    reply.takes = milliseconds(2345);
    platform.model->queue.push_back(reply);
    test::run(*platform.executor, warmUp(state));
    EXPECT_EQ(index().warmUpStatus,
              "Model warmed up in 2.3s \u2014 the next question should start answering sooner.");
    EXPECT_FALSE(index().isWarmingUp);
    ASSERT_EQ(platform.model->calls.size(), 2U);
    EXPECT_EQ(platform.model->calls[0].kind, ModelCall::Kind::prewarm);
    EXPECT_EQ(platform.model->calls[1].prompt, "Reply with only the word OK.");
    EXPECT_EQ(platform.model->calls[1].instructions, answerInstructions);
}

TEST_F(Ask, SaysWhyTheModelCouldNotBeWarmedUp) {
    platform.model->queue.push_back(ModelAnswer::fails("The server went away."));
    test::run(*platform.executor, warmUp(state));
    EXPECT_EQ(index().warmUpStatus, "Warm-up failed: The server went away.");
    platform.model->unavailableReason = "modelNotReady";
    test::run(*platform.executor, warmUp(state));
    EXPECT_EQ(index().warmUpStatus,
              "Apple Intelligence isn't available here \u2014 nothing to warm up.");
}

TEST_F(Ask, ShowsTheWarmUpWhereItBegan) {
    const Uuid first = index().id;
    state->editCurrentIndex()->warmUpStatus = "old";
    platform.model->gate.close();
    test::start(*platform.executor, warmUp(state));
    EXPECT_TRUE(index().isWarmingUp);
    EXPECT_EQ(index().warmUpStatus, std::nullopt);
    state->addRAGIndex();
    platform.model->gate.open();
    platform.executor->runAll();
    EXPECT_FALSE(state->ragIndex(first)->isWarmingUp);
    EXPECT_TRUE(state->ragIndex(first)->warmUpStatus);
    EXPECT_EQ(index().warmUpStatus, std::nullopt);
}

} // namespace
} // namespace ombrel
