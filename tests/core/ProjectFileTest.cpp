#include "core/ProjectFile.h"

#include "core/AppState.h"
#include "core/JsonEncoder.h"
#include "tests/core/SampleProject.h"
#include "tests/core/Workspace.h"
#include "tests/support/PropertyListOfJson.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

const std::string damaged = "The file isn't a project file or is damaged. ";
const std::string projectKey = R"("project":{"name":"Old","lastBuiltDescription":"Not built yet"})";
const std::string sourceID = "E621E1F8-C36C-495A-93FC-0C247A3E6E0A";
const std::string variantID = "E621E1F8-C36C-495A-93FC-0C247A3E6E1E";

// A file that is written down as JSON; read in both forms, which must agree.
Result<ReadProject> readText(const std::string& json) {
    auto read = readSnapshot(test::propertyListOfJson(json));
    const auto fromJson = readSnapshotJson(json);
    EXPECT_EQ(read.has_value(), fromJson.has_value()) << json;
    return read;
}

std::string problemOf(const std::string& json) {
    const auto read = readText(json);
    return read ? "" : read.error().message;
}

std::string legacyVariant() {
    Variant variant;
    variant.id = *Uuid::parse(variantID);
    variant.name = "Careful";
    variant.recordedLatencies = {1.5};
    return encodeJson(variant);
}

std::string legacySource() {
    PersistedSourceDocument source;
    source.id = *Uuid::parse(sourceID);
    source.name = "old.md";
    source.type = SourceType::markdown;
    return encodeJson(source);
}

std::string legacyChunk() {
    DocumentChunk chunk;
    chunk.id = test::sampleID(1);
    chunk.index = 1;
    chunk.text = "kept";
    chunk.embedding = {0.5};
    return encodeJson(chunk);
}

TEST(ProjectFile, ReadsBackEveryRecordAsItWasWritten) {
    const PersistedProject project = test::sampleProject();
    const auto bytes = writeFile(project);
    ASSERT_TRUE(bytes) << bytes.error().message;
    EXPECT_EQ(bytes->substr(0, 8), "bplist00");
    const auto read = readSnapshot(*bytes);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->snapshot, project);
    EXPECT_FALSE(read->leftBehind.any());
}

TEST(ProjectFile, ReadsBackTheJsonOfASnapshot) {
    const PersistedProject project = test::sampleProject();
    for (const auto layout : {JsonLayout::compact, JsonLayout::indented}) {
        const auto read = readSnapshotJson(encodeJson(project, layout));
        ASSERT_TRUE(read) << read.error().message;
        EXPECT_EQ(read->snapshot, project);
        EXPECT_FALSE(read->leftBehind.any());
    }
}

TEST(ProjectFile, WritesItsKeysInOrder) {
    const std::string json = encodeJson(PersistedProject());
    std::size_t last = 0;
    for (const char* key : {"formatVersion", "project", "ragIndexes", "selectedRAGIndexID",
                            "agents", "tools", "selectedNavigatorItem", "flows"}) {
        const std::size_t at = json.find("\"" + std::string(key) + "\"", last);
        ASSERT_NE(at, std::string::npos) << key;
        last = at;
    }
}

TEST(ProjectFile, MigratesAVersionOneFileToOneIndex) {
    const auto read = readText(
        "{" + projectKey + R"(,"sources":[)" + legacySource() + R"(],"chunksByDocument":[")" +
        sourceID + "\",[" + legacyChunk() + R"(]],"variants":[)" + legacyVariant() +
        R"(],"selectedVariantID":")" + variantID + R"(","selectedSourceID":")" + sourceID +
        R"(","testQuestions":[],"playgroundQuestion":"Why?"})");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_FALSE(read->leftBehind.any());
    const PersistedProject& project = read->snapshot;
    EXPECT_EQ(project.formatVersion, 1);
    ASSERT_EQ(project.ragIndexes.size(), 1U);
    const PersistedRAGIndex& index = project.ragIndexes[0];
    EXPECT_EQ(index.name, "Old");
    EXPECT_EQ(project.selectedRAGIndexID, index.id);
    EXPECT_NE(index.id, Uuid());
    EXPECT_EQ(project.selectedNavigatorItem, NavigatorSelection{NavigatorSelection::Rag{index.id}});
    ASSERT_EQ(index.sources.size(), 1U);
    EXPECT_EQ(index.sources[0].name, "old.md");
    EXPECT_EQ(index.chunksByDocument.at(*Uuid::parse(sourceID))[0].text, "kept");
    ASSERT_EQ(index.variants.size(), 1U);
    EXPECT_EQ(index.variants[0].name, "Careful");
    EXPECT_EQ(index.selectedVariantID.text(), variantID);
    EXPECT_EQ(index.selectedSourceID->text(), sourceID);
    EXPECT_EQ(index.playgroundQuestion, "Why?");

    // What is saved of it is version 2, without the keys at the root.
    const test::Workspace workspace;
    workspace->applySnapshot(project);
    const std::string json = encodeJson(workspace->makeSnapshot());
    EXPECT_TRUE(json.starts_with(R"({"formatVersion":2,"project":)"));
    const auto again = readSnapshot(*writeFile(workspace->makeSnapshot()));
    ASSERT_TRUE(again);
    EXPECT_EQ(again->snapshot.ragIndexes, project.ragIndexes);
    EXPECT_FALSE(again->leftBehind.any());
    const std::size_t root = json.find("\"selectedRAGIndexID\"");
    for (const char* key : {"\"sources\"", "\"chunksByDocument\"", "\"variants\""}) {
        EXPECT_LT(json.rfind(key), root) << key; // inside the index only
    }
}

