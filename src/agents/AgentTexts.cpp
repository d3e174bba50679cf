#include "agents/AgentTexts.h"

#include "platform/FixedPoint.h"

namespace ombrel {

std::string runStatusText(const AgentRunResult& result) {
    return result.isError ? "Failed" : fixedPoint(result.durationSeconds, 2) + "s";
}

} // namespace ombrel
