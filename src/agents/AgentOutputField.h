#pragma once

#include "agents/AgentOutputFieldValue.h"
#include "core/AgentProperty.h"
#include "core/Record.h"
#include "platform/GeneratedContent.h"
#include "platform/Uuid.h"

#include <string>
#include <vector>

namespace ombrel {

// One row of a structured answer.
struct AgentOutputField {
    Uuid id; // new for each run
    std::string name;
    std::string typeLabel;
    AgentOutputFieldValue value;

    static constexpr auto keys() {
        return std::tuple(required("id", &AgentOutputField::id),
                          required("name", &AgentOutputField::name),
                          required("typeLabel", &AgentOutputField::typeLabel),
                          required("value", &AgentOutputField::value));
    }
    bool operator==(const AgentOutputField&) const = default;
};

// A field for each property in declared order; none when the content is no structure.
std::vector<AgentOutputField> objectFields(const GeneratedContent& content,
                                           const std::vector<AgentProperty>& properties);

// `content` is null where the answer has no such key.
AgentOutputFieldValue fieldValue(const GeneratedContent* content, const PropertyKind& kind);

// The content as people read it: `{ title: Dune, year: 1965 }`, `[a, b]`, "—" for null. What does
// not have the kind shows its debug description, and so does an integer that 64 bits don't hold.
std::string renderContent(const GeneratedContent& content, const PropertyKind& kind);

} // namespace ombrel
