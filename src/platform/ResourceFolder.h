#pragma once

#include <filesystem>

namespace ombrel {

// Where the program's own resources lie: share/ombrel beside the folder of an installed program,
// else resources/ of the source tree that it was built from.
std::filesystem::path resourceFolder();

} // namespace ombrel
