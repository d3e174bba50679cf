#include "core/Enrichment.h"

namespace ombrel {

std::string_view subtitle(Enrichment enrichment) {
    switch (enrichment) {
    case Enrichment::contextualNotes:
        return "Model adds a one-line note on where each chunk sits";
    case Enrichment::generatedQuestions:
        return "Index likely questions that point to each chunk";
    case Enrichment::parentChild:
        return "Match small chunks, send the whole parent section";
    }
    return {};
}

} // namespace ombrel
