#include "platform/PackageStem.h"

#include "platform/Text.h"

namespace ombrel {

std::string packageStem(std::string_view projectName) {
    std::string stem;
    for (std::size_t i = 0; i < projectName.size();) {
        const DecodedScalar decoded = decodeScalar(projectName, i);
        if (isAlphanumeric(decoded.scalar)) {
            stem.append(projectName, i, decoded.length);
        }
        i += decoded.length;
    }
    if (!stem.empty() && isNumber(decodeScalar(stem, 0).scalar)) {
        stem.insert(0, "P");
    }
    return stem;
}

} // namespace ombrel
