#pragma once

namespace ombrel {

// What a colour says.
enum class Tone { neutral, accent, success, warning, danger };

} // namespace ombrel
