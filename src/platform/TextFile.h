#pragma once

#include "platform/Result.h"

#include <filesystem>
#include <string>

namespace ombrel {

inline constexpr const char* notARegularFile =
    "The file couldn't be opened because it isn't a regular file.";

// The bytes of a text file, a byte order mark included. Fails when it can't be opened or read, is
// no regular file (a device or a pipe is not touched), is larger than 1 GB or is not valid UTF-8.
// Any thread.
Result<std::string> readTextFile(const std::filesystem::path& file);

} // namespace ombrel
