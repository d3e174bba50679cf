#include "retrieval/AgenticSearch.h"

#include "core/TokenEstimate.h"
#include "retrieval/QueryPipeline.h"
#include "retrieval/RAGSearchTool.h"
#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

namespace ombrel {
namespace {

using test::ModelAnswer;
using test::ModelCall;
using Texts = std::vector<std::string>;

constexpr const char* instructions =
    "Answer the person's question using the search_knowledge_base tool to find relevant passages "
    "from the indexed content. Call the tool as many times as needed with focused, specific "
    "queries — search again with a different query if the first results aren't enough. Base your "
    "answer only on what the tool returns. If nothing relevant turns up after searching, say you "
    "don't know.";
constexpr const char* nothingFound = "No results found for that query.";

DocumentChunk makeChunk(std::string text, std::int64_t tokens, Texts breadcrumb = {"doc"}) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.text = std::move(text);
    chunk.tokenCount = tokens;
    chunk.breadcrumb = std::move(breadcrumb);
    return chunk;
}

// An answer after searches for these queries.
ModelAnswer searching(const Texts& queries, std::string answer) {
    ModelAnswer given(std::move(answer));
    for (const std::string& query : queries) {
        given.toolCalls.push_back({"search_knowledge_base", "{\"query\":\"" + query + "\"}"});
    }
    return given;
}

class AgenticSearch : public testing::Test {
  protected:
    AgenticSearch() {
        settings.index = IndexKind::keyword;
        settings.transform = QueryTransform::tool;
    }
    void addChunks(std::vector<DocumentChunk> chunks) {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = "doc.md";
        pairs.push_back({source, std::move(chunks)});
    }
    AgenticOutcome query(std::string question) {
        return test::run(*platform.executor,
                         runAgenticQuery(platform.platform, std::move(question), pairs, settings));
    }
    PlaygroundResult play(std::string question) {
        return test::run(
            *platform.executor,
            runAgenticPlayground(platform.platform, std::move(question), pairs, settings));
    }
    Texts toolResults() const { return platform.model->calls.at(0).toolResults; }
    static Texts snippets(const PlaygroundResult& result) {
        Texts texts;
        for (const RetrievedChunk& row : result.retrieved) {
            texts.push_back(row.snippet);
        }
        return texts;
    }

