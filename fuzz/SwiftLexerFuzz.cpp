// Any bytes as Swift source: the tokens are those of the plain lexer of the tests, and stand one
// after the other in the source.
#include "../tests/generable/ReferenceLexer.h"
#include "generable/SwiftLexer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace ombrel;

namespace {

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view source(reinterpret_cast<const char*>(data), size);
    const SwiftLexer::Tokens tokens = SwiftLexer::tokenize(source);
    const auto expected = test::ReferenceLexer(source).run();
    check(tokens.list.size() == expected.size());
    std::size_t position = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const SwiftLexer::Token& token = tokens.list[i];
        check(token.kind == expected[i].kind && token.text == expected[i].text &&
              token.line == expected[i].line);
        check(token.begin >= position && token.end > token.begin && token.end <= size);
        position = token.end;
    }
    return 0;
}
