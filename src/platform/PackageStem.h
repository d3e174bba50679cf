#pragma once

#include <string>
#include <string_view>

namespace ombrel {

// What a project's Swift packages are named after: the letters, marks and numbers of its name, with
// "P" in front of a number. Empty when it has none. "My Docs" gives "MyDocs".
std::string packageStem(std::string_view projectName);

} // namespace ombrel
