#pragma once

#include <string_view>

namespace ombrel {

// The words that begin or modify a declaration.
enum class SwiftWord {
    none,
    modifier,
    variable,   // var, let
    caseWord,   // case
    typeWord,   // struct, class, actor, enum, extension, protocol
    function,   // func, init, deinit, subscript, macro
    expression, // typealias and others that go on to the next declaration
};

SwiftWord swiftWord(std::string_view word);

} // namespace ombrel
