#pragma once

#include <string>

namespace ombrel {

// The bytes of a file, or of standard input for "-". Throws `Failure` when they can't be read.
std::string readAll(const std::string& path);

// A text given as an argument: "@FILE" stands for the file's text and "@-" for standard input,
// anything else for itself. Throws `Failure` when it can't be read or isn't UTF-8.
std::string argumentText(const std::string& argument);
// What the help says about such an argument.
inline constexpr const char* argumentTextHelp = " (@FILE reads a file, @- standard input)";

} // namespace ombrel
