#pragma once

#include <string>
#include <string_view>

namespace ombrel {

// Whether `part`, which is not empty, stands anywhere in the text, whole characters of it, without
// regard to case and to how a character is composed. Case is that of `locale`, such as "tr_TR", in
// which a capital I is the one of the dotless ı; empty stands for the locale of the user.
bool containsIgnoringCase(std::string_view text, std::string_view part,
                          const std::string& locale = {});

} // namespace ombrel
