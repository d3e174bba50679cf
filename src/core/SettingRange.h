#pragma once

namespace ombrel {

// The numbers that a setting of the recipe can be given; both ends belong to it. A file may hold
// any number all the same.
struct SettingRange {
    double least;
    double most;
};

inline constexpr SettingRange targetChunkSizeRange{100, 1000}; // estimated tokens
inline constexpr SettingRange overlapPercentRange{0, 30};
inline constexpr SettingRange generatedQuestionsPerChunkRange{1, 8};
inline constexpr SettingRange topKRange{1, 20};
inline constexpr SettingRange contextBudgetRange{500, 8192}; // tokens

} // namespace ombrel
