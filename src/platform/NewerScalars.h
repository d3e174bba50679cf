#pragma once

#include <cstdint>

// What Unicode 15.1 to 17 and corrections of Unihan added to the properties that ICU 72 knows, as
// Swift 6.3 has them: generated packages are to cut texts into the same terms as the studio.
// Scalars that are not named here have ICU's properties.
namespace ombrel {

bool isNewerLetter(char32_t scalar);
bool isNewerNumber(char32_t scalar);
// Joins what is before it to a character.
bool isNewerMark(char32_t scalar);
// Joins what is after it.
bool isNewerPrefix(char32_t scalar);
// Joins what is after it according to ICU 72 only.
bool isPrefixNoLonger(char32_t scalar);
// The lower case of a capital letter; any other scalar itself.
char32_t newerLowercase(char32_t scalar);

} // namespace ombrel
