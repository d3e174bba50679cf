#pragma once

#include "core/Record.h"

namespace ombrel {

// The tabs of a RAG index.
enum class AppTab { project, sources, settings, index, evaluation, playground, exportPackage };

constexpr auto rawValues(AppTab) {
    using enum AppTab;
    return std::array{
        RawValue<AppTab>{project, "Project"},       RawValue<AppTab>{sources, "Sources"},
        RawValue<AppTab>{settings, "Settings"},     RawValue<AppTab>{index, "Index"},
        RawValue<AppTab>{evaluation, "Evaluation"}, RawValue<AppTab>{playground, "Playground"},
        RawValue<AppTab>{exportPackage, "Export"}};
}

} // namespace ombrel
