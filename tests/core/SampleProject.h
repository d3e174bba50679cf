#pragma once

#include "core/PersistedProject.h"

namespace ombrel::test {

inline Uuid sampleID(std::uint8_t number) {
    Uuid id;
    id.bytes = {0xE6, 0x21, 0xE1, 0xF8, 0xC3, 0x6C, 0x49, 0x5A,
                0x93, 0xFC, 0x0C, 0x24, 0x7A, 0x3E, 0x6E, number};
    return id;
}

inline AgentProperty sampleProperty(std::uint8_t number, std::string name, PropertyKind kind) {
    AgentProperty property;
    property.id = sampleID(number);
    property.name = std::move(name);
    property.kind = std::move(kind);
    return property;
}

// A project that has every record, every case of every enumeration with payload, every optional
// both present and absent, and strings beyond ASCII.
inline PersistedProject sampleProject() {
    PersistedProject project;
    project.project.name = "Handbuch für Ärzte 🩺";
    project.project.lastBuiltDescription = "Build Succeeded";
    project.project.lastBuildFinishedAt = Date{785408400.25};
    BuildSettings built;
    built.chunking = ChunkingStrategy::fixed;
    built.enrichments = {Enrichment::parentChild, Enrichment::generatedQuestions};
    built.index = IndexKind::spotlight;
    built.transform = QueryTransform::tool;
    built.rerank = true;
    built.overlapPercent = 12.5;
    project.project.lastBuiltSettings = built;

    DocumentChunk full;
    full.id = sampleID(1);
    full.index = 1;
    full.breadcrumb = {"Handbuch", "Übersicht"};
    full.tokenCount = 4;
    full.contextualNote = "";
    full.text = "first\nsecond line, longer than fifteen bytes";
    full.generatedQuestions = {"What?", "Why “this”?"};
    full.parentText = std::string(70'000, 'p') + "é";
    full.embedding = {0.1, -2.5, 0, 1e-310, 123456789.0};
    DocumentChunk bare;
    bare.id = sampleID(2);
    bare.index = 2;
    bare.text = "";

    PersistedSourceDocument file;
    file.id = sampleID(10);
    file.name = "handbuch.pdf";
    file.type = SourceType::pdf;
    file.pageCount = 300;
    file.chunkCount = 2;
    file.tokenCount = 70'000;
    file.status = {SourceStatus::Oversized{2}};
    file.bookmarkData = Data{std::string("/home/\xFF\0x", 9)};
    PersistedSourceDocument pasted;
    pasted.id = sampleID(11);
    pasted.name = "notes";
    pasted.status = {SourceStatus::EmptyPage{-1}};
    pasted.pastedText = SharedText("pasted");

    PersistedRAGIndex index;
    index.id = sampleID(20);
    index.name = "Default";
    index.sources = {file, pasted};
    index.chunksByDocument[file.id] = ChunkArray({full, bare});
    index.chunksByDocument[pasted.id] = ChunkArray();
    Variant variant;
    variant.id = sampleID(30);
    variant.name = "Default";
    variant.recallAt5 = 0.75;
    variant.recordedLatencies = {1.5, 2, 70000};
    Variant other;
    other.id = sampleID(31);
    other.name = "Other";
    other.mrr = 1.0 / 3;
    index.variants = {variant, other};
    index.selectedVariantID = variant.id;
    index.selectedSourceID = pasted.id;
    TestQuestion question;
    question.id = sampleID(40);
    question.question = "Where?";
    question.expectedBreadcrumb = {"Handbuch"};
    question.lastGotBreadcrumb = std::vector<std::string>{};
    question.lastRank = 5'000'000'000;
    question.status = QuestionStatus::failing;
    question.isDrafted = true;
    TestQuestion fresh;
    fresh.id = sampleID(41);
    index.testQuestions = {question, fresh};
    index.playgroundQuestion = "Who?";
    PersistedRAGIndex empty;
    empty.id = sampleID(21);
    empty.variants = {other};
    empty.selectedVariantID = other.id;
    project.ragIndexes = {index, empty};
    project.selectedRAGIndexID = index.id;

    const PropertyKind integer{PropertyKind::Int{}};
    const PropertyKind cases{PropertyKind::Enumeration{
        {{sampleID(50), "yes", "agrees"}, {sampleID(51), "no", std::nullopt}}}};
    const PropertyKind nested{PropertyKind::Array{PropertyKind{PropertyKind::Array{cases}}}};
    AgentProperty described = sampleProperty(60, "a", nested);
    described.description = "some “guide”";
    described.isOptional = true;
    Agent agent;
    agent.id = sampleID(70);
    agent.name = "Triage";
    agent.summary = "Sorts";
    agent.instructions = "Sort {{context.kind}}";
    agent.input = {
        described,
        sampleProperty(61, "b", {PropertyKind::Object{{sampleProperty(62, "c", integer)}}}),
        sampleProperty(63, "d", {PropertyKind::Double{}}),
        sampleProperty(64, "e", {PropertyKind::Bool{}}),
        sampleProperty(65, "f", {PropertyKind::String{}})};
    agent.output = {AgentOutputKind::Enumeration{{{sampleID(52), "billing", std::nullopt}}}};
    agent.toolIDs = {sampleID(90)};
    agent.contextFieldNames = {"kind", "language"};
    agent.ragAttachments = {{sampleID(80), index.id, 7, 0.25}};
    AgentEvaluationCase evaluation;
    evaluation.id = sampleID(81);
    evaluation.input = "in";
    evaluation.expectedEnumCase = "billing";
    evaluation.expectedObjectFields = {{"", "empty key"}, {"a.b", "1"}, {"c", ""}};
    evaluation.lastOutput = "out";
    evaluation.lastPassed = false;
    AgentEvaluationCase unjudged;
    unjudged.id = sampleID(82);
    agent.evaluationCases = {evaluation, unjudged};
    Agent plain;
    plain.id = sampleID(71);
    plain.name = "Plain";
    project.agents = {agent, plain};

    ToolDefinition tool;
    tool.id = sampleID(90);
    tool.name = "lookUp";
    tool.description = "Looks";
    tool.arguments = {sampleProperty(66, "key", {PropertyKind::String{}})};
    tool.output = {AgentOutputKind::Object{{sampleProperty(67, "value", integer)}}};
    tool.mockResponseJSON = "{}";
    project.tools = {tool};

    Flow flow;
    flow.id = sampleID(100);
    flow.name = "Flow";
    flow.kind = FlowKind::conversational;
    flow.startInput = {sampleProperty(68, "request", {PropertyKind::String{}})};
    flow.nodes = {{sampleID(101), {FlowNodeKind::Start{}}, {80, 160}},
                  {sampleID(102), {FlowNodeKind::Agent{agent.id}}, {-1.5, 1e300}},
                  {sampleID(103),
                   {FlowNodeKind::Branch{"kind", WireBranchOperator::greaterThan, "3"}},
                   {0, 0}},
                  {sampleID(104), {FlowNodeKind::Tool{tool.id}}, {1, 2}},
                  {sampleID(105), {FlowNodeKind::End{"result", true}}, {3, 4}}};
    flow.edges = {{sampleID(110), sampleID(101), std::nullopt, sampleID(102)},
                  {sampleID(111), sampleID(102), "billing", sampleID(199)}};
    project.flows = {flow, Flow{}};
    project.selectedNavigatorItem = {NavigatorSelection::Flow{flow.id}};
    return project;
}

} // namespace ombrel::test
