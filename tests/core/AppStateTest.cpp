#include "core/AppState.h"

#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ombrel {
namespace {

using namespace test;

std::vector<std::string> indexNames(const AppState& state) {
    std::vector<std::string> names;
    for (const auto& index : *state.ragIndexes) {
        names.push_back(index.name);
    }
    return names;
}
using Names = std::vector<std::string>;

DocumentChunk chunk(std::string text) {
    DocumentChunk result;
    result.id = Uuid::random();
    result.text = std::move(text);
    return result;
}

// Adds a source with the chunks to the current index and gives its id.
Uuid addSource(AppState& state, std::string name, std::vector<DocumentChunk> chunks) {
    SourceDocument source;
    source.id = Uuid::random();
    source.name = std::move(name);
    auto index = state.editCurrentIndex();
    index->sources.push_back(source);
    index->chunksByDocument[source.id] = std::move(chunks);
    return source.id;
}

TEST(NewWorkspace, HasANewProjectWithOneIndexThatIsShown) {
    const Workspace workspace;
    EXPECT_EQ(*workspace->project, Project());
    EXPECT_EQ(workspace->project->name, "New Project");
    EXPECT_EQ(workspace->project->lastBuiltDescription, "Not built yet");
    ASSERT_EQ(workspace->ragIndexes->size(), 1u);
    const RAGIndex& index = workspace->ragIndexes->front();
    EXPECT_NE(index.id, Uuid());
    EXPECT_EQ(index.name, "Default");
    EXPECT_EQ(*workspace->selectedRAGIndexID, index.id);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(index.id));
    EXPECT_EQ(workspace->selectedTab(), AppTab::sources);
    EXPECT_TRUE(workspace->agents->empty() && workspace->tools->empty() &&
                workspace->flows->empty() && workspace->flowSampleInputValues->empty());
    EXPECT_FALSE(workspace->canvasSelection->has_value());
    EXPECT_FALSE(workspace->hasPendingCheckpoint());
}

TEST(CurrentIndex, IsTheSelectedOne) {
    const Workspace workspace;
    const Uuid second = workspace->addRAGIndex().id;
    EXPECT_EQ(workspace->currentIndex().id, second);
    EXPECT_EQ(&workspace->currentIndex(), &workspace->ragIndexes->back());
}

TEST(CurrentIndex, IsTheFirstWhenTheSelectedIDNamesNoneAndTheIDStays) {
    const Workspace workspace;
    workspace->addRAGIndex();
    const Uuid stale = Uuid::random();
    workspace->selectedRAGIndexID = stale;
    EXPECT_EQ(&workspace->currentIndex(), &workspace->ragIndexes->front());
    workspace->editCurrentIndex()->playgroundQuestion = "Why?";
    EXPECT_EQ(workspace->ragIndexes->front().playgroundQuestion, "Why?");
    EXPECT_EQ(*workspace->selectedRAGIndexID, stale);
}

TEST(CurrentVariant, IsTheSelectedOneElseTheFirst) {
    const Workspace workspace;
    Variant second;
    second.id = Uuid::random();
    second.name = "Second";
    workspace->editCurrentIndex()->variants.push_back(second);
    EXPECT_EQ(workspace->currentVariant().name, "Default");
    workspace->editCurrentIndex()->selectedVariantID = second.id;
    EXPECT_EQ(workspace->currentVariant().name, "Second");
    workspace->editCurrentIndex()->selectedVariantID = Uuid::random();
    EXPECT_EQ(workspace->currentVariant().name, "Default");
}

TEST(IndexedChunksOfAWorkspace, WalkTheSourcesInOrderAndShareTheirChunks) {
    const Workspace workspace;
    const Uuid a = addSource(*workspace.state, "a", {chunk("a1"), chunk("a2")});
    const Uuid b = addSource(*workspace.state, "b", {chunk("b1")});
    {
        auto index = workspace->editCurrentIndex();
        std::swap(index->sources[0], index->sources[1]);
        SourceDocument withoutChunks;
        withoutChunks.id = Uuid::random();
        index->sources.insert(index->sources.begin(), withoutChunks);
        index->chunksByDocument[Uuid::random()] = {chunk("of no source")};
    }
    const IndexedChunks pairs = workspace->indexedChunks();
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[0].document.id, b);
    EXPECT_EQ(pairs[1].document.id, a);
    EXPECT_EQ(pairs[1].chunks[1].text, "a2");
    EXPECT_EQ(chunkCount(pairs), 3u);
    EXPECT_EQ(pairs[1].chunks.identity(),
              workspace->currentIndex().chunksByDocument.at(a).identity());
}

