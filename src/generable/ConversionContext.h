#pragma once

#include "core/AgentOutputKind.h"
#include "generable/GenerableImportWarning.h"
#include "generable/ParsedType.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace ombrel {

// One conversion of parsed types into an output. The types must outlive it.
//
// A type is converted anew in each place that refers to it, so types that refer to several others
// can multiply without end. The limits below end that; source that people write is far from them.
class ConversionContext {
  public:
    // Properties and cases that the output may have more than the source declares.
    static constexpr std::size_t maximumRepetition = 10'000;
    // Bytes of the names and texts in the output.
    static constexpr std::size_t maximumText = std::size_t{64} << 20;
    // Levels of objects and arrays, the output itself among them: fewer than a schema or a project
    // file carries.
    static constexpr int maximumDepth = 60;

    explicit ConversionContext(const std::vector<ParsedType>& types);

    // The output that the type of this name describes; none when there is no such type, or when
    // its texts alone are over the limit.
    std::optional<AgentOutputKind> convertRoot(std::string_view rootName);

    // In the order of the first report; each is there once.
    std::vector<GenerableImportWarning> warnings;

  private:
    // A declared type, and what it takes of the limits by itself.
    struct Entry {
        const ParsedType* type = nullptr;
        std::size_t parts = 0;
        std::size_t text = 0;
    };
    // What a reference is made in: for the words of the warnings, and to tell what is too deep.
    struct Place {
        std::string_view propertyName;
        std::int64_t line = 1;
        int depth = 0; // objects and arrays around it
    };

    void addWarning(std::int64_t line, std::string message);
    std::vector<AgentEnumCase> convertCases(const ParsedType& type);
    std::vector<AgentProperty> convertProperties(const ParsedType& type, int depth);
    std::optional<AgentProperty> convertProperty(const ParsedProperty& property, int depth);
    PropertyKind convertType(const TypeRef& ref, std::size_t wrappers, Place place);
    PropertyKind convertNamed(const std::string& name, Place place);
    PropertyKind convertDeclared(const std::string& name, const Entry& entry, Place place);
    void checkGenerable(const ParsedType& type);
    bool takeRoom(const Entry& entry);

    std::unordered_map<std::string, Entry> m_typesByName; // by canonical key
    std::unordered_set<GenerableImportWarning> m_seen;
    std::unordered_set<const ParsedType*> m_warnedNonGenerable;
    std::vector<const ParsedType*> m_visited; // on the path from the root
    std::size_t m_roomForParts = maximumRepetition;
    std::size_t m_roomForText = maximumText;
};

} // namespace ombrel
