#include "generable/GenerableImporter.h"

#include "generable/ConversionContext.h"
#include "generable/Parser.h"
#include "platform/Text.h"

#include <algorithm>
#include <string>
#include <unordered_set>

namespace ombrel {

ParsedFile GenerableImporter::parse(std::string_view source) {
    return {Parser(source).parseDeclarations()};
}

std::vector<ParsedType> GenerableImporter::candidateRoots(const std::vector<ParsedType>& types) {
    const bool hasGenerable =
        std::any_of(types.begin(), types.end(), [](const auto& type) { return type.isGenerable; });
    std::vector<const ParsedType*> pool;
    for (const ParsedType& type : types) {
        if (type.isGenerable || !hasGenerable) {
            pool.push_back(&type);
        }
    }
    std::unordered_set<std::string> referred;
    for (const ParsedType* type : pool) {
        for (const ParsedProperty& property : type->properties) {
            if (property.type && property.type->kind == TypeRef::Kind::named &&
                !canonicallyEqual(property.type->text, type->name)) {
                referred.insert(canonicalKey(property.type->text));
            }
        }
    }
    std::vector<ParsedType> roots;
    for (const ParsedType* type : pool) {
        if (!referred.contains(canonicalKey(type->name))) {
            roots.push_back(*type);
        }
    }
    if (roots.empty()) {
        for (const ParsedType* type : pool) {
            roots.push_back(*type);
        }
    }
    std::stable_sort(roots.begin(), roots.end(),
                     [](const auto& a, const auto& b) { return a.line < b.line; });
    return roots;
}

GenerableImporter::Converted GenerableImporter::convert(const std::vector<ParsedType>& types,
                                                        std::string_view rootName) {
    ConversionContext context(types);
    Converted converted;
    converted.output = context.convertRoot(rootName);
    converted.warnings = std::move(context.warnings);
    return converted;
}

} // namespace ombrel
