// Any bytes as Swift source: every type in it can be made an output, which keeps to the limits, and
// no warning is there twice.
#include "generable/ConversionContext.h"
#include "generable/GenerableImporter.h"
#include "platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <string_view>

using namespace ombrel;

namespace {

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

std::size_t countParts(const std::vector<AgentProperty>& properties, int depth);

std::size_t countParts(const PropertyKind& kind, int depth) {
    check(depth <= ConversionContext::maximumDepth);
    if (const auto* object = std::get_if<PropertyKind::Object>(&kind.value)) {
        return countParts(object->properties, depth + 1);
    }
    const auto* array = std::get_if<PropertyKind::Array>(&kind.value);
    return array != nullptr ? countParts(*array->element, depth + 1) : 0;
}

std::size_t countParts(const std::vector<AgentProperty>& properties, int depth) {
    std::size_t count = properties.size();
    for (const AgentProperty& property : properties) {
        check(property.description != std::string());
        count += countParts(property.kind, depth);
    }
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view source(reinterpret_cast<const char*>(data), size);
    const std::vector<ParsedType> types = GenerableImporter::parse(source).types;
    const std::vector<ParsedType> roots = GenerableImporter::candidateRoots(types);
    check(roots.empty() == types.empty());
    std::size_t declared = 0;
    std::set<std::int64_t> lines;
    for (const ParsedType& type : types) {
        declared += type.properties.size() + type.cases.size();
        lines.insert(type.line);
        for (const ParsedProperty& property : type.properties) {
            lines.insert(property.line);
        }
    }
    constexpr std::size_t rootsTried = 8;
    for (std::size_t i = 0; i < std::min(types.size(), rootsTried); ++i) {
        const auto converted = GenerableImporter::convert(types, types[i].name);
        check(converted.output.has_value() || size * size > ConversionContext::maximumText);
        if (!converted.output) {
            continue;
        }
        if (const auto* object = std::get_if<AgentOutputKind::Object>(&converted.output->value)) {
            check(countParts(object->properties, 1) <=
                  declared + ConversionContext::maximumRepetition);
        }
        std::set<std::string> ids;
        for (const GenerableImportWarning& warning : converted.warnings) {
            check(warning.line && lines.contains(*warning.line));
            check(ids.insert(warning.id()).second);
        }
    }
    return 0;
}
