// Any bytes as Swift source: the declarations that come out are in order, hold what their kind can
// hold, and stand in lines that the source has.
#include "generable/GenerableImporter.h"
#include "platform/Text.h"

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
    const ParsedFile file = GenerableImporter::parse(source);
    const auto lines = static_cast<std::int64_t>(splitNewlines(source).size());
    std::int64_t line = 1;
    for (const ParsedType& type : file.types) {
        check(type.line >= line && type.line <= lines);
        line = type.line;
        check(type.kind == ParsedType::Kind::structure ? type.cases.empty()
                                                       : type.properties.empty());
        std::int64_t memberLine = type.line;
        for (const ParsedProperty& property : type.properties) {
            check(property.line >= memberLine && property.line <= lines);
            memberLine = property.line;
            check(property.type.has_value() || property.typeText.empty());
            check(!property.type || property.type->kind == TypeRef::Kind::named ||
                  !property.type->text.empty());
        }
        for (const ParsedCase& parsed : type.cases) {
            check(parsed.line >= memberLine && parsed.line <= lines);
            memberLine = parsed.line;
        }
    }
    check(GenerableImporter::parse(source) == file);
    return 0;
}