TEST(ProjectFile, FillsInWhatAVersionOneFileLacks) {
    const auto read = readText("{" + projectKey + "}");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_FALSE(read->leftBehind.any());
    const PersistedProject& project = read->snapshot;
    EXPECT_EQ(project.formatVersion, 1);
    EXPECT_TRUE(project.agents.empty() && project.tools.empty() && project.flows.empty());
    ASSERT_EQ(project.ragIndexes.size(), 1U);
    const PersistedRAGIndex& index = project.ragIndexes[0];
    ASSERT_EQ(index.variants.size(), 1U);
    EXPECT_EQ(index.variants[0].name, "Default");
    EXPECT_EQ(index.variants[0].settings, BuildSettings());
    EXPECT_NE(index.variants[0].id, Uuid());
    EXPECT_EQ(index.selectedVariantID, index.variants[0].id);
    EXPECT_EQ(index.selectedSourceID, std::nullopt);
    EXPECT_TRUE(index.sources.empty() && index.chunksByDocument.empty());
    EXPECT_TRUE(index.testQuestions.empty() && index.playgroundQuestion.empty());
}

TEST(ProjectFile, CallsTheIndexOfANamelessProjectDefault) {
    const auto read = readText(R"({"project":{"name":"","lastBuiltDescription":""}})");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->snapshot.ragIndexes[0].name, "Default");
}

TEST(ProjectFile, SelectsTheFirstOldVariantWhenNoneIsNamed) {
    const auto read = readText("{" + projectKey + R"(,"variants":[)" + legacyVariant() + "]}");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->snapshot.ragIndexes[0].selectedVariantID.text(), variantID);
}

TEST(ProjectFile, RefusesAnOldFileWithAnEmptyListOfVariants) {
    EXPECT_EQ(problemOf("{" + projectKey + R"(,"variants":[]})"),
              damaged + "variants: expected at least one variant.");
}

TEST(ProjectFile, RefusesDamagedKeysOfVersionOne) {
    EXPECT_EQ(problemOf("{" + projectKey + R"(,"sources":5})"),
              damaged + "sources: expected an array, found an integer.");
    EXPECT_EQ(problemOf("{" + projectKey + R"(,"playgroundQuestion":[]})"),
              damaged + "playgroundQuestion: expected a string, found an array.");
}

TEST(ProjectFile, OpensAFileOfANewerVersion) {
    PersistedProject project = test::sampleProject();
    project.formatVersion = 7;
    std::string json = encodeJson(project);
    json.insert(json.size() - 1, R"(,"notebooks":[{"id":1}])");
    const auto read = readText(R"({"formatVersion":7,)" + projectKey + R"(,"notebooks":[1,{}]})");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->snapshot.formatVersion, 7);
    EXPECT_EQ(read->leftBehind.unknownKeys.paths, std::vector<std::string>{"notebooks"});
    EXPECT_TRUE(read->leftBehind.any());
    EXPECT_EQ(read->leftBehind.description(),
              "The file holds what this version doesn't know: notebooks.");
    const auto whole = readSnapshotJson(json);
    ASSERT_TRUE(whole) << whole.error().message;
    EXPECT_EQ(whole->snapshot, project);
}

TEST(ProjectFile, RefusesAVersionThatIsNoNumber) {
    EXPECT_EQ(problemOf(R"({"formatVersion":"2",)" + projectKey + "}"),
              damaged + "formatVersion: expected an integer, found a string.");
}

