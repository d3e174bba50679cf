#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ombrel {

// RFC 4648, section 4, with padding and without line ends.
std::string base64(std::string_view bytes);
// Nothing for any other text.
std::optional<std::string> bytesOfBase64(std::string_view text);

} // namespace ombrel
