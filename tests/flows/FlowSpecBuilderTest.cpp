#include "flows/FlowSpecBuilder.h"
#include "core/JsonDecoder.h"
#include "core/JsonEncoder.h"
#include "tests/flows/FlowSamples.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using test::Drawing;
using Destination = WireFlowDestination;
using E = FlowSpecBuilderError;

Result<WireFlowSpec, E> build(const Drawing& drawing,
                              const std::vector<RAGIndex>& ragIndexes = {}) {
    return FlowSpecBuilder::build(drawing.flow, drawing.agents, drawing.tools, ragIndexes);
}

// The error, or the message of a success.
E errorOf(const Drawing& drawing) {
    const auto built = build(drawing);
    EXPECT_FALSE(built);
    return built ? E{} : built.error();
}

Destination end(std::string caseName, bool carriesOutput) {
    return {Destination::End{std::move(caseName), carriesOutput}};
}

WireAgentSpec agentSpec(const Agent& agent) {
    return {agent.name, agent.instructions, agent.input, agent.output, agent.contextFieldNames, {}};
}

TEST(FlowSpecBuilder, CopiesWhatTheFlowAndItsFirstAgentSay) {
    Drawing drawing;
    drawing.flow.kind = FlowKind::conversational;
    drawing.flow.maxHops = 9;
    drawing.flow.maxHistoryTokens = 400;
    drawing.flow.contextFields = {test::property("history", PropertyKind::String{})};
    const Uuid agent = drawing.agent("Writer");
    drawing.agents[0].instructions = "Write {{context.history}}.";
    drawing.agents[0].input = {test::property("topic", PropertyKind::String{})};
    drawing.agents[0].contextFieldNames = {"history", "nowhere"};
    drawing.agents[0].toolIDs = {Uuid::random()};
    drawing.connect(drawing.start(), agent);
    drawing.connect(agent, drawing.end("done", true));
    const auto spec = build(drawing);
    ASSERT_TRUE(spec);
    EXPECT_EQ(*spec, (WireFlowSpec{"Support",
                                   FlowKind::conversational,
                                   9,
                                   400,
                                   drawing.flow.startInput,
                                   drawing.flow.contextFields,
                                   agentSpec(drawing.agents[0]),
                                   {WireFlowRouting::Single{end("done", true)}}}));
}

TEST(FlowSpecBuilder, NeedsAStart) {
    Drawing drawing;
    drawing.flow.nodes.clear();
    EXPECT_EQ(errorOf(drawing), E{E::NoStartNode{}});
    EXPECT_EQ(errorOf(drawing).message(), "This flow has no Start node.");
}

TEST(FlowSpecBuilder, NeedsAnAgentBehindStart) {
    const std::string message = "Start isn't connected to an agent.";
    Drawing toBranch;
    toBranch.connect(toBranch.start(), toBranch.branch("f"));
    EXPECT_EQ(errorOf(toBranch), E{E::StartNotConnected{}});
    EXPECT_EQ(errorOf(toBranch).message(), message);
    Drawing toTool;
    toTool.connect(toTool.start(), toTool.tool("status"));
    EXPECT_EQ(errorOf(toTool).message(), message);
    Drawing toEnd;
    toEnd.connect(toEnd.start(), toEnd.end());
    EXPECT_EQ(errorOf(toEnd).message(), message);
    EXPECT_EQ(errorOf(Drawing()).message(), message);
    Drawing toNothing;
    toNothing.connect(toNothing.start(), Uuid::random());
    EXPECT_EQ(errorOf(toNothing).message(), message);
    Drawing toDeleted;
    toDeleted.connect(toDeleted.start(), toDeleted.agent("Gone"));
    toDeleted.agents.clear();
    EXPECT_EQ(errorOf(toDeleted).message(), message);
}

TEST(FlowSpecBuilder, FollowsTheFirstConnectionOfStart) {
    Drawing drawing;
    const Uuid first = drawing.agent("First");
    drawing.connect(drawing.start(), first);
    drawing.connect(drawing.start(), drawing.agent("Second"));
    drawing.connect(first, drawing.end());
    EXPECT_EQ(build(drawing)->firstAgent.name, "First");
}

