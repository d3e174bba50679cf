#pragma once

#include "core/AgentOutputKind.h"
#include "generable/GenerableImportWarning.h"
#include "generable/ParsedType.h"

#include <optional>
#include <string_view>
#include <vector>

namespace ombrel {

// Makes an agent's output of `@Generable` declarations in Swift source. All of it is pure; any
// thread.
struct GenerableImporter {
    // Never fails; linear in the source, whatever its bytes.
    static ParsedFile parse(std::string_view source);

    // The types that no other one of them refers to, by line: of the @Generable types, or of all
    // when there are none. All of these when each is referred to.
    static std::vector<ParsedType> candidateRoots(const std::vector<ParsedType>& types);

    struct Converted {
        std::optional<AgentOutputKind> output; // with new ids
        std::vector<GenerableImportWarning> warnings;
    };
    // The type with this name as an output, with every type that it refers to in the place where it
    // does. What an output cannot say is a string, and a warning tells of it. So is a type whose
    // repetition would make the output too large (see ConversionContext.h); nothing is returned,
    // with a warning, when the root is too large by itself. Without a type of this name there is no
    // output and no warning. A name that is declared twice means the later one.
    static Converted convert(const std::vector<ParsedType>& types, std::string_view rootName);
};

} // namespace ombrel
