#include "flows/FlowSpecBuilder.h"

#include "core/FindByID.h"
#include "flows/FlowGraph.h"
#include "retrieval/EffectiveIndexKind.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace ombrel {

namespace {

using Place = FlowGraph::Place;
using Destination = WireFlowDestination;
using E = FlowSpecBuilderError;

template <class Entry>
std::unordered_map<Uuid, const Entry*> byID(const std::vector<Entry>& list) {
    std::unordered_map<Uuid, const Entry*> entries;
    for (const Entry& entry : list) {
        entries.emplace(entry.id, &entry);
    }
    return entries;
}

template <class Entry>
const Entry* find(const std::unordered_map<Uuid, const Entry*>& entries, Uuid id) {
    const auto found = entries.find(id);
    return found == entries.end() ? nullptr : found->second;
}

WireRAGIndexKind wireKind(IndexKind effective) {
    switch (effective) {
    case IndexKind::vector:
        return WireRAGIndexKind::vector;
    case IndexKind::hybrid:
        return WireRAGIndexKind::hybrid;
    default:
        return WireRAGIndexKind::keyword;
    }
}

// Texts and vectors stay where they are: what is made keeps the document's array alive.
void addChunks(const ChunkArray& chunks, std::vector<WireRAGChunk>& wireChunks) {
    const auto keeper = std::make_shared<const ChunkArray>(chunks);
    const auto shared = [&](const std::string& text) {
        return SharedText(std::shared_ptr<const std::string>(keeper, &text));
    };
    const DocumentChunk* previous = nullptr;
    for (const DocumentChunk& chunk : keeper->values()) {
        WireRAGChunk wire;
        wire.id = chunk.id;
        wire.breadcrumb = previous && previous->breadcrumb == chunk.breadcrumb
                              ? wireChunks.back().breadcrumb
                              : SharedText(breadcrumbText(chunk.breadcrumb));
        const bool isEnriched = chunk.contextualNote ||
                                (chunk.generatedQuestions && !chunk.generatedQuestions->empty());
        wire.searchableText = isEnriched ? SharedText(chunk.searchText()) : shared(chunk.text);
        wire.packableText = shared(chunk.packText());
        if (chunk.embedding) {
            wire.embedding =
                SharedReals(std::shared_ptr<const std::vector<double>>(keeper, &*chunk.embedding));
        }
        wireChunks.push_back(std::move(wire));
        previous = &chunk;
    }
}

// What a flow needs of the project, as it goes on the wire. An index that is attached several times
// is brought into that form once.
class Knowledge {
  public:
    explicit Knowledge(const std::vector<RAGIndex>& ragIndexes) : m_ragIndexes(ragIndexes) {}

    WireAgentSpec spec(const Agent& agent) {
        WireAgentSpec spec{agent.name,   agent.instructions,      agent.input,
                           agent.output, agent.contextFieldNames, {}};
        for (const AgentRAGAttachment& attachment : agent.ragAttachments) {
            if (const RAGIndex* index = findByID(m_ragIndexes, attachment.ragIndexID)) {
                const Known& known = this->known(*index);
                spec.ragAttachments.push_back(
                    {known.kind, attachment.topK, attachment.threshold, known.chunks});
            }
        }
        return spec;
    }

  private:
    struct Known {
        WireRAGIndexKind kind;
        CowArray<WireRAGChunk> chunks;
    };

    const Known& known(const RAGIndex& index) {
        const auto found = m_known.find(index.id);
        if (found != m_known.end()) {
            return found->second;
        }
        const IndexedChunks pairs = index.indexedChunks();
        std::vector<WireRAGChunk> chunks;
        chunks.reserve(chunkCount(pairs));
        for (const IndexedDocument& entry : pairs) {
            addChunks(entry.chunks, chunks);
        }
        const IndexKind kind = effectiveIndexKind(index.currentSettings().index, pairs);
        return m_known.emplace(index.id, Known{wireKind(kind), std::move(chunks)}).first->second;
    }

    const std::vector<RAGIndex>& m_ragIndexes;
    std::unordered_map<Uuid, Known> m_known;
};

// One build. Goes through the drawing depth first with a list of what is left to do, so that a long
// path needs no deep stack.
class Building {
  public:
    Building(const Flow& flow, const std::vector<Agent>& agents,
             const std::vector<ToolDefinition>& tools, const std::vector<RAGIndex>& ragIndexes)
        : m_flow(flow), m_graph(flow), m_agents(byID(agents)), m_tools(byID(tools)),
          m_knowledge(ragIndexes), m_progress(m_graph.placeCount()) {}

    Result<WireFlowSpec, E> spec() {
        if (m_graph.start() == FlowGraph::nowhere) {
            return tl::unexpected(E{E::NoStartNode{}});
        }
        const auto ways = m_graph.outgoing(m_graph.start());
        const FlowNode* first = ways.empty() ? nullptr : m_graph.node(ways.front().to);
        const Agent* agent = first ? agentOf(*first) : nullptr;
        if (!agent) {
            return tl::unexpected(E{E::StartNotConnected{}});
        }
        WireFlowSpec spec{m_flow.name,
                          m_flow.kind,
                          m_flow.maxHops,
                          m_flow.maxHistoryTokens,
                          m_flow.startInput,
                          m_flow.contextFields,
                          m_knowledge.spec(*agent),
                          {}};
        m_progress[ways.front().to].isOpen = true;
        route(*first, ways.front().to, *agent, spec.routing);
        while (!m_error && !m_tasks.empty()) {
            const Task task = m_tasks.back();
            m_tasks.pop_back();
            if (task.isLeaving) {
                m_progress[task.place] = {false, *task.out};
            } else {
                enter(task);
            }
        }
        if (m_error) {
            return tl::unexpected(*m_error);
        }
        return spec;
    }

