#pragma once

#include "core/AgentOutputKind.h"
#include "core/AgentProperty.h"
#include "platform/GenerationSchema.h"
#include "platform/Result.h"

#include <optional>
#include <string>
#include <vector>

// What an agent's answer is held to.
namespace ombrel {

// Nothing for text and for an enumeration without cases. Fails when the schema can't be held, such
// as that of an object with two properties of one name.
Result<std::optional<GenerationSchema>> generationSchema(const AgentOutputKind& output);

// An enumeration without cases is any string, so that an unfinished property blocks no run.
DynamicGenerationSchema dynamicSchema(const PropertyKind& kind, const std::string& name);

DynamicGenerationSchema objectSchema(const std::string& name,
                                     const std::vector<AgentProperty>& properties);

} // namespace ombrel
