#include "export/PackageName.h"

#include "platform/Text.h"

namespace ombrel {

std::string packageName(std::string_view projectName) {
    std::string name;
    for (std::size_t i = 0; i < projectName.size();) {
        const DecodedScalar decoded = decodeScalar(projectName, i);
        if (isAlphanumeric(decoded.scalar)) {
            name.append(projectName, i, decoded.length);
        }
        i += decoded.length;
    }
    if (name.empty()) {
        name = "Project";
    }
    if (isNumber(decodeScalar(name, 0).scalar)) {
        name.insert(0, "P");
    }
    return name + "RAG";
}

} // namespace ombrel
