#pragma once

#include "core/RAGIndex.h"

#include <string>

namespace ombrel {

// "3/12".
std::string progressText(Progress progress);

} // namespace ombrel