TEST(HasEmbeddingsForAllChunks, NeedsChunksAndAnEmbeddingOfEachInTheCurrentIndex) {
    const Workspace workspace;
    EXPECT_FALSE(workspace->hasEmbeddingsForAllChunks());
    DocumentChunk embedded = chunk("a");
    embedded.embedding = {0.5};
    addSource(*workspace.state, "a", {embedded});
    EXPECT_TRUE(workspace->hasEmbeddingsForAllChunks());
    addSource(*workspace.state, "b", {chunk("b")});
    EXPECT_FALSE(workspace->hasEmbeddingsForAllChunks());
}

TEST(Lookups, FindThingsByTheirIDsOrNothing) {
    const Workspace workspace;
    const Uuid agent = workspace->addAgent().id;
    const Uuid tool = workspace->addTool().id;
    const Uuid flow = workspace->addFlow().id;
    EXPECT_EQ(workspace->agent(agent), &workspace->agents->front());
    EXPECT_EQ(workspace->tool(tool), &workspace->tools->front());
    EXPECT_EQ(workspace->flow(flow), &workspace->flows->front());
    EXPECT_EQ(workspace->ragIndex(*workspace->selectedRAGIndexID), &workspace->ragIndexes->front());
    const Uuid nobody = Uuid::random();
    EXPECT_EQ(workspace->agent(nobody), nullptr);
    EXPECT_EQ(workspace->tool(nobody), nullptr);
    EXPECT_EQ(workspace->flow(nobody), nullptr);
    EXPECT_EQ(workspace->ragIndex(nobody), nullptr);
}

TEST(AddRAGIndex, AppendsSelectsAndSchedules) {
    const Workspace workspace;
    EXPECT_TRUE(
        workspace.schedules([&] { EXPECT_EQ(workspace->addRAGIndex().name, "New RAG 2"); }));
    EXPECT_EQ(indexNames(*workspace.state), (Names{"Default", "New RAG 2"}));
    const RAGIndex& added = workspace->ragIndexes->back();
    EXPECT_EQ(*workspace->selectedRAGIndexID, added.id);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(added.id));
    RAGIndex fresh(added.id, "New RAG 2");
    fresh.variants = added.variants;
    fresh.selectedVariantID = added.selectedVariantID;
    EXPECT_EQ(added, fresh);
}

TEST(AddRAGIndex, CountsIndexesSoThatANameCanRepeatAfterADeletion) {
    const Workspace workspace;
    const Uuid first = workspace->ragIndexes->front().id;
    workspace->addRAGIndex();
    workspace->addRAGIndex();
    workspace->deleteRAGIndex(first);
    workspace->addRAGIndex();
    EXPECT_EQ(indexNames(*workspace.state), (Names{"New RAG 2", "New RAG 3", "New RAG 3"}));
}

TEST(DuplicateRAGIndex, CopiesEverythingUnderANewIDAndSelectsTheCopy) {
    const Workspace workspace;
    addSource(*workspace.state, "a", {chunk("a1")});
    {
        auto index = workspace->editCurrentIndex();
        index->testQuestions.push_back({.id = Uuid::random(),
                                        .question = "Why?",
                                        .expectedBreadcrumb = {},
                                        .lastGotBreadcrumb = {},
                                        .lastRank = {}});
        index->playgroundQuestion = "How?";
    }
    const RAGIndex original = workspace->currentIndex();
    workspace->addRAGIndex();
    const RAGIndex* copy = nullptr;
    EXPECT_TRUE(workspace.schedules([&] { copy = workspace->duplicateRAGIndex(original.id); }));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy, &workspace->ragIndexes->back());
    EXPECT_NE(copy->id, original.id);
    EXPECT_EQ(*workspace->selectedRAGIndexID, copy->id);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(copy->id));
    RAGIndex expected = original;
    expected.id = copy->id;
    expected.name = "Default copy";
    EXPECT_EQ(*copy, expected);
}

