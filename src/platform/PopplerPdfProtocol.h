#pragma once

#include <cstdint>

// What passes between `PopplerPdf` and `ombrel-pdf-helper`. The helper is given the path of the
// file as its only argument and writes to its standard output the number of pages (8 bytes), then
// each page: one byte, which is 1 before a text and 0 for a page that cannot be read, and for a
// text its length (4 bytes) and its bytes in UTF-8. Numbers are little endian.
namespace ombrel::pdf {

inline constexpr std::uint64_t maximumPages = 100'000;

// The helper's exit statuses. Poppler may end the process with others.
inline constexpr int statusComplete = 0;
inline constexpr int statusCannotOpen = 10;
inline constexpr int statusOutOfMemory = 11;
inline constexpr int statusTooManyPages = 12;

} // namespace ombrel::pdf
