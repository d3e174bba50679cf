#include "export/PackageName.h"

#include "platform/PackageStem.h"

namespace ombrel {

std::string packageName(std::string_view projectName) {
    const std::string stem = packageStem(projectName);
    return (stem.empty() ? "Project" : stem) + "RAG";
}

} // namespace ombrel