TEST(FlowSpecBuilder, EndsTheFlowInEveryCaseThatIsNotConnected) {
    Drawing drawing;
    drawing.connect(drawing.start(), drawing.agent("Triage", test::enumeration({"b", "a"})));
    const auto spec = build(drawing);
    ASSERT_TRUE(spec);
    EXPECT_EQ(spec->routing, (WireFlowRouting{WireFlowRouting::ByCase{
                                 {{"a", {end("a", false)}}, {"b", {end("b", false)}}}}}));
}

TEST(FlowSpecBuilder, HoldsTheSubtreeOfAConnectedCaseInTheMiddle) {
    Drawing drawing;
    const Uuid writer = drawing.agent("Writer");
    const Uuid triage = drawing.agent("Triage", test::enumeration({"refund", "other"}));
    const Uuid desk = drawing.agent("Desk");
    drawing.connect(drawing.start(), writer);
    drawing.connect(writer, triage);
    drawing.connect(triage, desk, "refund");
    drawing.connect(desk, drawing.end("done", true));
    const Destination inDesk{Destination::Agent{agentSpec(drawing.agents[2]),
                                                {WireFlowRouting::Single{end("done", true)}}}};
    const Destination inTriage{Destination::Agent{
        agentSpec(drawing.agents[1]),
        {WireFlowRouting::ByCase{{{"refund", inDesk}, {"other", end("other", false)}}}}}};
    EXPECT_EQ(build(drawing)->routing, (WireFlowRouting{WireFlowRouting::Single{inTriage}}));
}

TEST(FlowSpecBuilder, DropsAConnectionOnThePortOfARenamedCase) {
    Drawing drawing;
    const Uuid triage = drawing.agent("Triage", test::enumeration({"new"}));
    drawing.connect(drawing.start(), triage);
    drawing.connect(triage, drawing.end("done"), "old");
    drawing.connect(triage, drawing.end("unnamed"));
    EXPECT_EQ(build(drawing)->routing,
              (WireFlowRouting{WireFlowRouting::ByCase{{{"new", end("new", false)}}}}));
}

TEST(FlowSpecBuilder, TakesTheFirstConnectionOfAPort) {
    Drawing drawing;
    const Uuid triage = drawing.agent("Triage", test::enumeration({"a", "a"}));
    drawing.connect(drawing.start(), triage);
    drawing.connect(triage, drawing.end("first", false), "a");
    drawing.connect(triage, drawing.end("second", false), "a");
    EXPECT_EQ(build(drawing)->routing,
              (WireFlowRouting{WireFlowRouting::ByCase{{{"a", end("first", false)}}}}));
}

TEST(FlowSpecBuilder, FollowsOnlyTheFirstConnectionOfATextAgent) {
    Drawing drawing;
    const Uuid writer = drawing.agent("Writer");
    drawing.connect(drawing.start(), writer);
    drawing.connect(writer, drawing.end("first"));
    drawing.connect(writer, drawing.end("second"));
    EXPECT_EQ(build(drawing)->routing,
              (WireFlowRouting{WireFlowRouting::Single{end("first", true)}}));
}

TEST(FlowSpecBuilder, BuildsBranchesAndTools) {
    Drawing drawing;
    const Uuid reader = drawing.agent("Reader", test::object({}));
    const Uuid branch = drawing.branch("amount", WireBranchOperator::greaterThan, "5");
    const Uuid tool = drawing.tool("status", "{\"a\": 1}");
    drawing.connect(drawing.start(), reader);
    drawing.connect(reader, branch);
    drawing.connect(branch, drawing.end("small", false), "false");
    drawing.connect(branch, tool, "true");
    drawing.connect(tool, drawing.end("large", true));
    const Destination inTool{Destination::Tool{{"status", "{\"a\": 1}"}, end("large", true)}};
    const Destination inBranch{Destination::Branch{"amount", WireBranchOperator::greaterThan, "5",
                                                   inTool, end("small", false)}};
    EXPECT_EQ(build(drawing)->routing, (WireFlowRouting{WireFlowRouting::Single{inBranch}}));
}

// Start and an agent whose output goes on to a branch.
struct Branched : Drawing {
    Uuid reader = agent("Reader", test::object({}));
    Uuid choice = branch("x");
    Branched() {
        connect(start(), reader);
        connect(reader, choice);
    }
};

