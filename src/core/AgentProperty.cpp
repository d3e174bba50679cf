#include "core/AgentProperty.h"

namespace ombrel {

bool PropertyKind::Object::operator==(const Object& other) const {
    return properties == other.properties;
}

bool PropertyKind::Array::operator==(const Array& other) const {
    return element == other.element;
}

bool PropertyKind::operator==(const PropertyKind& other) const {
    return value == other.value;
}

PropertyKind::BaseKind PropertyKind::baseKind() const {
    return rawValues(BaseKind{})[value.index()].value;
}

std::string PropertyKind::typeLabel() const {
    if (const auto* array = std::get_if<Array>(&value)) {
        return "[" + array->element->typeLabel() + "]";
    }
    return std::string(rawValue(baseKind()));
}

} // namespace ombrel