TEST(ProjectFile, SwallowsIndexesThatCannotBeReadAndSaysSo) {
    const PersistedProject project = test::sampleProject();
    const PersistedRAGIndex& good = project.ragIndexes[1];
    const auto read =
        readText("{\"formatVersion\":2," + projectKey + ",\"ragIndexes\":[" + encodeJson(good) +
                 ",{\"id\":5}],\"selectedRAGIndexID\":\"" + good.id.text() + "\"," +
                 "\"flows\":" + encodeJson(project.flows) + "}");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->leftBehind.ragIndexes, "ragIndexes[1].id: expected a string, found an integer");
    EXPECT_EQ(read->leftBehind.unknownKeys.count, 0U);
    EXPECT_EQ(read->leftBehind.description(),
              "The RAG indexes couldn't be read (ragIndexes[1].id: expected a string, found an "
              "integer).");
    ASSERT_EQ(read->snapshot.ragIndexes.size(), 1U);
    EXPECT_EQ(read->snapshot.ragIndexes[0].name, "Old");
    EXPECT_TRUE(read->snapshot.ragIndexes[0].sources.empty());
    EXPECT_EQ(read->snapshot.selectedRAGIndexID, read->snapshot.ragIndexes[0].id);
    EXPECT_EQ(read->snapshot.flows, project.flows);
}

TEST(ProjectFile, SaysWhenAVariantLacksItsLatencies) {
    std::string json = encodeJson(test::sampleProject());
    const std::size_t at = json.find("\"recordedLatencies\"");
    json.replace(at, 2, "\"_");
    const auto read = readSnapshotJson(json);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->leftBehind.ragIndexes,
              "ragIndexes[0].variants[0].recordedLatencies: the key is missing");
    // At the root of an old file it fails the reading, while a missing recall does not.
    std::string variant = legacyVariant();
    EXPECT_EQ(variant.find("recallAt5"), std::string::npos);
    EXPECT_EQ(problemOf("{" + projectKey + ",\"variants\":[" + variant + "]}"), "");
    variant.replace(variant.find("\"recordedLatencies\""), 2, "\"_");
    EXPECT_EQ(problemOf("{" + projectKey + ",\"variants\":[" + variant + "]}"),
              damaged + "variants[0].recordedLatencies: the key is missing.");
}

// A file of one index and nothing else, without its closing brace.
std::string oneIndex() {
    return "{\"formatVersion\":2," + projectKey + ",\"ragIndexes\":[" +
           encodeJson(test::sampleProject().ragIndexes[1]) + "]";
}

TEST(ProjectFile, NamesTheKeysOfVersionOneThatItLeavesBehind) {
    const auto read = readText(oneIndex() + R"(,"playgroundQuestion":"from the root"})");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->snapshot.ragIndexes[0].playgroundQuestion, "");
    EXPECT_EQ(read->leftBehind.unknownKeys.paths, std::vector<std::string>{"playgroundQuestion"});
}

TEST(ProjectFile, FallsBackToTheFirstIndexForASelectionThatCannotBeRead) {
    const Uuid first = test::sampleProject().ragIndexes[1].id;
    for (const char* selection : {"", ",\"selectedRAGIndexID\":5",
                                  ",\"selectedRAGIndexID\":\"x\",\"selectedNavigatorItem\":{}"}) {
        const auto read = readText(oneIndex() + selection + "}");
        ASSERT_TRUE(read) << read.error().message;
        EXPECT_EQ(read->snapshot.selectedRAGIndexID, first);
        EXPECT_EQ(read->snapshot.selectedNavigatorItem,
                  NavigatorSelection{NavigatorSelection::Rag{first}});
        EXPECT_FALSE(read->leftBehind.any());
    }
}

TEST(ProjectFile, KeepsSelectionsOfThingsThatAreGone) {
    PersistedProject project = test::sampleProject();
    project.selectedRAGIndexID = test::sampleID(200);
    project.selectedNavigatorItem = {NavigatorSelection::Flow{test::sampleID(201)}};
    const auto read = readSnapshot(*writeFile(project));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->snapshot, project);
    // The workspace then selects the first index, and leaves the flow alone.
    const test::Workspace workspace;
    workspace->applySnapshot(read->snapshot);
    EXPECT_EQ(*workspace->selectedRAGIndexID, project.ragIndexes[0].id);
    EXPECT_EQ(workspace->selectedNavigatorItem(), project.selectedNavigatorItem);
}