TEST(FlowSpecBuilder, RefusesABranchThatLeadsToADeletedNode) {
    Branched drawing;
    drawing.connect(drawing.choice, Uuid::random(), "true");
    drawing.connect(drawing.choice, drawing.end(), "false");
    EXPECT_EQ(errorOf(drawing), E{E::MissingNode{}});
    EXPECT_EQ(errorOf(drawing).message(), "A connection points at a node that no longer exists.");
}

TEST(FlowSpecBuilder, NeedsBothOutcomesOfABranch) {
    for (const char* port : {"true", "false"}) {
        Branched drawing;
        drawing.connect(drawing.choice, Uuid::random(), port); // looked at later
        EXPECT_EQ(errorOf(drawing), E{E::NodeNotConnected{drawing.choice}});
        EXPECT_EQ(errorOf(drawing).message(), "A node is missing a required connection.");
    }
}

TEST(FlowSpecBuilder, NeedsAConnectionBehindAnAgentAndATool) {
    Drawing drawing;
    const Uuid writer = drawing.agent("Writer");
    drawing.connect(drawing.start(), writer);
    EXPECT_EQ(errorOf(drawing), E{E::NodeNotConnected{writer}});
    const Uuid tool = drawing.tool("status");
    drawing.connect(writer, tool);
    EXPECT_EQ(errorOf(drawing), E{E::NodeNotConnected{tool}});
}

TEST(FlowSpecBuilder, RefusesDeletedAgentsAndTools) {
    Drawing drawing;
    const Uuid writer = drawing.agent("Writer");
    drawing.connect(drawing.start(), writer);
    const Uuid tool = drawing.tool("status");
    drawing.connect(writer, tool);
    drawing.tools.clear();
    EXPECT_EQ(errorOf(drawing), E{E::MissingTool{tool}});
    EXPECT_EQ(errorOf(drawing).message(), "A node references a deleted tool.");
    const Uuid gone = drawing.agent("Gone");
    drawing.agents.pop_back();
    drawing.flow.edges.back().toNodeID = gone;
    EXPECT_EQ(errorOf(drawing), E{E::MissingAgent{gone}});
    EXPECT_EQ(errorOf(drawing).message(), "A node references a deleted agent.");
}

TEST(FlowSpecBuilder, TellsTheErrorThatItMeetsFirstGoingDeep) {
    Branched drawing;
    const Uuid deep = drawing.agent("Deep");
    const Uuid tool = drawing.tool("status");
    drawing.connect(drawing.choice, Uuid::random(), "false");
    drawing.connect(drawing.choice, deep, "true");
    drawing.connect(deep, tool);
    EXPECT_EQ(errorOf(drawing), E{E::NodeNotConnected{tool}});
    drawing.connect(tool, drawing.end());
    EXPECT_EQ(errorOf(drawing), E{E::MissingNode{}});
}

TEST(FlowSpecBuilder, TakesAConnectionBackToStartAsOneToNoNode) {
    Drawing drawing;
    const Uuid triage = drawing.agent("Triage", test::enumeration({"a", "b"}));
    drawing.connect(drawing.start(), triage);
    drawing.connect(triage, drawing.start(), "a");
    EXPECT_EQ(errorOf(drawing), E{E::MissingNode{}});
}

TEST(FlowSpecBuilder, EndsInALoop) {
    Drawing drawing;
    const Uuid first = drawing.agent("First");
    const Uuid second = drawing.agent("Second");
    drawing.connect(drawing.start(), first);
    drawing.connect(first, second);
    drawing.connect(second, first);
    EXPECT_EQ(errorOf(drawing), E{E::MissingNode{}});
    drawing.flow.edges.back().toNodeID = second;
    EXPECT_EQ(errorOf(drawing), E{E::MissingNode{}});
}

TEST(FlowSpecBuilder, BuildsANodeForEveryPathThatReachesIt) {
    Drawing drawing;
    const Uuid triage = drawing.agent("Triage", test::enumeration({"a", "b"}));
    const Uuid done = drawing.end("done", true);
    drawing.connect(drawing.start(), triage);
    drawing.connect(triage, done, "a");
    drawing.connect(triage, done, "b");
    EXPECT_EQ(build(drawing)->routing, (WireFlowRouting{WireFlowRouting::ByCase{
                                           {{"a", end("done", true)}, {"b", end("done", true)}}}}));
}

