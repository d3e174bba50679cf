#pragma once

#include "core/BuildSettings.h"

#include <string>
#include <string_view>
#include <vector>

// What the faces of the system say about a recipe.
namespace ombrel {

inline constexpr std::string_view recipeTitle = "Recipe";
inline constexpr std::string_view recipeNote =
    "What actually happens, from indexing to answer, with an example for each step under the "
    "current settings.";
inline constexpr std::string_view spotlightNote =
    "Keyword, Vector, and Hybrid have a real implementation \u2014 Spotlight doesn't yet.";

// One step of the way from the documents to an answer.
struct RecipeStep {
    std::string title;
    std::string tag;     // what does it, or how
    std::string example; // the step at work under the settings
    bool operator==(const RecipeStep&) const = default;
};

// The six steps in their order. They tell of what is chosen, whether or not it works.
std::vector<RecipeStep> recipeSteps(const BuildSettings& settings);

// The numbers of a recipe as they are shown: truncated, and with their unit.
std::string targetChunkSizeText(const BuildSettings& settings); // "400 tokens"
std::string overlapPercentText(const BuildSettings& settings);  // "10%"
std::string generatedQuestionsPerChunkText(const BuildSettings& settings);
std::string topKText(const BuildSettings& settings);
std::string contextBudgetText(const BuildSettings& settings); // "3,000 of 8,192 tokens"

} // namespace ombrel
