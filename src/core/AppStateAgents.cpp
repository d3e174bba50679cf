#include "core/AppState.h"

#include "platform/Text.h"

#include <algorithm>
#include <string>
#include <utility>

namespace ombrel {

const Agent& AppState::addAgent() {
    const std::string number = std::to_string(agents->size() + 1);
    return addAndShow<NavigatorSelection::Agent>(agents, newAgent("New Agent " + number));
}

const Agent* AppState::duplicateAgent(Uuid id) {
    const Agent* original = agent(id);
    if (!original) {
        return nullptr;
    }
    Agent copy = *original;
    copy.id = Uuid::random();
    copy.name += " copy";
    return &addAndShow<NavigatorSelection::Agent>(agents, std::move(copy));
}

void AppState::deleteAgent(Uuid id) {
    removeAndHide<NavigatorSelection::Agent>(agents, id);
    scheduleCheckpoint();
}

const ToolDefinition& AppState::addTool() {
    const std::string number = std::to_string(tools->size() + 1);
    return addAndShow<NavigatorSelection::Tool>(tools, newTool("newTool" + number));
}

const ToolDefinition* AppState::duplicateTool(Uuid id) {
    const ToolDefinition* original = tool(id);
    if (!original) {
        return nullptr;
    }
    ToolDefinition copy = *original;
    copy.id = Uuid::random();
    copy.name += "Copy"; // no blank: the name is an identifier
    return &addAndShow<NavigatorSelection::Tool>(tools, std::move(copy));
}

void AppState::deleteTool(Uuid id) {
    {
        auto users = agents.edit();
        for (Agent& user : *users) {
            std::erase(user.toolIDs, id);
        }
        removeAndHide<NavigatorSelection::Tool>(tools, id);
    }
    scheduleCheckpoint();
}

void AppState::updateAgent(const Agent& agent) {
    editFirst(agents, agent.id, [&](Agent& stored) { stored = agent; });
}

void AppState::updateTool(const ToolDefinition& tool) {
    editFirst(tools, tool.id, [&](ToolDefinition& stored) { stored = tool; });
}

namespace {

bool isAttached(const Agent& agent, Uuid ragIndexID) {
    return std::ranges::any_of(agent.ragAttachments, [&](const AgentRAGAttachment& attachment) {
        return attachment.ragIndexID == ragIndexID;
    });
}

} // namespace

void AppState::setRAGAttached(Uuid agentID, Uuid ragIndexID, bool attached) {
    const Agent* current = agent(agentID);
    if (!current || isAttached(*current, ragIndexID) == attached) {
        return;
    }
    editFirst(agents, agentID, [&](Agent& edited) {
        if (attached) {
            edited.ragAttachments.push_back({Uuid::random(), ragIndexID, 5, 0});
        } else {
            std::erase_if(edited.ragAttachments, [&](const AgentRAGAttachment& attachment) {
                return attachment.ragIndexID == ragIndexID;
            });
        }
    });
}

template <class Write>
void AppState::editAttachment(Uuid agentID, Uuid ragIndexID, Write write) {
    const Agent* current = agent(agentID);
    if (!current || !isAttached(*current, ragIndexID)) {
        return;
    }
    editFirst(agents, agentID, [&](Agent& edited) {
        write(
            *std::ranges::find(edited.ragAttachments, ragIndexID, &AgentRAGAttachment::ragIndexID));
    });
}

void AppState::setRAGTopK(Uuid agentID, Uuid ragIndexID, std::int64_t topK) {
    editAttachment(agentID, ragIndexID,
                   [&](AgentRAGAttachment& attachment) { attachment.topK = topK; });
}

void AppState::setRAGThreshold(Uuid agentID, Uuid ragIndexID, double threshold) {
    editAttachment(agentID, ragIndexID,
                   [&](AgentRAGAttachment& attachment) { attachment.threshold = threshold; });
}

bool AppState::addContextFieldName(Uuid agentID, std::string_view text) {
    const std::string name(trimBlanksAndTabs(text));
    if (name.empty()) {
        return false;
    }
    const Agent* current = agent(agentID);
    if (current &&
        std::ranges::find(current->contextFieldNames, name) == current->contextFieldNames.end()) {
        editFirst(agents, agentID,
                  [&](Agent& edited) { edited.contextFieldNames.push_back(name); });
    }
    return true;
}

void AppState::removeContextFieldName(Uuid agentID, std::string_view name) {
    const Agent* current = agent(agentID);
    if (current &&
        std::ranges::find(current->contextFieldNames, name) != current->contextFieldNames.end()) {
        editFirst(agents, agentID, [removed = std::string(name)](Agent& edited) {
            std::erase(edited.contextFieldNames, removed);
        });
    }
}

void AppState::insertContextPlaceholder(Uuid agentID, std::string_view fieldName) {
    const std::string inserted = " " + contextPlaceholder(fieldName);
    editFirst(agents, agentID, [&](Agent& edited) { edited.instructions += inserted; });
}

} // namespace ombrel
