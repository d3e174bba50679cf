#include "platform/Cld2Recognizer.h"

#include "platform/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio> // used and not included by the next
#include <vector> // the same

#include <cld2/public/compact_lang_det.h>
#include <cld2/public/encodings.h>

namespace ombrel {

namespace {

constexpr std::size_t maximumBytes = std::size_t{64} << 10;
// A text that is longer than 2 KiB and repeats itself is thinned by CLD2, down to fragments in
// which it sees other languages or none. So it is asked about pieces that are shorter than that.
constexpr std::size_t pieceBytes = 2'000;

// CLD2 gives up at controls and noncharacters, which text from PDFs holds.
bool isAcceptable(char32_t scalar) {
    if (scalar < 0x20) {
        return scalar == '\t' || scalar == '\n' || scalar == '\r';
    }
    const bool isControl = scalar >= 0x7f && scalar < 0xa0;
    const bool isNoncharacter =
        (scalar >= 0xfdd0 && scalar <= 0xfdef) || (scalar & 0xfffe) == 0xfffe;
    return !isControl && !isNoncharacter;
}

std::string acceptable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t offset = 0; offset < text.size();) {
        const DecodedScalar decoded = decodeScalar(text, offset);
        appendScalar(result, isAcceptable(decoded.scalar) ? decoded.scalar : U' ');
        offset += decoded.length;
    }
    return result;
}

// CLD2's code as a BCP 47 identifier; nothing for what is a script or a joke and no language.
std::optional<std::string> identifierOf(std::string_view code) {
    struct Other {
        std::string_view code;
        std::string_view identifier;
    };
    static constexpr std::array others{
        Other{"zh", "zh-Hans"}, Other{"iw", "he"},  Other{"no", "nb"}, Other{"nn", "nb"},
        Other{"jw", "jv"},      Other{"mo", "ro"},  Other{"in", "id"}, Other{"ji", "yi"},
        Other{"sr-ME", "sr"},   Other{"fil", "tl"},
    };
    for (const Other& other : others) {
        if (other.code == code) {
            return std::string(other.identifier);
        }
    }
    if (code.empty() || code == "un" || code.starts_with("xx") || code.starts_with("zz")) {
        return std::nullopt;
    }
    return std::string(code);
}

// Where the piece that starts the text ends: after a blank if it can be, else after a character.
std::size_t pieceEnd(std::string_view text) {
    if (text.size() <= pieceBytes) {
        return text.size();
    }
    const std::size_t blank = text.find_last_of(" \n\t\r", pieceBytes - 1);
    if (blank != std::string_view::npos && blank >= pieceBytes / 2) {
        return blank + 1;
    }
    std::size_t end = pieceBytes;
    while ((static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) {
        --end;
    }
    return end;
}

struct Finding {
    CLD2::Language language = CLD2::UNKNOWN_LANGUAGE;
    int letterBytes = 0;
};

Finding find(std::string_view piece) {
    const CLD2::CLDHints hints{nullptr, nullptr, CLD2::UNKNOWN_ENCODING, CLD2::UNKNOWN_LANGUAGE};
    std::array<CLD2::Language, 3> languages{};
    std::array<int, 3> percents{};
    std::array<double, 3> scores{};
    Finding finding;
    bool isReliable = false;
    int validBytes = 0;
    const CLD2::Language language = CLD2::ExtDetectLanguageSummaryCheckUTF8(
        piece.data(), static_cast<int>(piece.size()), true, &hints, 0, languages.data(),
        percents.data(), scores.data(), nullptr, &finding.letterBytes, &isReliable, &validBytes);
    if (isReliable) {
        finding.language = language;
    }
    return finding;
}

} // namespace

std::optional<std::string> Cld2Recognizer::dominantLanguage(std::string_view text) const {
    const std::string plain = acceptable(text.substr(0, maximumBytes));
    std::vector<Finding> sums;
    std::string_view rest = plain;
    while (!rest.empty()) {
        const std::string_view piece = rest.substr(0, pieceEnd(rest));
        rest.remove_prefix(piece.size());
        const Finding finding = find(piece);
        const auto sum = std::find_if(sums.begin(), sums.end(), [&finding](const Finding& one) {
            return one.language == finding.language;
        });
        if (sum != sums.end()) {
            sum->letterBytes += finding.letterBytes;
        } else if (finding.language != CLD2::UNKNOWN_LANGUAGE) {
            sums.push_back(finding);
        }
    }
    const auto most =
        std::max_element(sums.begin(), sums.end(), [](const Finding& a, const Finding& b) {
            return a.letterBytes < b.letterBytes;
        });
    return most == sums.end() ? std::nullopt : identifierOf(CLD2::LanguageCode(most->language));
}

} // namespace ombrel
