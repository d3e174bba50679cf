#include "agents/AgentContext.h"

#include "tests/agents/Knowledge.h"
#include "tests/support/TestPlatform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {
namespace {

using namespace test;
using Contexts = std::vector<AgentRetrievedContext>;

class RetrieveAgentContext : public testing::Test {
  protected:
    Contexts retrieve(const Agent& agent, const std::string& input) {
        return run(*m_test.executor,
                   retrieveAgentContext(m_test.platform, agent, m_indexes, input));
    }
    // The first index.
    RAGIndex& index() { return m_indexes.front(); }

    TestPlatform m_test = makeTestPlatform();
    std::vector<RAGIndex> m_indexes = {
        knowledge("Manual", {"the pump hums", "the pump pump leaks", "nothing of the kind"})};
    Agent m_agent = agentWith({m_indexes.front().id});
};

std::vector<std::string> textsOf(const AgentRetrievedContext& entry) {
    std::vector<std::string> texts;
    for (const RetrievedContextChunk& chunk : entry.chunks) {
        texts.push_back(chunk.text);
    }
    return texts;
}

TEST_F(RetrieveAgentContext, YieldsNothingWithoutAttachments) {
    m_agent.ragAttachments.clear();
    EXPECT_TRUE(retrieve(m_agent, "pump").empty());
}

TEST_F(RetrieveAgentContext, YieldsNothingForABlankInput) {
    EXPECT_TRUE(retrieve(m_agent, "").empty());
    EXPECT_TRUE(retrieve(m_agent, " \t\n\u2003").empty());
}

TEST_F(RetrieveAgentContext, GivesTheHitsInSearchOrderWithTheNameOfTheIndex) {
    const Contexts found = retrieve(m_agent, "pump");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].ragIndexName, "Manual");
    EXPECT_EQ(textsOf(found[0]),
              (std::vector<std::string>{"the pump pump leaks", "the pump hums"}));
    EXPECT_EQ(found[0].chunks[0].score, 1);
    EXPECT_LT(found[0].chunks[1].score, 1);
    EXPECT_EQ(found[0].chunks[0].breadcrumb, "Manual > Part 2");
    EXPECT_NE(found[0].chunks[0].id, found[0].chunks[1].id);
    EXPECT_NE(retrieve(m_agent, "pump")[0].id, found[0].id);
}

TEST_F(RetrieveAgentContext, PrefersTheTextOfTheParent) {
    editChunks(index(), [](DocumentChunk& chunk) { chunk.parentText = "all of " + chunk.text; });
    EXPECT_EQ(textsOf(retrieve(m_agent, "hums")[0]),
              std::vector<std::string>{"all of the pump hums"});
}

TEST_F(RetrieveAgentContext, KeepsAHitThatScoresExactlyTheThreshold) {
    const double second = retrieve(m_agent, "pump")[0].chunks[1].score;
    m_agent.ragAttachments[0].threshold = second;
    EXPECT_EQ(retrieve(m_agent, "pump")[0].chunks.size(), 2U);
    m_agent.ragAttachments[0].threshold = std::nextafter(second, 2);
    EXPECT_EQ(retrieve(m_agent, "pump")[0].chunks.size(), 1U);
    m_agent.ragAttachments[0].threshold = 1.5;
    const Contexts none = retrieve(m_agent, "pump");
    ASSERT_EQ(none.size(), 1U);
    EXPECT_TRUE(none[0].chunks.empty());
}

TEST_F(RetrieveAgentContext, KeepsEveryHitAtThresholdZero) {
    m_agent.ragAttachments[0].threshold = 0;
    EXPECT_EQ(retrieve(m_agent, "the").at(0).chunks.size(), 3U);
}

TEST_F(RetrieveAgentContext, SearchesForAtLeastOne) {
    for (const std::int64_t topK : {std::int64_t{0}, std::int64_t{-4}, std::int64_t{1}}) {
        m_agent.ragAttachments[0].topK = topK;
        EXPECT_EQ(textsOf(retrieve(m_agent, "pump")[0]),
                  std::vector<std::string>{"the pump pump leaks"});
    }
}

