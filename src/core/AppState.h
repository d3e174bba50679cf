#pragma once

#include "core/Agent.h"
#include "core/AppTab.h"
#include "core/CanvasSelection.h"
#include "core/FindByID.h"
#include "core/Flow.h"
#include "core/FlowConsoleLine.h"
#include "core/FlowRunHighlight.h"
#include "core/FlowRunOutcome.h"
#include "core/IndexedChunks.h"
#include "core/NavigatorSelection.h"
#include "core/Observed.h"
#include "core/PersistedProject.h"
#include "core/Project.h"
#include "core/RAGIndex.h"
#include "core/ToolDefinition.h"
#include "core/UndoManager.h"
#include "platform/Date.h"
#include "platform/Platform.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ombrel {

// The one mutable object of an open project: it owns every value, and everything that changes the
// project goes through it. Main thread only. Made as a shared pointer, since tasks hold it (the
// pending checkpoint weakly, long work strongly) across their suspensions; a task reads
// `currentIndex()` anew after each.
class AppState : public std::enable_shared_from_this<AppState> {
  public:
    // A new project with one new RAG index.
    static std::shared_ptr<AppState> make(Platform platform);
    AppState(const AppState&) = delete;
    AppState& operator=(const AppState&) = delete;
    ~AppState();

    const Platform& platform() const { return m_platform; }

    Observed<Project> project;
    Observed<std::vector<RAGIndex>> ragIndexes; // never empty
    Observed<Uuid> selectedRAGIndexID;
    Observed<std::vector<Agent>> agents;
    Observed<std::vector<ToolDefinition>> tools;
    Observed<std::vector<Flow>> flows;
    Observed<std::optional<CanvasSelection>> canvasSelection;
    Observed<std::map<std::string, std::string>> flowSampleInputValues; // by input field name
    // The run of a flow that goes on, or the last one. None of it is stored.
    Observed<bool> isRunningFlow{false};
    Observed<std::optional<FlowRunOutcome>> lastFlowRunOutcome;
    // Bounded: the oldest lines go. Lines that come together are one change.
    Observed<std::vector<FlowConsoleLine>> flowConsoleLines;
    Observed<std::optional<std::string>> flowRunPhase;
    Observed<std::optional<Date>> flowRunStartedAt;
    Observed<std::optional<FlowRunHighlight>> flowRunHighlight;
    Observed<std::map<Uuid, std::vector<std::string>>> conversationMessages; // the user's, by flow
    std::shared_ptr<UndoManager> undoManager;                                // set by the window
    std::optional<PersistedProject> lastSnapshot; // the state at the last checkpoint

    // These two tell nobody when the value stays the same.
    AppTab selectedTab() const { return *m_selectedTab; }
    [[nodiscard]] Subscription observeSelectedTab(std::function<void()> changed) {
        return m_selectedTab.observe(std::move(changed));
    }
    void setSelectedTab(AppTab tab) { m_selectedTab.setIfChanged(tab); }
    const NavigatorSelection& selectedNavigatorItem() const { return *m_selectedNavigatorItem; }
    void setSelectedNavigatorItem(NavigatorSelection item) {
        m_selectedNavigatorItem.setIfChanged(item);
    }
    [[nodiscard]] Subscription observeSelectedNavigatorItem(std::function<void()> changed) {
        return m_selectedNavigatorItem.observe(std::move(changed));
    }

    // Lookups.

    // The RAG index with the selected id; the first one when none has it.
    const RAGIndex& currentIndex() const;
    // Write access to the same; observers of `ragIndexes` are told when it goes out of scope.
    class IndexEdit {
      public:
        RAGIndex& operator*() const { return *m_index; }
        RAGIndex* operator->() const { return m_index; }

      private:
        friend class AppState;
        explicit IndexEdit(AppState& state);
        Observed<std::vector<RAGIndex>>::Edit m_edit;
        RAGIndex* m_index;
    };
    [[nodiscard]] IndexEdit editCurrentIndex() { return IndexEdit(*this); }
    // Writes to the RAG index with the id, for long work that has to end where it began; false, and
    // nobody is told, when there is none any more.
    template <class Write>
    bool editIndex(Uuid id, Write write) {
        if (!ragIndex(id)) {
            return false;
        }
        auto list = ragIndexes.edit();
        write(*findByID(*list, id));
        return true;
    }
    // In the current index, the variant with the selected id; its first one when none has it.
    const Variant& currentVariant() const;
    // The (document, chunk) pairs of the current index.
    IndexedChunks indexedChunks() const;
    bool hasEmbeddingsForAllChunks() const;
    // The first thing with the id, or null. Good until its list is changed.
    const RAGIndex* ragIndex(Uuid id) const { return findByID(*ragIndexes, id); }
    const Agent* agent(Uuid id) const { return findByID(*agents, id); }
    const ToolDefinition* tool(Uuid id) const { return findByID(*tools, id); }
    const Flow* flow(Uuid id) const { return findByID(*flows, id); }

    // RAG indexes and variants.

