#pragma once

#include "core/AppState.h"

#include <QString>

namespace ombrel {

// What a thing is called where it is listed: its name, or what stands for an empty one.
QString titleOf(const RAGIndex& index);
QString titleOf(const Agent& agent);
QString titleOf(const ToolDefinition& tool);
QString titleOf(const Flow& flow);

// What it is, in a few words.
QString detailOf(const RAGIndex& index);
QString detailOf(const Agent& agent);
QString detailOf(const ToolDefinition& tool);
QString detailOf(const Flow& flow);

} // namespace ombrel