TEST(DuplicateRAGIndex, GivesACopyOfACopyTheSuffixTwice) {
    const Workspace workspace;
    const Uuid copy = workspace->duplicateRAGIndex(workspace->ragIndexes->front().id)->id;
    EXPECT_EQ(workspace->duplicateRAGIndex(copy)->name, "Default copy copy");
}

TEST(DuplicateRAGIndex, ChangesNothingWithoutTheIndex) {
    const Workspace workspace;
    const PersistedProject before = workspace->makeSnapshot();
    EXPECT_FALSE(workspace.schedules(
        [&] { EXPECT_EQ(workspace->duplicateRAGIndex(Uuid::random()), nullptr); }));
    EXPECT_EQ(workspace->makeSnapshot(), before);
}

TEST(DeleteRAGIndex, OfTheSelectedOneSelectsTheFirstRemainingAndLeavesAttachments) {
    const Workspace workspace;
    workspace->addRAGIndex();
    const Uuid third = workspace->addRAGIndex().id;
    const Uuid agent = workspace->addAgent().id;
    workspace->setRAGAttached(agent, third, true);
    workspace->selectRAGIndex(third);
    EXPECT_TRUE(workspace.schedules([&] { workspace->deleteRAGIndex(third); }));
    EXPECT_EQ(indexNames(*workspace.state), (Names{"Default", "New RAG 2"}));
    const Uuid first = workspace->ragIndexes->front().id;
    EXPECT_EQ(*workspace->selectedRAGIndexID, first);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(first));
    ASSERT_EQ(workspace->agents->front().ragAttachments.size(), 1u);
    EXPECT_EQ(workspace->agents->front().ragAttachments[0].ragIndexID, third);
}

TEST(DeleteRAGIndex, OfAnotherOneKeepsTheSelection) {
    const Workspace workspace;
    const Uuid first = workspace->ragIndexes->front().id;
    const Uuid second = workspace->addRAGIndex().id;
    workspace->deleteRAGIndex(first);
    EXPECT_EQ(*workspace->selectedRAGIndexID, second);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(second));
}

TEST(DeleteRAGIndex, KeepsANavigatorSelectionOfSomethingElse) {
    const Workspace workspace;
    const Uuid second = workspace->addRAGIndex().id;
    const Uuid agent = workspace->addAgent().id;
    workspace->deleteRAGIndex(second);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsAgent(agent));
    EXPECT_EQ(*workspace->selectedRAGIndexID, workspace->ragIndexes->front().id);
}

TEST(DeleteRAGIndex, OfTheOnlyOneDoesNothingAndSchedulesNothing) {
    const Workspace workspace;
    const PersistedProject before = workspace->makeSnapshot();
    EXPECT_FALSE(
        workspace.schedules([&] { workspace->deleteRAGIndex(workspace->ragIndexes->front().id); }));
    EXPECT_EQ(workspace->makeSnapshot(), before);
}

TEST(SelectRAGIndex, SelectsAndShowsItWithoutScheduling) {
    const Workspace workspace;
    const Uuid first = workspace->ragIndexes->front().id;
    workspace->addRAGIndex();
    workspace->addAgent();
    EXPECT_FALSE(workspace.schedules([&] { workspace->selectRAGIndex(first); }));
    EXPECT_EQ(*workspace->selectedRAGIndexID, first);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(first));
}

TEST(SelectRAGIndex, DoesNothingWithoutTheIndex) {
    const Workspace workspace;
    const Uuid first = workspace->ragIndexes->front().id;
    const Uuid agent = workspace->addAgent().id;
    workspace->selectRAGIndex(Uuid::random());
    EXPECT_EQ(*workspace->selectedRAGIndexID, first);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsAgent(agent));
}

TEST(RenameRAGIndex, SetsTheNameAndSchedules) {
    const Workspace workspace;
    const Uuid first = workspace->ragIndexes->front().id;
    workspace->addRAGIndex();
    EXPECT_TRUE(workspace.schedules([&] { workspace->renameRAGIndex(first, "Manuals"); }));
    EXPECT_EQ(indexNames(*workspace.state), (Names{"Manuals", "New RAG 2"}));
}

