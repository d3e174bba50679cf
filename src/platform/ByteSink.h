#pragma once

#include <functional>
#include <string_view>

namespace ombrel {

// Takes the next bytes of something that is written front to back. False means that it could not;
// why is known to whoever made the sink, and nothing more is written.
using ByteSink = std::function<bool(std::string_view bytes)>;

} // namespace ombrel
