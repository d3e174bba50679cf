#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

// The whole rule of what a test question expects: as many parts, and each canonically equal. Case
// counts, and a prefix does not match. Two empty breadcrumbs match.
bool breadcrumbsMatch(const std::vector<std::string>& a, const std::vector<std::string>& b);

// The pieces between the characters ">" of a text, those that are empty left out. Parts of it.
std::vector<std::string_view> breadcrumbPieces(std::string_view text);

} // namespace ombrel