TEST(ResetProject, LeavesOneNewIndexAndNothingBuilt) {
    const Workspace workspace;
    const Uuid before = workspace->addRAGIndex().id;
    {
        auto project = workspace->project.edit();
        project->name = "Field Station";
        project->lastBuiltDescription = "Build Succeeded";
        project->lastBuildFinishedAt = Date{1};
        project->lastBuiltSettings = BuildSettings();
    }
    workspace->addFlow();
    workspace->addTool();
    workspace->selectRAGIndex(before);
    EXPECT_TRUE(workspace.schedules([&] { workspace->resetProject(); }));
    EXPECT_EQ(indexNames(*workspace.state), Names{"Default"});
    const Uuid now = workspace->ragIndexes->front().id;
    EXPECT_NE(now, before);
    EXPECT_EQ(*workspace->selectedRAGIndexID, now);
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsIndex(now));
    Project expected;
    expected.name = "Field Station";
    EXPECT_EQ(*workspace->project, expected);
    EXPECT_EQ(workspace->flows->size(), 1u);
    EXPECT_EQ(workspace->tools->size(), 1u);
}

TEST(ResetProject, LeavesASelectedAgentSelected) {
    const Workspace workspace;
    const Uuid agent = workspace->addAgent().id;
    workspace->resetProject();
    EXPECT_EQ(workspace->selectedNavigatorItem(), showsAgent(agent));
    EXPECT_EQ(*workspace->selectedRAGIndexID, workspace->ragIndexes->front().id);
    EXPECT_EQ(workspace->agents->size(), 1u);
}

TEST(UpdateVariant, ReplacesTheOneWithItsID) {
    const Workspace workspace;
    workspace->duplicateVariant();
    Variant changed = workspace->currentIndex().variants[0];
    changed.settings.targetChunkSize = 512.5;
    EXPECT_TRUE(workspace.schedules([&] { workspace->updateVariant(changed); }));
    EXPECT_EQ(workspace->currentIndex().variants[0], changed);
    EXPECT_EQ(workspace->currentIndex().variants[1].settings, BuildSettings());
}

TEST(UpdateVariant, DropsAVariantThatIsNotThere) {
    const Workspace workspace;
    const PersistedProject before = workspace->makeSnapshot();
    Variant unknown;
    unknown.id = Uuid::random();
    EXPECT_TRUE(workspace.schedules([&] { workspace->updateVariant(unknown); }));
    EXPECT_EQ(workspace->makeSnapshot(), before);
}

TEST(DuplicateVariant, CopiesTheSettingsWithoutTheResultsAndSelectsTheCopy) {
    const Workspace workspace;
    Variant variant = workspace->currentVariant();
    variant.settings.topK = 9;
    variant.recallAt5 = 0.5;
    variant.mrr = 0.25;
    variant.recordedLatencies = {1, 2};
    workspace->updateVariant(variant);
    EXPECT_TRUE(workspace.schedules([&] { workspace->duplicateVariant(); }));
    ASSERT_EQ(workspace->currentIndex().variants.size(), 2u);
    EXPECT_EQ(workspace->currentIndex().variants[0], variant);
    const Variant& copy = workspace->currentIndex().variants[1];
    EXPECT_NE(copy.id, variant.id);
    EXPECT_EQ(workspace->currentIndex().selectedVariantID, copy.id);
    Variant expected;
    expected.id = copy.id;
    expected.name = "Default copy";
    expected.settings = variant.settings;
    EXPECT_EQ(copy, expected);
}

// How often each field told of a change.
struct Watch {
    explicit Watch(AppState& state) {
        watch("project", state.project);
        watch("ragIndexes", state.ragIndexes);
        watch("selectedRAGIndexID", state.selectedRAGIndexID);
        watch("agents", state.agents);
        watch("tools", state.tools);
        watch("flows", state.flows);
        watch("canvasSelection", state.canvasSelection);
        watch("flowSampleInputValues", state.flowSampleInputValues);
        subscriptions.push_back(state.observeSelectedTab([this] { ++told["selectedTab"]; }));
        subscriptions.push_back(state.observeSelectedNavigatorItem([this] { ++told["shown"]; }));
    }
    template <class T>
    void watch(std::string name, Observed<T>& field) {
        subscriptions.push_back(field.observe([this, name] { ++told[name]; }));
    }

    std::map<std::string, int> told;
    std::vector<Subscription> subscriptions;
};
using Told = std::map<std::string, int>;

