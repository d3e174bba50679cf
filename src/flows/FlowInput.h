#pragma once

#include "core/AgentProperty.h"

#include <map>
#include <string>
#include <vector>

namespace ombrel {

// The input of a single-shot run as the text of a JSON object: for each field what the user typed
// for it, numbers and booleans as such. A number that can't be read is 0; a field of objects or of
// a list is handed over as the text that was typed. "{}" when a number is too large to be told.
std::string flowInputJSON(const std::vector<AgentProperty>& fields,
                          const std::map<std::string, std::string>& typed);

} // namespace ombrel