    const RAGIndex& addRAGIndex();
    // The copy; null when there is no such index.
    const RAGIndex* duplicateRAGIndex(Uuid id);
    void deleteRAGIndex(Uuid id);
    void selectRAGIndex(Uuid id);
    void renameRAGIndex(Uuid id, std::string name);
    void resetProject();
    void updateVariant(const Variant& variant);
    void duplicateVariant();

    // Agents and tools.

    const Agent& addAgent();
    const Agent* duplicateAgent(Uuid id);
    void deleteAgent(Uuid id);
    const ToolDefinition& addTool();
    const ToolDefinition* duplicateTool(Uuid id);
    void deleteTool(Uuid id);
    // Replace the first agent or tool with the same id; one that is gone is dropped silently.
    void updateAgent(const Agent& agent);
    void updateTool(const ToolDefinition& tool);
    // Adds an attachment with top-k 5 and threshold 0 unless there is one, or removes all of them.
    void setRAGAttached(Uuid agentID, Uuid ragIndexID, bool attached);
    // Write to the agent's first attachment of the index.
    void setRAGTopK(Uuid agentID, Uuid ragIndexID, std::int64_t topK);
    void setRAGThreshold(Uuid agentID, Uuid ragIndexID, double threshold);
    // Adds the trimmed name unless it is blank or there already; true when the text was not blank.
    bool addContextFieldName(Uuid agentID, std::string_view text);
    void removeContextFieldName(Uuid agentID, std::string_view name);
    // Appends a blank and the field's placeholder to the instructions.
    void insertContextPlaceholder(Uuid agentID, std::string_view fieldName);

    // Flows. The editing operations do nothing when no flow has the id.

    const Flow& addFlow();
    const Flow* duplicateFlow(Uuid id);
    void deleteFlow(Uuid id);
    void updateFlow(const Flow& flow);
    void addFlowNode(FlowNodeKind kind, Uuid flowID, double x, double y);
    void moveFlowNode(Uuid nodeID, Uuid flowID, double x, double y);
    // Replaces what was connected to the port.
    void connectFlowNodes(Uuid fromNodeID, std::optional<std::string> fromPort, Uuid toNodeID,
                          Uuid flowID);
    // Takes its edges with it. Clears the canvas selection of the node even when there is no such
    // flow.
    void deleteFlowNode(Uuid nodeID, Uuid flowID);
    void deleteFlowEdge(Uuid edgeID, Uuid flowID);
    // The names of all flows with a node for the agent, in flow order.
    std::vector<std::string> flowNamesUsingAgent(Uuid agentID) const;
    void clearRunHighlight() { flowRunHighlight = std::nullopt; }

    // Snapshots and undo.

    PersistedProject makeSnapshot() const;
    void applySnapshot(const PersistedProject& snapshot);
    // What opening a file does: applies the snapshot and takes it as the last one.
    void load(const PersistedProject& snapshot);
    // To be called last by every mutation that is undoable: 400 ms after the last call the whole
    // state becomes one undo step.
    void scheduleCheckpoint();
    // Whether a checkpoint is waiting for its time.
    bool hasPendingCheckpoint() const { return m_checkpoint.has_value(); }
    // Takes a checkpoint that is waiting now; nothing when none is.
    void flushCheckpoint();
    void checkpoint();

  private:
    explicit AppState(Platform platform);
    const RAGIndex& addAndSelect(RAGIndex index);
    template <class Write>
    void editAttachment(Uuid agentID, Uuid ragIndexID, Write write);
    void cancelCheckpoint();

    // Adds the thing at the end and shows it: `Shown` is its navigator selection.
    template <class Shown, class T>
    const T& addAndShow(Observed<std::vector<T>>& list, T thing) {
        const NavigatorSelection shown{Shown{thing.id}};
        {
            auto things = list.edit();
            things->push_back(std::move(thing));
            setSelectedNavigatorItem(shown);
        }
        scheduleCheckpoint();
        return list->back();
    }
    // Removes every element with the id; where the navigator showed it, it shows the selected RAG
    // index.
    template <class Shown, class T>
    void removeAndHide(Observed<std::vector<T>>& list, Uuid id) {
        auto things = list.edit();
        std::erase_if(*things, [&](const T& thing) { return thing.id == id; });
        if (selectedNavigatorItem() == NavigatorSelection{Shown{id}}) {
            setSelectedNavigatorItem({NavigatorSelection::Rag{*selectedRAGIndexID}});
        }
    }
    // Writes to the first element with the id and schedules a checkpoint; nothing when there is
    // none.
    template <class T, class Write>
    void editFirst(Observed<std::vector<T>>& list, Uuid id, Write write) {
        if (!findByID(*list, id)) {
            return;
        }
        {
            auto things = list.edit();
            write(*findByID(*things, id));
        }
        scheduleCheckpoint();
    }

    Platform m_platform;
    Observed<AppTab> m_selectedTab{AppTab::sources};
    Observed<NavigatorSelection> m_selectedNavigatorItem;
    std::optional<std::uint64_t> m_checkpoint; // handle of the delayed work
};

} // namespace ombrel