TEST(Observation, TellsOfTheFieldsThatAChangeWritesAndOfNoOthers) {
    const Workspace workspace;
    AppState& state = *workspace.state;
    const Uuid first = state.ragIndexes->front().id;
    const auto told = [&](auto change) {
        Watch watch(state);
        change();
        return watch.told;
    };
    EXPECT_EQ(told([&] { state.addRAGIndex(); }),
              (Told{{"ragIndexes", 1}, {"selectedRAGIndexID", 1}, {"shown", 1}}));
    EXPECT_EQ(told([&] { state.renameRAGIndex(first, "Manuals"); }), (Told{{"ragIndexes", 1}}));
    EXPECT_EQ(told([&] { state.selectRAGIndex(first); }),
              (Told{{"selectedRAGIndexID", 1}, {"shown", 1}}));
    EXPECT_EQ(told([&] { state.duplicateVariant(); }), (Told{{"ragIndexes", 1}}));
    EXPECT_EQ(told([&] { state.updateVariant(Variant(state.currentVariant())); }),
              (Told{{"ragIndexes", 1}}));
    EXPECT_EQ(told([&] { state.editCurrentIndex()->isAsking = true; }), (Told{{"ragIndexes", 1}}));
    EXPECT_EQ(told([&] { state.deleteRAGIndex(first); }),
              (Told{{"ragIndexes", 1}, {"selectedRAGIndexID", 1}, {"shown", 1}}));
    EXPECT_EQ(told([&] { state.resetProject(); }),
              (Told{{"project", 1}, {"ragIndexes", 1}, {"selectedRAGIndexID", 1}, {"shown", 1}}));
    EXPECT_EQ(told([&] { state.addAgent(); }), (Told{{"agents", 1}, {"shown", 1}}));
    EXPECT_EQ(told([&] { state.addTool(); }), (Told{{"tools", 1}, {"shown", 1}}));
    EXPECT_EQ(told([&] { state.deleteTool(state.tools->front().id); }),
              (Told{{"agents", 1}, {"tools", 1}, {"shown", 1}}));
    EXPECT_EQ(told([&] { state.addFlow(); }), (Told{{"flows", 1}, {"shown", 1}}));
    EXPECT_EQ(
        told([&] { state.addFlowNode({FlowNodeKind::Start{}}, state.flows->front().id, 0, 0); }),
        (Told{{"flows", 1}}));
    EXPECT_EQ(told([&] { state.flowSampleInputValues.edit()->emplace("request", "x"); }),
              (Told{{"flowSampleInputValues", 1}}));
    EXPECT_EQ(told([&] { state.canvasSelection = CanvasSelection{CanvasSelection::Node{first}}; }),
              (Told{{"canvasSelection", 1}}));
}

TEST(Observation, ComparesFirstForTheTabAndTheNavigator) {
    const Workspace workspace;
    Watch watch(*workspace.state);
    workspace->setSelectedTab(workspace->selectedTab());
    workspace->setSelectedNavigatorItem(workspace->selectedNavigatorItem());
    EXPECT_EQ(watch.told, Told{});
    workspace->setSelectedTab(AppTab::playground);
    workspace->setSelectedNavigatorItem(showsAgent(Uuid::random()));
    EXPECT_EQ(watch.told, (Told{{"selectedTab", 1}, {"shown", 1}}));
    EXPECT_EQ(workspace->selectedTab(), AppTab::playground);
}

TEST(Observation, ShowsAnIndexThatIsThereWheneverItTells) {
    const Workspace workspace;
    AppState& state = *workspace.state;
    std::vector<Subscription> subscriptions;
    const auto check = [&] {
        EXPECT_TRUE(state.ragIndex(*state.selectedRAGIndexID));
        if (const auto* shown =
                std::get_if<NavigatorSelection::Rag>(&state.selectedNavigatorItem().value)) {
            EXPECT_EQ(shown->id, *state.selectedRAGIndexID);
            EXPECT_TRUE(state.ragIndex(shown->id));
        }
    };
    subscriptions.push_back(state.project.observe(check));
    subscriptions.push_back(state.ragIndexes.observe(check));
    subscriptions.push_back(state.selectedRAGIndexID.observe(check));
    subscriptions.push_back(state.observeSelectedNavigatorItem(check));
    const PersistedProject before = state.makeSnapshot();
    const Uuid added = state.addRAGIndex().id;
    state.duplicateRAGIndex(added);
    state.selectRAGIndex(added);
    state.deleteRAGIndex(*state.selectedRAGIndexID);
    state.resetProject();
    state.applySnapshot(before);
}

} // namespace
} // namespace ombrel
