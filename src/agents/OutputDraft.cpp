#include "agents/OutputDraft.h"

#include "platform/Text.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace ombrel {

namespace {

template <class T>
bool hasNameless(const std::vector<T>& list) {
    return std::ranges::any_of(
        list, [](const T& element) { return trimBlanksAndTabs(element.name).empty(); });
}

} // namespace

OutputDraft::OutputDraft(AgentOutputKind output) {
    import(std::move(output));
}

void OutputDraft::setKind(AgentOutputKind::Kind kind) {
    if (kind == m_draft.kind()) {
        return;
    }
    switch (kind) {
    case AgentOutputKind::Kind::text:
        m_draft.value = AgentOutputKind::Text{};
        break;
    case AgentOutputKind::Kind::enumeration:
        m_draft.value = AgentOutputKind::Enumeration{m_cachedEnumCases};
        break;
    case AgentOutputKind::Kind::object:
        m_draft.value = AgentOutputKind::Object{m_cachedObjectProperties};
        break;
    }
}

void OutputDraft::setCases(std::vector<AgentEnumCase> cases) {
    m_cachedEnumCases = std::move(cases);
    m_draft.value = AgentOutputKind::Enumeration{m_cachedEnumCases};
}

void OutputDraft::setProperties(std::vector<AgentProperty> properties) {
    m_cachedObjectProperties = std::move(properties);
    m_draft.value = AgentOutputKind::Object{m_cachedObjectProperties};
}

void OutputDraft::import(AgentOutputKind output) {
    m_draft = std::move(output);
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&m_draft.value)) {
        m_cachedEnumCases = enumeration->cases;
    } else if (const auto* object = std::get_if<AgentOutputKind::Object>(&m_draft.value)) {
        m_cachedObjectProperties = object->properties;
    }
}

std::optional<std::string_view> validationMessage(const AgentOutputKind& draft) {
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&draft.value)) {
        if (enumeration->cases.empty()) {
            return "Add at least one case.";
        }
        if (hasNameless(enumeration->cases)) {
            return "Every case needs a name.";
        }
    } else if (const auto* object = std::get_if<AgentOutputKind::Object>(&draft.value)) {
        if (object->properties.empty()) {
            return "Add at least one property.";
        }
        if (hasNameless(object->properties)) {
            return "Every property needs a name.";
        }
    }
    return std::nullopt;
}

} // namespace ombrel