TEST(ProjectFile, LosesTheTransientFieldsAndKeepsTheQuestion) {
    const test::Workspace workspace;
    {
        auto index = workspace->editCurrentIndex();
        index->playgroundQuestion = "Why?";
        index->importError = "Could not read it";
        index->playgroundResult.emplace();
        index->isEnriching = true;
        index->enrichProgress = Progress{1, 2};
    }
    const auto read = readSnapshot(*writeFile(workspace->makeSnapshot()));
    ASSERT_TRUE(read);
    const test::Workspace other;
    other->applySnapshot(read->snapshot);
    const RAGIndex& index = other->currentIndex();
    EXPECT_EQ(index.playgroundQuestion, "Why?");
    EXPECT_EQ(index.importError, std::nullopt);
    EXPECT_EQ(index.playgroundResult, std::nullopt);
    EXPECT_FALSE(index.isEnriching);
    EXPECT_EQ(index.enrichProgress, std::nullopt);
}

TEST(ProjectFile, RefusesAFileWithoutAProject) {
    EXPECT_EQ(problemOf("{}"), damaged + "project: the key is missing.");
    EXPECT_EQ(problemOf(R"({"project":[]})"),
              damaged + "project: expected a dictionary, found an array.");
    EXPECT_EQ(problemOf(R"({"project":{"name":"x"}})"),
              damaged + "project.lastBuiltDescription: the key is missing.");
    EXPECT_EQ(problemOf("[]"), damaged + "expected a dictionary, found an array.");
}

TEST(ProjectFile, ForgivesTheAbsenceOfAgentsToolsAndFlowsOnly) {
    for (const char* key : {"agents", "tools", "flows"}) {
        const std::string name = key;
        EXPECT_EQ(problemOf("{" + projectKey + ",\"" + name + "\":5}"),
                  damaged + name + ": expected an array, found an integer.");
        EXPECT_EQ(problemOf("{" + projectKey + ",\"" + name + "\":[{}]}"),
                  damaged + name + "[0].id: the key is missing.");
    }
}

TEST(ProjectFile, RefusesWhatIsNoPropertyList) {
    EXPECT_EQ(readSnapshot(std::string_view("")).error().message,
              damaged + "It is not a binary property list.");
    EXPECT_EQ(readSnapshot(std::string_view("{\"project\":1}")).error().message,
              damaged + "It is not a binary property list.");
    EXPECT_EQ(readSnapshot(std::string_view("<?xml version=\"1.0\"?>")).error().message,
              damaged + "It is an XML property list, and only binary ones can be read.");
}

TEST(ProjectFile, RefusesToWriteWhatNoReaderWouldTake) {
    PropertyKind kind{PropertyKind::Int{}};
    for (int i = 0; i < maximumNesting; ++i) {
        kind = PropertyKind{PropertyKind::Array{std::move(kind)}};
    }
    PersistedProject project;
    Agent agent;
    agent.input = {test::sampleProperty(1, "deep", std::move(kind))};
    project.agents = {std::move(agent)};
    const auto written = writeFile(project);
    ASSERT_FALSE(written);
    EXPECT_EQ(written.error().message,
              "Something in the project is nested too deeply to be stored.");
}

// A small file that has most kinds of objects.
std::string smallFile() {
    PersistedProject project = test::sampleProject();
    project.ragIndexes.pop_back();
    auto& index = project.ragIndexes[0];
    for (auto& [id, chunks] : index.chunksByDocument) {
        if (!chunks.empty()) {
            chunks.edit()[0].parentText = "parent é";
        }
    }
    project.agents.pop_back();
    project.tools.clear();
    project.flows.pop_back();
    return *writeFile(project);
}

TEST(DamagedProjectFile, IsRefusedAtEveryLengthThatItIsCutTo) {
    const std::string whole = smallFile();
    ASSERT_TRUE(readSnapshot(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string cut = whole.substr(0, length); // so that its end is the memory's end
        EXPECT_FALSE(readSnapshot(cut)) << length;
    }
}

TEST(DamagedProjectFile, IsReadOrRefusedWithEveryByteFlipped) {
    const std::string whole = smallFile();
    std::size_t refused = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const int bits : {0x01, 0x80, 0xFF}) {
            std::string flipped = whole;
            flipped[at] = static_cast<char>(flipped[at] ^ bits);
            const auto read = readSnapshot(flipped);
            if (!read) {
                EXPECT_TRUE(read.error().message.starts_with(damaged)) << at;
                ++refused;
            } else {
                ASSERT_FALSE(read->snapshot.ragIndexes.empty());
            }
        }
    }
    EXPECT_GT(refused, whole.size() / 4);
}

} // namespace
} // namespace ombrel
