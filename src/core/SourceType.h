#pragma once

#include "core/Record.h"

namespace ombrel {

enum class SourceType { markdown, pdf, text };

constexpr auto rawValues(SourceType) {
    using enum SourceType;
    return std::array{RawValue<SourceType>{markdown, "Markdown"}, RawValue<SourceType>{pdf, "PDF"},
                      RawValue<SourceType>{text, "Text"}};
}

} // namespace ombrel