  private:
    struct Task {
        Place place;
        Deep<Destination>* out;
        bool isLeaving;
    };
    struct Progress {
        bool isOpen = false; // on the path that is being built
        std::optional<Deep<Destination>> built;
    };

    const Agent* agentOf(const FlowNode& node) const {
        const auto* reference = std::get_if<FlowNodeKind::Agent>(&node.kind.value);
        return reference ? find(m_agents, reference->agentID) : nullptr;
    }

    void fail(decltype(E::value) error) { m_error = E{std::move(error)}; }

    // Has the destinations built in this order, before everything that is left to do.
    void later(std::vector<std::pair<Place, Deep<Destination>*>> destinations) {
        for (auto entry = destinations.rbegin(); entry != destinations.rend(); ++entry) {
            m_tasks.push_back({entry->first, entry->second, false});
        }
    }

    void enter(const Task& task) {
        Progress& progress = m_progress[task.place];
        const FlowNode* node = m_graph.node(task.place);
        if (!node || progress.isOpen) {
            fail(E::MissingNode{});
        } else if (progress.built) {
            *task.out = *progress.built;
        } else {
            progress.isOpen = true;
            m_tasks.push_back({task.place, task.out, true});
            Destination& destination = task.out->emplace();
            std::visit([&](const auto& kind) { build(kind, *node, task.place, destination); },
                       node->kind.value);
        }
    }

    void build(const FlowNodeKind::Start&, const FlowNode&, Place, Destination&) {
        fail(E::MissingNode{});
    }

    void build(const FlowNodeKind::End& end, const FlowNode&, Place, Destination& destination) {
        destination.value = Destination::End{end.caseName, end.carriesOutput};
    }

    void build(const FlowNodeKind::Agent&, const FlowNode& node, Place place,
               Destination& destination) {
        const Agent* agent = agentOf(node);
        if (!agent) {
            return fail(E::MissingAgent{node.id});
        }
        auto& built = destination.value.emplace<Destination::Agent>();
        built.spec = m_knowledge.spec(*agent);
        route(node, place, *agent, built.next);
    }

    void build(const FlowNodeKind::Branch& branch, const FlowNode& node, Place place,
               Destination& destination) {
        const auto ways = m_graph.outgoing(place);
        const auto way = [&](const char* port) {
            return std::ranges::find_if(
                ways, [&](const FlowGraph::Arrow& arrow) { return arrow.edge->fromPort == port; });
        };
        const auto then = way("true");
        const auto otherwise = way("false");
        if (then == ways.end() || otherwise == ways.end()) {
            return fail(E::NodeNotConnected{node.id});
        }
        auto& built = destination.value.emplace<Destination::Branch>();
        built.field = branch.field;
        built.operation = branch.operation;
        built.value = branch.value;
        later({{then->to, &built.then}, {otherwise->to, &built.otherwise}});
    }

    void build(const FlowNodeKind::Tool& reference, const FlowNode& node, Place place,
               Destination& destination) {
        const ToolDefinition* tool = find(m_tools, reference.toolID);
        if (!tool) {
            return fail(E::MissingTool{node.id});
        }
        const auto ways = m_graph.outgoing(place);
        if (ways.empty()) {
            return fail(E::NodeNotConnected{node.id});
        }
        auto& built = destination.value.emplace<Destination::Tool>();
        built.spec = {tool->name, tool->mockResponseJSON};
        later({{ways.front().to, &built.next}});
    }

    void route(const FlowNode& node, Place place, const Agent& agent, WireFlowRouting& routing) {
        const auto ways = m_graph.outgoing(place);
        if (const auto* output = std::get_if<AgentOutputKind::Enumeration>(&agent.output.value)) {
            routeByCase(*output, ways, routing.value.emplace<WireFlowRouting::ByCase>());
        } else if (ways.empty()) {
            fail(E::NodeNotConnected{node.id});
        } else {
            auto& single = routing.value.emplace<WireFlowRouting::Single>();
            later({{ways.front().to, &single.destination}});
        }
    }

    void routeByCase(const AgentOutputKind::Enumeration& output,
                     std::span<const FlowGraph::Arrow> ways, WireFlowRouting::ByCase& routing) {
        std::unordered_map<std::string_view, Place> targets; // by port: of the first edge there
        for (const FlowGraph::Arrow& way : ways) {
            if (way.edge->fromPort) {
                targets.emplace(*way.edge->fromPort, way.to);
            }
        }
        std::vector<std::pair<Place, Deep<Destination>*>> connected;
        for (const AgentEnumCase& oneCase : output.cases) {
            const auto [entry, isNew] = routing.destinations.try_emplace(oneCase.name);
            const auto target = targets.find(oneCase.name);
            if (target == targets.end()) {
                entry->second = Destination{Destination::End{oneCase.name, false}};
            } else if (isNew) {
                connected.emplace_back(target->second, &entry->second);
            }
        }
        later(std::move(connected));
    }

    const Flow& m_flow;
    FlowGraph m_graph;
    std::unordered_map<Uuid, const Agent*> m_agents;
    std::unordered_map<Uuid, const ToolDefinition*> m_tools;
    Knowledge m_knowledge;
    std::vector<Progress> m_progress; // by place
    std::vector<Task> m_tasks;        // the next one last
    std::optional<E> m_error;
};

} // namespace

Result<WireFlowSpec, FlowSpecBuilderError>
FlowSpecBuilder::build(const Flow& flow, const std::vector<Agent>& agents,
                       const std::vector<ToolDefinition>& tools,
                       const std::vector<RAGIndex>& ragIndexes) {
    return Building(flow, agents, tools, ragIndexes).spec();
}

} // namespace ombrel
