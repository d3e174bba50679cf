#include "core/BuildSettings.h"

#include <limits>

namespace ombrel {

bool BuildSettings::matchesBuild(const BuildSettings& other) const {
    return chunking == other.chunking && targetChunkSize == other.targetChunkSize &&
           overlapPercent == other.overlapPercent && index == other.index &&
           enrichments == other.enrichments &&
           generatedQuestionsPerChunk == other.generatedQuestionsPerChunk;
}

std::int64_t truncated(double setting) {
    using Limits = std::numeric_limits<std::int64_t>;
    constexpr double bound = 9223372036854775808.0; // 2^63, one above the largest integer
    if (setting != setting) {
        return 0;
    }
    if (setting >= bound) {
        return Limits::max();
    }
    if (setting < -bound) {
        return Limits::min();
    }
    return static_cast<std::int64_t>(setting);
}

} // namespace ombrel
