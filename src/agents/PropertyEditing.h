#pragma once

#include "core/AgentEnumCase.h"
#include "core/AgentProperty.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How rows of properties and cases are made and changed.
namespace ombrel {

// Without a name or description, and of kind `string`.
AgentProperty newProperty();
AgentEnumCase newEnumCase();

// What is stored of a description as typed: nothing when it is empty.
std::optional<std::string> storedDescription(std::string typed);

// The kind after another type was picked for it. Keeps what can be kept: nested properties or cases
// go into the element of an array and come back out of it.
PropertyKind kindAfterChange(PropertyKind::BaseKind chosen, const PropertyKind& current);

// The types that can be picked for the elements of an array: all but `array`.
std::vector<PropertyKind::BaseKind> elementKinds();
// The array after one of these was picked for its elements. What is no array stays as it is.
PropertyKind kindAfterElementChange(PropertyKind::BaseKind chosen, const PropertyKind& array);

// The list to show below a property: of an object or an array of objects its properties, of an
// enumeration or an array of one its cases. Null when there is none. Points into `kind`.
std::vector<AgentProperty>* nestedProperties(PropertyKind& kind);
const std::vector<AgentProperty>* nestedProperties(const PropertyKind& kind);
std::vector<AgentEnumCase>* nestedCases(PropertyKind& kind);
// What stands above that list; an empty name reads "this property".
std::string nestedPropertiesHeading(std::string_view name);
std::string nestedCasesHeading(std::string_view name);

} // namespace ombrel