TEST(FlowSpecBuilder, BuildsManyWaysThatMeetAgainAndAgain) {
    Drawing drawing;
    Uuid last = drawing.agent("Reader", test::object({}));
    drawing.connect(drawing.start(), last);
    for (int i = 0; i < 100; ++i) { // as a tree this would have 2 to the 100 ends
        const Uuid next = drawing.branch("x");
        drawing.connect(last, next, i == 0 ? std::nullopt : FlowEdge{}.fromPort);
        if (i > 0) {
            drawing.flow.edges.back().fromPort = "true";
            drawing.connect(last, next, "false");
        }
        last = next;
    }
    const Uuid done = drawing.end();
    drawing.connect(last, done, "true");
    drawing.connect(last, done, "false");
    EXPECT_TRUE(build(drawing));
}

// A knowledge index of two documents with two chunks each.
struct Knowledge {
    RAGIndex index{Uuid::random(), "Handbook"};
    Drawing drawing;

    Knowledge() {
        index.variants[0].settings.index = IndexKind::vector;
        int number = 0;
        for (const char* name : {"b.md", "a.md", "empty.md"}) {
            SourceDocument document;
            document.id = Uuid::random();
            document.name = name;
            index.sources.push_back(document);
            if (document.name == "empty.md") {
                continue; // has no entry
            }
            std::vector<DocumentChunk> chunks;
            for (int i = 0; i < 2; ++i) {
                DocumentChunk chunk;
                chunk.id = Uuid::random();
                chunk.breadcrumb = {"Part", std::to_string(++number)};
                chunk.text = "text " + std::to_string(number);
                chunk.embedding = {1.0, number * 0.5};
                chunks.push_back(chunk);
            }
            index.chunksByDocument.emplace(document.id, std::move(chunks));
        }
        const Uuid writer = drawing.agent("Writer");
        drawing.connect(drawing.start(), writer);
        drawing.connect(writer, drawing.end());
        attach(index.id);
    }
    void attach(Uuid indexID) {
        drawing.agents[0].ragAttachments.push_back({Uuid::random(), indexID, 3, 0.25});
    }
    // The k-th chunk in document order.
    DocumentChunk& chunk(std::size_t k) {
        return index.chunksByDocument.at(index.sources[k / 2].id).edit()[k % 2];
    }
    std::vector<WireRAGAttachment> attachments() {
        return build(drawing, {index})->firstAgent.ragAttachments;
    }
};

TEST(FlowSpecBuilder, CarriesAllChunksInDocumentOrder) {
    Knowledge knowledge;
    const auto attachments = knowledge.attachments();
    ASSERT_EQ(attachments.size(), 1u);
    EXPECT_EQ(attachments[0].indexKind, WireRAGIndexKind::vector);
    EXPECT_EQ(attachments[0].topK, 3);
    EXPECT_EQ(attachments[0].threshold, 0.25);
    ASSERT_EQ(attachments[0].chunks.size(), 4u);
    for (std::size_t k = 0; k < 4; ++k) {
        const WireRAGChunk& chunk = attachments[0].chunks[k];
        const std::string number = std::to_string(k + 1);
        EXPECT_EQ(chunk.id, knowledge.chunk(k).id);
        EXPECT_EQ(chunk.breadcrumb.text(), "Part > " + number);
        EXPECT_EQ(chunk.searchableText.text(), "text " + number);
        EXPECT_EQ(chunk.packableText.text(), "text " + number);
        EXPECT_EQ(chunk.embedding->values(), *knowledge.chunk(k).embedding);
    }
}

TEST(FlowSpecBuilder, SearchesEnrichedTextAndPacksTheParents) {
    Knowledge knowledge;
    knowledge.chunk(0).contextualNote = "note";
    knowledge.chunk(0).generatedQuestions = {"one?", "two?"};
    knowledge.chunk(0).parentText = "parent";
    knowledge.chunk(1).generatedQuestions.emplace();
    knowledge.chunk(2).generatedQuestions = {"three?"};
    const auto chunks = knowledge.attachments()[0].chunks;
    EXPECT_EQ(chunks[0].searchableText.text(), "text 1\nnote\none?\ntwo?");
    EXPECT_EQ(chunks[0].packableText.text(), "parent");
    EXPECT_EQ(chunks[1].searchableText.text(), "text 2");
    EXPECT_EQ(chunks[2].searchableText.text(), "text 3\nthree?");
    EXPECT_EQ(chunks[2].packableText.text(), "text 3");
}

