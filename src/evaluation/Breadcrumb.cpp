#include "evaluation/Breadcrumb.h"

#include "platform/Text.h"

#include <algorithm>
#include <cstddef>

namespace ombrel {

bool breadcrumbsMatch(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    return std::ranges::equal(a, b, canonicallyEqual);
}

std::vector<std::string_view> breadcrumbPieces(std::string_view text) {
    std::vector<std::string_view> pieces;
    std::size_t begin = 0;
    const auto endPiece = [&](std::size_t end) {
        if (end > begin) {
            pieces.push_back(text.substr(begin, end - begin));
        }
    };
    CharacterCursor cursor(text);
    std::size_t offset = 0;
    for (std::string_view character = cursor.next(); !character.empty();
         character = cursor.next()) {
        if (character == ">") {
            endPiece(offset);
            begin = cursor.offset();
        }
        offset = cursor.offset();
    }
    endPiece(text.size());
    return pieces;
}

} // namespace ombrel
