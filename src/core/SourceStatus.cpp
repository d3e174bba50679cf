#include "core/SourceStatus.h"

namespace ombrel {

std::string SourceStatus::label() const {
    if (const auto* oversized = std::get_if<Oversized>(&value)) {
        return std::to_string(oversized->count) + " oversized";
    }
    if (const auto* empty = std::get_if<EmptyPage>(&value)) {
        return std::to_string(empty->count) + (empty->count == 1 ? " empty page" : " empty pages");
    }
    return "Ready";
}

} // namespace ombrel
