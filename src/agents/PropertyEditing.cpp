#include "agents/PropertyEditing.h"

#include <utility>
#include <variant>

namespace ombrel {

namespace {

using BaseKind = PropertyKind::BaseKind;

// What the kind is for its nested list: the element of an array, else the kind itself.
const PropertyKind& listOwner(const PropertyKind& kind) {
    const auto* array = std::get_if<PropertyKind::Array>(&kind.value);
    return array ? *array->element : kind;
}

PropertyKind& listOwner(PropertyKind& kind) {
    return const_cast<PropertyKind&>(listOwner(std::as_const(kind)));
}

// The kind's own value, or its element's, when it is a `Kind`; else an empty one.
template <class Kind>
PropertyKind kept(const PropertyKind& current) {
    const auto* found = std::get_if<Kind>(&listOwner(current).value);
    return {found ? *found : Kind{}};
}

std::string heading(std::string_view start, std::string_view name) {
    return std::string(start) + std::string(name.empty() ? "this property" : name);
}

} // namespace

AgentProperty newProperty() {
    AgentProperty property;
    property.id = Uuid::random();
    return property;
}

AgentEnumCase newEnumCase() {
    AgentEnumCase enumCase;
    enumCase.id = Uuid::random();
    return enumCase;
}

std::optional<std::string> storedDescription(std::string typed) {
    if (typed.empty()) {
        return std::nullopt;
    }
    return typed;
}

PropertyKind kindAfterChange(BaseKind chosen, const PropertyKind& current) {
    switch (chosen) {
    case BaseKind::string:
        return {PropertyKind::String{}};
    case BaseKind::integer:
        return {PropertyKind::Int{}};
    case BaseKind::number:
        return {PropertyKind::Double{}};
    case BaseKind::boolean:
        return {PropertyKind::Bool{}};
    case BaseKind::object:
        return kept<PropertyKind::Object>(current);
    case BaseKind::enumeration:
        return kept<PropertyKind::Enumeration>(current);
    case BaseKind::array:
        break;
    }
    switch (current.baseKind()) {
    case BaseKind::array:
        return current;
    case BaseKind::object:
    case BaseKind::enumeration:
        return {PropertyKind::Array{current}};
    default:
        return {PropertyKind::Array{}};
    }
}

std::vector<BaseKind> elementKinds() {
    std::vector<BaseKind> kinds;
    for (const auto& entry : rawValues(BaseKind{})) {
        if (entry.value != BaseKind::array) {
            kinds.push_back(entry.value);
        }
    }
    return kinds;
}

PropertyKind kindAfterElementChange(BaseKind chosen, const PropertyKind& array) {
    const auto* current = std::get_if<PropertyKind::Array>(&array.value);
    if (!current) {
        return array;
    }
    return {PropertyKind::Array{kindAfterChange(chosen, *current->element)}};
}

const std::vector<AgentProperty>* nestedProperties(const PropertyKind& kind) {
    const auto* object = std::get_if<PropertyKind::Object>(&listOwner(kind).value);
    return object ? &object->properties : nullptr;
}

std::vector<AgentProperty>* nestedProperties(PropertyKind& kind) {
    return const_cast<std::vector<AgentProperty>*>(nestedProperties(std::as_const(kind)));
}

std::vector<AgentEnumCase>* nestedCases(PropertyKind& kind) {
    auto* enumeration = std::get_if<PropertyKind::Enumeration>(&listOwner(kind).value);
    return enumeration ? &enumeration->cases : nullptr;
}

std::string nestedPropertiesHeading(std::string_view name) {
    return heading("Properties of ", name);
}

std::string nestedCasesHeading(std::string_view name) {
    return heading("Cases of ", name);
}

} // namespace ombrel
