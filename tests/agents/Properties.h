#pragma once

#include "core/AgentOutputKind.h"
#include "core/AgentProperty.h"

#include <string>
#include <utility>
#include <vector>

// Short ways to write properties, cases and their kinds.
namespace ombrel::test {

inline AgentProperty property(std::string name, PropertyKind kind, bool isOptional = false) {
    AgentProperty made;
    made.id = Uuid::random();
    made.name = std::move(name);
    made.kind = std::move(kind);
    made.isOptional = isOptional;
    return made;
}

inline PropertyKind stringKind() {
    return {PropertyKind::String{}};
}
inline PropertyKind intKind() {
    return {PropertyKind::Int{}};
}
inline PropertyKind doubleKind() {
    return {PropertyKind::Double{}};
}
inline PropertyKind boolKind() {
    return {PropertyKind::Bool{}};
}
inline PropertyKind arrayOf(PropertyKind element) {
    return {PropertyKind::Array{std::move(element)}};
}
inline PropertyKind objectOf(std::vector<AgentProperty> properties) {
    return {PropertyKind::Object{std::move(properties)}};
}

inline std::vector<AgentEnumCase> enumCases(const std::vector<std::string>& names) {
    std::vector<AgentEnumCase> made;
    for (const std::string& name : names) {
        made.push_back({Uuid::random(), name, std::nullopt});
    }
    return made;
}
inline PropertyKind enumerationOf(const std::vector<std::string>& names) {
    return {PropertyKind::Enumeration{enumCases(names)}};
}

inline AgentOutputKind objectOutput(std::vector<AgentProperty> properties) {
    return {AgentOutputKind::Object{std::move(properties)}};
}
inline AgentOutputKind enumerationOutput(const std::vector<std::string>& names) {
    return {AgentOutputKind::Enumeration{enumCases(names)}};
}
inline AgentOutputKind textOutput() {
    return {AgentOutputKind::Text{}};
}

} // namespace ombrel::test