    test::TestPlatform platform = test::makeTestPlatform();
    IndexedChunks pairs;
    BuildSettings settings;
};

TEST_F(AgenticSearch, GivesTheModelTheQuestionTheToolAndTheInstructions) {
    addChunks({makeChunk("bus", 1)});
    platform.model->queue.push_back("At nine.");
    EXPECT_EQ(query("When?").answer, "At nine.");
    ASSERT_EQ(platform.model->calls.size(), 1U);
    const ModelCall& call = platform.model->calls[0];
    EXPECT_EQ(call.kind, ModelCall::Kind::respond);
    EXPECT_EQ(call.instructions, instructions);
    EXPECT_EQ(call.prompt, "When?");
    ASSERT_EQ(call.tools.size(), 1U);
    EXPECT_EQ(call.tools[0]->name(), "search_knowledge_base");
    EXPECT_EQ(call.tools[0]->description(),
              "Searches the indexed knowledge base for passages relevant to a query. Call this as "
              "many times as needed, with focused, specific queries, before answering — you can "
              "search more than once if the first results aren't enough.");
    const GenerationSchema parameters = call.tools[0]->parameters();
    const auto& object = std::get<DynamicGenerationSchema::Object>(parameters.root().form);
    ASSERT_EQ(object.properties.size(), 1U);
    EXPECT_EQ(object.properties[0].name, "query");
    EXPECT_EQ(object.properties[0].description,
              "A focused search query capturing what information is needed");
    EXPECT_FALSE(object.properties[0].isOptional);
    EXPECT_EQ(std::get<DynamicGenerationSchema::Scalar>(object.properties[0].schema->form),
              DynamicGenerationSchema::Scalar::string);
}

TEST_F(AgenticSearch, GivesTheModelRankedPassages) {
    addChunks({makeChunk("bus at nine", 3, {"Handbook", "Travel"}),
               makeChunk("bus bus", 2, {"Handbook"}), makeChunk("lunch", 1)});
    platform.model->queue.push_back(searching({"bus"}, "ok"));
    query("When?");
    EXPECT_EQ(toolResults(),
              (Texts{"[1] Handbook: bus bus\n\n[2] Handbook > Travel: bus at nine"}));
}

TEST_F(AgenticSearch, LimitsEachCallToTheTruncatedTopK) {
    addChunks({makeChunk("bus one", 1), makeChunk("bus two", 1), makeChunk("bus three", 1)});
    settings.topK = 1.9;
    platform.model->queue.push_back(searching({"one bus", "two bus", "three bus"}, "ok"));
    const AgenticOutcome outcome = query("When?");
    EXPECT_EQ(toolResults(), (Texts{"[1] doc: bus one", "[1] doc: bus two", "[1] doc: bus three"}));
    // The hits of several calls together are not limited.
    EXPECT_EQ(outcome.hits.size(), 3U);
}

TEST_F(AgenticSearch, AnswersWithoutASearch) {
    addChunks({makeChunk("bus", 1)});
    platform.model->queue.push_back("Hello.");
    const PlaygroundResult result = play("Hi?");
    EXPECT_EQ(result.question, "Hi?");
    EXPECT_EQ(result.rewrittenQuery, "Hi?");
    EXPECT_TRUE(result.retrieved.empty());
    EXPECT_EQ(result.fullPrompt, "Tool (agentic) — the model issued 0 search call(s):\n(the model "
                                 "answered without searching)");
    EXPECT_EQ(result.answer, "Hello.");
}

TEST_F(AgenticSearch, ShowsARepeatedQueryTwiceAndItsChunksOnce) {
    addChunks({makeChunk("bus stop", 4), makeChunk("bus lane", 5)});
    platform.model->queue.push_back(searching({"bus", "bus"}, "ok"));
    const PlaygroundResult result = play("When?");
    EXPECT_EQ(result.rewrittenQuery, "bus | bus");
    EXPECT_EQ(result.fullPrompt,
              "Tool (agentic) — the model issued 2 search call(s):\n1. bus\n2. bus");
    EXPECT_EQ(snippets(result), (Texts{"bus stop", "bus lane"}));
    EXPECT_EQ(result.contextTokens, 9);
    EXPECT_EQ(toolResults().size(), 2U);
}

TEST_F(AgenticSearch, KeepsTheScoresOfTheFirstFindInTheOrderOfTheCalls) {
    addChunks({makeChunk("bus road road", 1), makeChunk("bus bus bus", 1)});
    platform.model->queue.push_back(searching({"bus", "road"}, "ok"));
    const AgenticOutcome outcome = query("When?");
    ASSERT_EQ(outcome.hits.size(), 2U);
    EXPECT_EQ(outcome.hits[0].chunk.text, "bus bus bus");
    EXPECT_EQ(outcome.hits[1].chunk.text, "bus road road");
    // For "road" alone it would be the best.
    EXPECT_LT(outcome.hits[1].fusedScore, 1.0);
    EXPECT_EQ(outcome.queries, (Texts{"bus", "road"}));
}

TEST_F(AgenticSearch, FillsTheRowsAndTheCounts) {
    DocumentChunk chunk = makeChunk("bus " + std::string(200, 'x'), 51, {"Handbook", "Travel"});
    chunk.parentText = "the whole section on the bus";
    addChunks({chunk});
    ModelAnswer answer = searching({"bus"}, "At nine.");
    answer.takes = std::chrono::microseconds(1'234'900);
    platform.model->queue.push_back(answer);
    const PlaygroundResult result = play("When is it?");
    ASSERT_EQ(result.retrieved.size(), 1U);
    const RetrievedChunk& row = result.retrieved[0];
    EXPECT_EQ(row.rank, 1);
    EXPECT_NE(row.id, chunk.id);
    EXPECT_EQ(row.breadcrumb, (Texts{"Handbook", "Travel"}));
    EXPECT_EQ(row.snippet, chunk.text.substr(0, 160));
    EXPECT_EQ(row.keywordScore, 1.0);
    EXPECT_EQ(row.vectorScore, 0.0);
    EXPECT_EQ(row.fusedScore, 1.0);
    EXPECT_TRUE(row.inPrompt);
    EXPECT_TRUE(row.usedParent);
    EXPECT_EQ(result.rewriteMS, 0);
    EXPECT_EQ(result.searchMS, 1234);
    EXPECT_EQ(result.packMS, 0);
    EXPECT_EQ(result.answerSeconds, 0.0);
    EXPECT_EQ(result.instructionsTokens, estimateTokens(instructions));
    EXPECT_EQ(result.contextTokens, 51);
    EXPECT_EQ(result.questionTokens, estimateTokens("When is it?"));
    EXPECT_EQ(result.answerReserveTokens, 800);
    EXPECT_TRUE(result.isLive);
    EXPECT_EQ(result.answerBreakdown, std::nullopt);
}

TEST_F(AgenticSearch, GivesTheModelTheFirst600CharactersOfALongParent) {
    DocumentChunk chunk = makeChunk("bus", 1, {"A"});
    std::string start;
    for (int i = 0; i < 600; ++i) {
        start += "é";
    }
    chunk.parentText = start;
    for (int i = 0; i < 1400; ++i) {
        *chunk.parentText += "z";
    }
    addChunks({chunk});
    platform.model->queue.push_back(searching({"bus"}, "ok"));
    query("When?");
    EXPECT_EQ(toolResults(), Texts{"[1] A: " + start});
}

TEST_F(AgenticSearch, DoesNotCallTheModelWhenItIsUnavailable) {
    addChunks({makeChunk("bus", 1)});
    platform.model->unavailableReason = "modelNotReady";
    const PlaygroundResult result = play("bus");
    EXPECT_EQ(result.answer, "On-device model unavailable (modelNotReady) — enable Apple "
                             "Intelligence to run the agentic query.");
    EXPECT_TRUE(result.retrieved.empty());
    EXPECT_EQ(result.rewrittenQuery, "bus");
    EXPECT_EQ(result.searchMS, 0);
    EXPECT_EQ(platform.model->sessionCount, 0U);
}

TEST_F(AgenticSearch, KeepsWhatWasFoundWhenTheModelFails) {
    addChunks({makeChunk("bus", 1)});
    ModelAnswer failing = searching({"bus", "zebra"}, "");
    failing.error = "The server went away.";
    platform.model->queue.push_back(failing);
    const PlaygroundResult result = play("When?");
    EXPECT_EQ(result.answer, "The on-device model failed to answer: The server went away.");
    EXPECT_EQ(snippets(result), Texts{"bus"});
    EXPECT_EQ(result.rewrittenQuery, "bus | zebra");
}

TEST_F(AgenticSearch, TellsTheModelThatNothingWasFound) {
    addChunks({makeChunk("bus", 1)});
    platform.model->queue.push_back(searching({"zebra", "bus"}, "ok"));
    const AgenticOutcome outcome = query("When?");
    EXPECT_EQ(toolResults(), (Texts{nothingFound, "[1] doc: bus"}));
    EXPECT_EQ(outcome.queries, (Texts{"zebra", "bus"}));
}

TEST_F(AgenticSearch, FindsNothingForACallWithoutAQuery) {
    addChunks({makeChunk("bus", 1)});
    ModelAnswer odd("ok");
    odd.toolCalls = {{"search_knowledge_base", "{}"},
                     {"search_knowledge_base", "{\"query\":[\"bus\"]}"},
                     {"search_knowledge_base", "17"}};
    platform.model->queue.push_back(odd);
    EXPECT_TRUE(query("When?").hits.empty());
    EXPECT_EQ(toolResults(), (Texts{nothingFound, nothingFound, nothingFound}));
}

TEST_F(AgenticSearch, FindsNothingUnderSpotlight) {
    addChunks({makeChunk("bus", 1)});
    settings.index = IndexKind::spotlight;
    platform.model->queue.push_back(searching({"bus"}, "ok"));
    EXPECT_TRUE(query("When?").hits.empty());
    EXPECT_EQ(toolResults(), Texts{nothingFound});
}

TEST_F(AgenticSearch, AsksForTheVectorOfEachQuery) {
    DocumentChunk chunk = makeChunk("bus", 1);
    chunk.embedding = test::bagOfWords("bus");
    addChunks({chunk});
    settings.index = IndexKind::hybrid;
    platform.model->queue.push_back(searching({"bus", "coach"}, "ok"));
    EXPECT_EQ(query("When?").hits.size(), 1U);
    EXPECT_EQ(platform.embedder->texts(), (Texts{"bus", "coach"}));
}

TEST_F(AgenticSearch, DoesNotLookAtTheContextBudget) {
    addChunks({makeChunk("bus", 9000)});
    settings.contextBudget = 0;
    platform.model->queue.push_back(searching({"bus"}, "ok"));
    const PlaygroundResult result = play("When?");
    EXPECT_EQ(toolResults(), Texts{"[1] doc: bus"});
    EXPECT_TRUE(result.retrieved.at(0).inPrompt);
    EXPECT_EQ(result.contextTokens, 9000);
}

TEST_F(AgenticSearch, DoesNotLookAtRerank) {
    addChunks({makeChunk("bus bus road", 1), makeChunk("bus", 1), makeChunk("road bus", 1)});
    const auto texts = [&](bool rerank) {
        settings.rerank = rerank;
        platform.model->queue.push_back(searching({"bus road"}, "ok"));
        return snippets(play("When?"));
    };
    const Texts without = texts(false);
    EXPECT_EQ(without.size(), 3U);
    EXPECT_EQ(texts(true), without);
}

TEST_F(AgenticSearch, BearsAnyTokenCount) {
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    addChunks({makeChunk("bus", largest), makeChunk("bus", largest)});
    platform.model->queue.push_back(searching({"bus"}, "ok"));
    EXPECT_EQ(play("When?").contextTokens, largest);
}

TEST(AskWithTheTool, StoresTheResultAndRecordsTheWholeExchangeAsLatency) {
    test::Workspace workspace;
    {
        auto index = workspace->editCurrentIndex();
        SourceDocument source;
        source.id = Uuid::random();
        index->chunksByDocument[source.id] = std::vector{makeChunk("bus at nine", 3)};
        index->sources.push_back(source);
        index->playgroundQuestion = "When?";
        index->variants[0].settings.index = IndexKind::keyword;
        index->variants[0].settings.transform = QueryTransform::tool;
    }
    ModelAnswer answer = searching({"bus"}, "At nine.");
    answer.takes = std::chrono::milliseconds(1500);
    workspace.platform.model->queue.push_back(answer);
    test::run(*workspace.platform.executor, ask(workspace.state));
    const RAGIndex& index = workspace->currentIndex();
    ASSERT_TRUE(index.playgroundResult);
    EXPECT_EQ(index.playgroundResult->answer, "At nine.");
    EXPECT_EQ(index.playgroundResult->rewrittenQuery, "bus");
    EXPECT_EQ(index.playgroundResult->searchMS, 1500);
    EXPECT_EQ(index.variants[0].recordedLatencies, std::vector<double>{1.5});
    EXPECT_FALSE(index.isAsking);
}

} // namespace
} // namespace ombrel