TEST(FlowSpecBuilder, SearchesByKeywordWhenAChunkLacksItsEmbeddingAndStillSendsTheOthers) {
    for (const IndexKind kind : {IndexKind::vector, IndexKind::hybrid}) {
        Knowledge knowledge;
        knowledge.index.variants[0].settings.index = kind;
        knowledge.chunk(2).embedding.reset();
        const auto attachment = knowledge.attachments()[0];
        EXPECT_EQ(attachment.indexKind, WireRAGIndexKind::keyword);
        EXPECT_TRUE(attachment.chunks[0].embedding);
        EXPECT_FALSE(attachment.chunks[2].embedding);
    }
}

TEST(FlowSpecBuilder, NeverPutsSpotlightOnTheWire) {
    for (const auto& [kind, wireKind] : std::vector<std::pair<IndexKind, WireRAGIndexKind>>{
             {IndexKind::spotlight, WireRAGIndexKind::keyword},
             {IndexKind::keyword, WireRAGIndexKind::keyword},
             {IndexKind::vector, WireRAGIndexKind::vector},
             {IndexKind::hybrid, WireRAGIndexKind::hybrid}}) {
        Knowledge knowledge;
        knowledge.index.variants[0].settings.index = kind;
        EXPECT_EQ(knowledge.attachments()[0].indexKind, wireKind);
        knowledge.index.chunksByDocument.clear();
        EXPECT_EQ(knowledge.attachments()[0].indexKind, WireRAGIndexKind::keyword);
    }
}

TEST(FlowSpecBuilder, DropsTheAttachmentOfADeletedIndexSilently) {
    Knowledge knowledge;
    knowledge.drawing.agents[0].ragAttachments.clear();
    knowledge.attach(Uuid::random());
    EXPECT_TRUE(knowledge.attachments().empty());
}

TEST(FlowSpecBuilder, CarriesAnIndexThatIsAttachedTwiceTwice) {
    Knowledge knowledge;
    knowledge.attach(knowledge.index.id);
    const auto attachments = knowledge.attachments();
    ASSERT_EQ(attachments.size(), 2u);
    EXPECT_EQ(attachments[0].chunks, attachments[1].chunks);
    EXPECT_EQ(attachments[0].chunks.size(), 4u);
}

TEST(FlowSpecBuilder, SharesTextsAndVectorsWithTheProjectAndKeepsThem) {
    std::optional<WireRAGAttachment> attachment;
    {
        Knowledge knowledge;
        attachment = knowledge.attachments()[0];
        const auto& stored =
            std::as_const(knowledge.index).chunksByDocument.at(knowledge.index.sources[0].id)[0];
        EXPECT_EQ(&attachment->chunks[0].packableText.text(), &stored.text);
        EXPECT_EQ(&attachment->chunks[0].searchableText.text(), &stored.text);
        EXPECT_EQ(&attachment->chunks[0].embedding->values(), &*stored.embedding);
        knowledge.chunk(0).text = "edited";
    }
    EXPECT_EQ(attachment->chunks[0].packableText.text(), "text 1");
    EXPECT_EQ(attachment->chunks[0].embedding->values(), (std::vector{1.0, 0.5}));
}

TEST(FlowSpecBuilder, BuildsWritesReadsAndDropsALongRowWithoutADeepStack) {
    Drawing drawing;
    Uuid last = drawing.agent("Writer");
    drawing.connect(drawing.start(), last);
    for (int i = 0; i < 50'000; ++i) {
        const Uuid next =
            i % 2 == 0 ? drawing.tool("t") : drawing.node(drawing.flow.nodes[1].kind.value);
        drawing.connect(last, next);
        last = next;
    }
    drawing.connect(last, drawing.end("done", true));
    auto spec = build(drawing);
    ASSERT_TRUE(spec);
    const std::string json = encodeJson(*spec);
    const auto read = decodeJson<WireFlowSpec>(json);
    ASSERT_TRUE(read) << read.error().message.substr(0, 200);
    EXPECT_EQ(*read, *spec);
    const WireFlowSpec copy = *read;
    EXPECT_EQ(copy, *read);
    EXPECT_EQ(encodeJson(copy), json);
}

} // namespace
} // namespace ombrel
