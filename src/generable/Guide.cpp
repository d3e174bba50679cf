#include "generable/Guide.h"

#include "platform/Text.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace ombrel {

namespace {

using Kind = SwiftLexer::Kind;
using Span = TokenCursor::Span;

bool isPunctuation(const SwiftLexer::Token& token, std::string_view symbol) {
    return token.kind == Kind::punctuation && token.text == symbol;
}

bool isIdentifier(const SwiftLexer::Token& token, std::string_view name) {
    return token.kind == Kind::identifier && token.text == name;
}

bool endsInWord(std::string_view text) {
    if (text.empty()) {
        return false;
    }
    // A character has no end of marks, if somebody wants it so; of so many bytes no more is asked.
    constexpr std::size_t reach = 256;
    const std::string_view last =
        lastCharacters(text.substr(text.size() - std::min(text.size(), reach)), 1);
    const char32_t scalar = decodeScalar(last, 0).scalar;
    return last == "_" || hasLetterCategory(scalar) || hasNumberCategory(scalar);
}

// Splits at the commas that are in no brackets, and leaves empty groups out.
std::vector<Span> splitArguments(Span arguments) {
    std::vector<Span> groups;
    std::size_t start = 0;
    std::int64_t depth = 0;
    const auto finish = [&](std::size_t end) {
        if (end > start) {
            groups.push_back(arguments.subspan(start, end - start));
        }
        start = end + 1;
    };
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].kind != Kind::punctuation || arguments[i].text.size() != 1) {
            continue;
        }
        const char symbol = arguments[i].text.front();
        depth += symbol == '(' || symbol == '[' || symbol == '{';
        depth -= symbol == ')' || symbol == ']' || symbol == '}';
        if (symbol == ',' && depth <= 0) {
            finish(i);
        }
    }
    finish(arguments.size());
    return groups;
}

// The text of string literals with "+" between them; none for any other tokens.
std::optional<std::string> literalText(Span tokens) {
    if (tokens.size() % 2 == 0) {
        return std::nullopt;
    }
    std::string text;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        if (i % 2 == 1 ? !isPunctuation(tokens[i], "+") : tokens[i].kind != Kind::string) {
            return std::nullopt;
        }
        text += i % 2 == 1 ? std::string_view() : tokens[i].text;
    }
    return text;
}

} // namespace

std::string renderTokens(Span tokens) {
    std::string text;
    for (const SwiftLexer::Token& token : tokens) {
        switch (token.kind) {
        case Kind::string:
            text += '"';
            text += token.text;
            text += '"';
            break;
        case Kind::identifier:
        case Kind::number:
            if (endsInWord(text)) {
                text += ' ';
            }
            text += token.text;
            break;
        case Kind::punctuation:
            text += token.text;
            if (token.text == "," || token.text == ":") {
                text += ' ';
            }
            break;
        case Kind::docComment:
            break;
        }
    }
    return std::string(trimBlanksAndTabs(text));
}

Guide parseGuide(Span arguments) {
    Guide guide;
    for (const Span group : splitArguments(arguments)) {
        if (group.size() >= 2 && isIdentifier(group[0], "description") &&
            isPunctuation(group[1], ":")) {
            if (auto text = literalText(group.subspan(2))) {
                guide.description = std::move(text);
            } else {
                guide.hasNonLiteralDescription = true;
            }
            continue;
        }
        const auto named = std::find_if(group.begin(), group.end(), [](const auto& token) {
            return token.kind == Kind::identifier && token.text != "GenerationGuide";
        });
        if (named != group.end() && named->text == "anyOf") {
            guide.anyOf.emplace();
            for (const SwiftLexer::Token& token : group) {
                if (token.kind == Kind::string) {
                    guide.anyOf->emplace_back(token.text);
                }
            }
        } else {
            guide.constraints.push_back(renderTokens(group));
        }
    }
    return guide;
}

} // namespace ombrel
