#include "flows/FlowSpecBuilderError.h"

#include <array>

namespace ombrel {

std::string FlowSpecBuilderError::message() const {
    static constexpr std::array<const char*, 6> messages{
        "A node references a deleted agent.",
        "A node references a deleted tool.",
        "A node is missing a required connection.",
        "This flow has no Start node.",
        "Start isn't connected to an agent.",
        "A connection points at a node that no longer exists."};
    static_assert(messages.size() == std::variant_size_v<decltype(value)>);
    return messages[value.index()];
}

} // namespace ombrel
