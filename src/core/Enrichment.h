#pragma once

#include "core/Record.h"

namespace ombrel {

enum class Enrichment { contextualNotes, generatedQuestions, parentChild };

constexpr auto rawValues(Enrichment) {
    using enum Enrichment;
    return std::array{RawValue<Enrichment>{contextualNotes, "Contextual notes"},
                      RawValue<Enrichment>{generatedQuestions, "Generated questions"},
                      RawValue<Enrichment>{parentChild, "Parent\u2013child"}};
}

std::string_view subtitle(Enrichment enrichment);

} // namespace ombrel