TEST_F(RetrieveAgentContext, SkipsAnAttachmentWhoseIndexIsGone) {
    m_agent = agentWith({Uuid::random(), index().id});
    const Contexts found = retrieve(m_agent, "pump");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].ragIndexName, "Manual");
}

TEST_F(RetrieveAgentContext, HasAnEmptyEntryForAnIndexWithoutChunks) {
    m_indexes.push_back(knowledge("Empty", {}));
    m_indexes.back().sources.emplace_back().id = Uuid::random(); // nothing was read from it
    m_agent = agentWith({m_indexes[1].id, m_indexes[0].id});
    const Contexts found = retrieve(m_agent, "pump");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].ragIndexName, "Empty");
    EXPECT_TRUE(found[0].chunks.empty());
    EXPECT_EQ(found[1].chunks.size(), 2U);
}

TEST_F(RetrieveAgentContext, SearchesByVectorWhereEveryChunkHasAnEmbedding) {
    setIndexKind(index(), IndexKind::vector);
    editChunks(index(), [](DocumentChunk& chunk) { chunk.embedding = bagOfWords(chunk.text); });
    const Contexts found = retrieve(m_agent, "hums");
    EXPECT_EQ(textsOf(found[0])[0], "the pump hums");
    EXPECT_EQ(m_test.embedder->texts(), std::vector<std::string>{"hums"});
}

TEST_F(RetrieveAgentContext, WaitsForTheVectorOfTheInput) {
    setIndexKind(index(), IndexKind::hybrid);
    editChunks(index(), [](DocumentChunk& chunk) { chunk.embedding = bagOfWords(chunk.text); });
    m_test.embedder->gate.close();
    const auto found =
        start(*m_test.executor, retrieveAgentContext(m_test.platform, m_agent, m_indexes, "hums"));
    EXPECT_FALSE(*found);
    m_indexes.clear(); // What the run began with stays.
    m_test.embedder->gate.open();
    m_test.executor->runAll();
    ASSERT_TRUE(*found);
    EXPECT_EQ(textsOf((**found)[0])[0], "the pump hums");
}

TEST_F(RetrieveAgentContext, SearchesAVectorIndexByKeywordWhereAChunkHasNoEmbedding) {
    setIndexKind(index(), IndexKind::vector);
    editChunks(index(), [](DocumentChunk& chunk) {
        chunk.embedding = chunk.index == 1 ? std::nullopt : bagOfWords(chunk.text);
    });
    EXPECT_EQ(textsOf(retrieve(m_agent, "hums")[0]), std::vector<std::string>{"the pump hums"});
    EXPECT_TRUE(m_test.embedder->calls.empty());
}

TEST_F(RetrieveAgentContext, SearchesSpotlightByKeyword) {
    setIndexKind(index(), IndexKind::spotlight);
    EXPECT_EQ(textsOf(retrieve(m_agent, "hums")[0]), std::vector<std::string>{"the pump hums"});
}

RetrievedContextChunk piece(std::string breadcrumb, std::string text) {
    return {Uuid::random(), std::move(breadcrumb), std::move(text), 1};
}

TEST(InstructionsWithContext, AreUnchangedWithoutChunks) {
    EXPECT_EQ(instructionsWithContext("Be kind.", {}), "Be kind.");
    EXPECT_EQ(instructionsWithContext("Be kind.", {{Uuid::random(), "Empty", {}}}), "Be kind.");
}

TEST(InstructionsWithContext, NumberOnFromOneAttachmentToTheNext) {
    const Contexts retrieved = {
        {Uuid::random(), "A", {piece("Pumps > Noise", "It hums."), piece("", "It leaks.")}},
        {Uuid::random(), "Empty", {}},
        {Uuid::random(), "B", {piece("Valves", "It is\nshut.")}}};
    EXPECT_EQ(instructionsWithContext("Be kind.", retrieved),
              "Be kind.\n\nContext:\n[1] Pumps > Noise: It hums.\n\n[2] : It leaks.\n\n"
              "[3] Valves: It is\nshut.");
}

} // namespace
} // namespace ombrel
