#include "core/ProgressText.h"

namespace ombrel {

std::string progressText(Progress progress) {
    return std::to_string(progress.completed) + "/" + std::to_string(progress.total);
}

} // namespace ombrel
