#pragma once

#include <cstddef>

namespace ombrel {

// The room in bytes that writing the text of a real takes.
inline constexpr std::size_t longestRealText = 48;

// Writes the shortest decimal text that reads back as the same finite number, as std::to_chars
// does, and faster for what is usual (fractions of a magnitude from 1e-5 to 9e15). `to` has room
// for `longestRealText` bytes. Returns the end of the text. Any thread.
char* writeReal(double value, char* to);

} // namespace ombrel
