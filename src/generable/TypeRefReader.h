#pragma once

#include "generable/TokenCursor.h"
#include "generable/TypeRef.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

namespace ombrel {

// Reads the types of annotations. Types contain types without end, so what is open is kept in an
// array and not on the stack.
class TypeRefReader {
  public:
    explicit TypeRefReader(TokenCursor& cursor) : m_cursor(cursor) {}

    // Reads the type at the cursor; always one, and never past what a type can be made of.
    TypeRef parseTypeRef();

  private:
    // A type that waits for one that is inside it, or follows it.
    struct Open {
        enum class Kind { existential, arguments, element, value, returned };
        Kind kind;
        std::string_view name = {};           // of `existential` and `arguments`
        std::size_t argumentCount = 0;        // of `arguments`, so far
        std::optional<TypeRef> argument = {}; // the first of them
    };

    // Each reads on until a type is finished, or none when one has to be read first: then what
    // waits for it is open.
    std::optional<TypeRef> begin();
    std::optional<TypeRef> resume(TypeRef inner);
    std::optional<TypeRef> readName(Open named);
    bool readsArgument();
    std::optional<TypeRef> finishWithSuffixes(TypeRef type);
    std::optional<TypeRef> finish(TypeRef type);
    std::optional<TypeRef> wait(Open open);

    TokenCursor& m_cursor;
    std::vector<Open> m_open;
};

} // namespace ombrel
