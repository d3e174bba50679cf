#include "platform/CaseInsensitiveSearch.h"

#include "platform/Text.h"

#include <cstddef>
#include <unicode/casemap.h>
#include <unicode/locid.h>
#include <unicode/stringpiece.h>
#include <unicode/uchar.h>
#include <vector>

namespace ombrel {

namespace {

std::string folded(std::string_view text, std::uint32_t options) {
    const std::string valid = canonicalKey(repairUtf8(text));
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    UErrorCode error = U_ZERO_ERROR;
    icu::CaseMap::utf8Fold(options,
                           icu::StringPiece(valid.data(), static_cast<std::int32_t>(valid.size())),
                           sink, nullptr, error);
    return canonicalKey(U_SUCCESS(error) ? result : valid);
}

// Whether a character of the text starts at the offset; one does at its end.
std::vector<bool> characterStarts(std::string_view text) {
    std::vector<bool> starts(text.size() + 1, false);
    CharacterCursor cursor(text);
    do {
        starts[cursor.offset()] = true;
    } while (!cursor.next().empty());
    return starts;
}

} // namespace

bool containsIgnoringCase(std::string_view text, std::string_view part, const std::string& locale) {
    const icu::Locale known = locale.empty() ? icu::Locale() : icu::Locale(locale.c_str());
    const std::string_view language = known.getLanguage();
    const bool isTurkic = language == "tr" || language == "az";
    const std::uint32_t options = isTurkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
    const std::string whole = folded(text, options);
    const std::string wanted = folded(part, options);
    const std::vector<bool> starts = characterStarts(whole);
    for (std::size_t at = whole.find(wanted); at != std::string::npos;
         at = whole.find(wanted, at + 1)) {
        if (starts[at] && starts[at + wanted.size()]) {
            return true;
        }
    }
    return false;
}

} // namespace ombrel
