#pragma once

#include "platform/LanguageRecognizer.h"

namespace ombrel {

// Language recognition by CLD2. A language is given only where CLD2 calls it reliable: a word or
// two, digits, punctuation and random letters have none. Of a text longer than 64 KiB the start
// counts. The two ways of writing Norwegian are both "nb".
class Cld2Recognizer final : public LanguageRecognizer {
  public:
    std::optional<std::string> dominantLanguage(std::string_view text) const override;
};

} // namespace ombrel
