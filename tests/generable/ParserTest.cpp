#include "generable/GenerableImporter.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {
namespace {

using Strings = std::vector<std::string>;

std::vector<ParsedType> types(std::string_view source) {
    return GenerableImporter::parse(source).types;
}

Strings names(const auto& list) {
    Strings found;
    for (const auto& element : list) {
        found.push_back(element.name);
    }
    return found;
}

// The properties of a structure with this body.
std::vector<ParsedProperty> properties(std::string_view body) {
    const auto parsed = types("struct S {\n" + std::string(body) + "\n}");
    return parsed.empty() ? std::vector<ParsedProperty>() : parsed.front().properties;
}

ParsedProperty property(std::string_view body) {
    const auto found = properties(body);
    return found.empty() ? ParsedProperty() : found.front();
}

TypeRef type(std::string_view text) {
    return property("var x: " + std::string(text)).type.value_or(TypeRef::named("none"));
}

TypeRef intType() {
    return TypeRef::named("Int");
}

std::string text(const std::optional<SharedText>& shared) {
    return shared ? shared->text() : "none";
}

TEST(DeclarationParser, ReadsAGenerableStructure) {
    const auto parsed = types("@Generable\nstruct A { var x: Int }");
    ASSERT_EQ(parsed.size(), 1U);
    EXPECT_EQ(parsed[0].name, "A");
    EXPECT_EQ(parsed[0].kind, ParsedType::Kind::structure);
    EXPECT_TRUE(parsed[0].isGenerable);
    EXPECT_FALSE(parsed[0].isGeneric);
    EXPECT_EQ(parsed[0].line, 2);
    ASSERT_EQ(parsed[0].properties.size(), 1U);
    EXPECT_EQ(parsed[0].properties[0].name, "x");
    EXPECT_EQ(parsed[0].properties[0].type, intType());
    EXPECT_EQ(parsed[0].properties[0].typeText, "Int");
    EXPECT_EQ(parsed[0].properties[0].line, 2);
}

TEST(DeclarationParser, ReadsTheBodyOfAGenericStructure) {
    const auto parsed = types("struct B<T: Codable> where T: Hashable { var t: T }");
    ASSERT_EQ(parsed.size(), 1U);
    EXPECT_TRUE(parsed[0].isGeneric);
    EXPECT_EQ(names(parsed[0].properties), Strings{"t"});
}

TEST(DeclarationParser, KeepsStoredInstancePropertiesOnly) {
    EXPECT_EQ(names(properties("static let shared = A()\n"
                               "var y: Int { 3 }\n"
                               "var z: Int { get { 1 } set {} }\n"
                               "var w: Int = 3 { didSet { } }\n"
                               "var v: Int { willSet { } }\n"
                               "var u: Int { }\n"
                               "class var t: Int\n"
                               "private(set) var s: Int\n"
                               "func f() { var local: Int }\n"
                               "init() { }\n"
                               "subscript(i: Int) -> Int { i }\n"
                               "let r: Int")),
              (Strings{"w", "v", "s", "r"}));
}

TEST(DeclarationParser, GivesAllBindingsOfADeclarationItsGuideAndComment) {
    const auto found =
        properties("/// Doc\n@Guide(description: \"G\", .count(2))\nvar a: Int = 1, b: String");
    ASSERT_EQ(names(found), (Strings{"a", "b"}));
    for (const ParsedProperty& each : found) {
        EXPECT_EQ(text(each.guideDescription), "G");
        EXPECT_EQ(text(each.docComment), "Doc");
        EXPECT_EQ(each.constraints.values(), Strings{".count(2)"});
        EXPECT_EQ(each.line, 4);
    }
    EXPECT_EQ(found[1].type, TypeRef::named("String"));
}

TEST(DeclarationParser, ReadsAPropertyWithoutAnnotation) {
    const ParsedProperty found = property("var v = 3");
    EXPECT_EQ(found.name, "v");
    EXPECT_EQ(found.type, std::nullopt);
    EXPECT_EQ(found.typeText, "");
}

TEST(DeclarationParser, ReadsCasesWithRawValuesAndPayloads) {
    const auto parsed = types("enum E: String { case a = \"x\", b; case c(Int) }");
    ASSERT_EQ(parsed.size(), 1U);
    EXPECT_EQ(parsed[0].kind, ParsedType::Kind::enumeration);
    ASSERT_EQ(names(parsed[0].cases), (Strings{"a", "b", "c"}));
    EXPECT_FALSE(parsed[0].cases[0].hasPayload);
    EXPECT_FALSE(parsed[0].cases[1].hasPayload);
    EXPECT_TRUE(parsed[0].cases[2].hasPayload);
}

TEST(DeclarationParser, GivesADocCommentToTheFirstCaseAlone) {
    const auto parsed = types("enum E {\n/// First\ncase a, b\ncase c\n}");
    ASSERT_EQ(parsed.size(), 1U);
    EXPECT_EQ(parsed[0].cases, (std::vector<ParsedCase>{{"a", "First", false, 3},
                                                        {"b", std::nullopt, false, 3},
                                                        {"c", std::nullopt, false, 4}}));
}

TEST(DeclarationParser, StoresNoPropertiesInEnumerationsAndNoCasesInStructures) {
    const auto parsed = types("enum E { var x: Int; case a }\nstruct S { case b; var y: Int }");
    ASSERT_EQ(parsed.size(), 2U);
    EXPECT_TRUE(parsed[0].properties.empty());
    EXPECT_EQ(names(parsed[0].cases), Strings{"a"});
    EXPECT_TRUE(parsed[1].cases.empty());
    EXPECT_EQ(names(parsed[1].properties), Strings{"y"});
}

TEST(DeclarationParser, PutsANestedTypeBehindTheOneThatHoldsIt) {
    const auto parsed =
        types("struct Outer {\n  var a: Inner\n  struct Inner { var b: Int }\n  var c: Int\n}");
    ASSERT_EQ(names(parsed), (Strings{"Outer", "Inner"}));
    EXPECT_EQ(names(parsed[0].properties), (Strings{"a", "c"}));
    EXPECT_EQ(parsed[1].line, 3);
    EXPECT_EQ(names(types("struct A { struct B { struct C {} } } struct D {}")),
              (Strings{"A", "B", "C", "D"}));
}

TEST(DeclarationParser, FindsTypesInExtensionsAndProtocols) {
    const auto parsed = types("extension A.B { struct C { var q: Int }; var lost: Int }\n"
                              "protocol P { var lost: Int { get }\n func f()\n enum D {} }");
    ASSERT_EQ(names(parsed), (Strings{"C", "D"}));
    EXPECT_EQ(names(parsed[0].properties), Strings{"q"});
}

TEST(DeclarationParser, ReadsClassesAndActorsAsStructures) {
    const auto parsed = types("final class A { var a: Int }\nactor B { var b: Int }");
    ASSERT_EQ(names(parsed), (Strings{"A", "B"}));
    EXPECT_EQ(parsed[0].kind, ParsedType::Kind::structure);
    EXPECT_EQ(names(parsed[0].properties), Strings{"a"});
    EXPECT_EQ(names(parsed[1].properties), Strings{"b"});
}

TEST(DeclarationParser, JoinsTheLiteralsOfAGuideDescription) {
    const ParsedProperty found = property("@Guide(description: \"a\" + \"b\") var x: Int");
    EXPECT_EQ(text(found.guideDescription), "ab");
    EXPECT_FALSE(found.hasNonLiteralDescription);
}

TEST(DeclarationParser, TellsOfADescriptionThatIsNoLiteral) {
    for (const char* value : {"text", "\"a\" + text", "\"a\" +", "", "\"a\" \"b\"", "f(\"a\")"}) {
        const ParsedProperty found =
            property("@Guide(description: " + std::string(value) + ") var x: Int");
        EXPECT_EQ(text(found.guideDescription), "none") << value;
        EXPECT_TRUE(found.hasNonLiteralDescription) << value;
    }
    EXPECT_EQ(text(property("@Guide(description: \"a\\(b)\") var x: Int").guideDescription),
              "a\\(b)");
}

TEST(DeclarationParser, TakesTheLaterDescription) {
    const ParsedProperty found =
        property("@Guide(description: \"a\", description: \"b\", description: c) var x: Int");
    EXPECT_EQ(text(found.guideDescription), "b");
    EXPECT_TRUE(found.hasNonLiteralDescription);
}

TEST(DeclarationParser, ReadsTheChoicesOfAGuide) {
    const ParsedProperty found = property("@Guide(.anyOf([\"a\", \"b\"])) var x: String");
    ASSERT_TRUE(found.anyOf.has_value());
    EXPECT_EQ(found.anyOf->values(), (Strings{"a", "b"}));
    EXPECT_TRUE(found.constraints.empty());
    EXPECT_EQ(property("@Guide(GenerationGuide.anyOf(list)) var x: String").anyOf,
              CowArray<std::string>());
    EXPECT_EQ(property("var x: String").anyOf, std::nullopt);
}

TEST(DeclarationParser, KeepsOtherGuideArgumentsAsText) {
    EXPECT_EQ(property("@Guide(.range(0 ... 10)) var x: Int").constraints.values(),
              Strings{".range(0...10)"});
    EXPECT_EQ(property("@Guide(\"text\", .pattern(/a, b/), , .f(a: [1, 2], b c)) var x: Int")
                  .constraints.values(),
              (Strings{"\"text\"", ".pattern(/a, b/)", ".f(a: [1, 2], b c)"}));
}

TEST(DeclarationParser, UsesTheLastGuide) {
    EXPECT_EQ(
        text(property("@Guide(description: \"a\") @Other @Guide(description: \"b\") var x: Int")
                 .guideDescription),
        "b");
    EXPECT_EQ(text(property("@Guide var x: Int").guideDescription), "none");
}

TEST(DeclarationParser, TakesTheArgumentsOfAnAttributeFromItsLineOnly) {
    const auto found = properties("@Guide\n(description: \"a\") var x: Int\nvar y: Int");
    EXPECT_EQ(names(found), (Strings{"x", "y"}));
    EXPECT_EQ(text(found[0].guideDescription), "none");
}

TEST(DeclarationParser, ReadsTheLastComponentOfAnAttribute) {
    EXPECT_TRUE(
        types("@FoundationModels.Generable(description: \"x\") struct A {}").front().isGenerable);
    EXPECT_FALSE(types("@Generable.Foo struct A {}").front().isGenerable);
    EXPECT_FALSE(types("@Generable\nvar x: Int\nstruct A {}").front().isGenerable);
}

TEST(DeclarationParser, JoinsDocCommentsAroundAttributes) {
    EXPECT_EQ(
        text(property("/// One\n/// two\n@Guide(.count(1)) /// three\nvar x: Int").docComment),
        "One two three");
    EXPECT_EQ(text(property("///\n/***/\nvar x: Int").docComment), " ");
    EXPECT_EQ(text(property("/// lost\nfunc f() {}\nvar x: Int").docComment), "none");
}

TEST(DeclarationParser, NamesTypesItCannotRepresent) {
    const TypeRef dictionary = TypeRef::unsupported("a dictionary");
    EXPECT_EQ(type("[String: Int]"), dictionary);
    EXPECT_EQ(type("Dictionary<String, Int>"), dictionary);
    EXPECT_EQ(type("Set<Int>"), TypeRef::unsupported("the generic type `Set<…>`"));
    EXPECT_EQ(type("Array<Int, Int>"), TypeRef::unsupported("the generic type `Array<…>`"));
    EXPECT_EQ(type("(Int, Int)"), TypeRef::unsupported("a tuple"));
    EXPECT_EQ(type("(Int) -> Void"), TypeRef::unsupported("a function type"));
    EXPECT_EQ(type("some View"), TypeRef::unsupported("an existential (`some`) type"));
    EXPECT_EQ(type("any View"), TypeRef::unsupported("an existential (`any`) type"));
    EXPECT_EQ(type("*"), TypeRef::unsupported("an unrecognized type"));
    EXPECT_EQ(types("struct S { var x:").front().properties.front().type,
              TypeRef::unsupported("a missing type"));
}

TEST(DeclarationParser, ReadsArraysAndOptionals) {
    const TypeRef optionalInt = TypeRef::optional(intType());
    EXPECT_EQ(type("[Int?]"), TypeRef::array(optionalInt));
    EXPECT_EQ(type("[Int]?"), TypeRef::optional(TypeRef::array(intType())));
    EXPECT_EQ(type("Int!"), optionalInt);
    EXPECT_EQ(type("Int??"), TypeRef::optional(optionalInt));
    EXPECT_EQ(type("Optional<Array<Int>>"), TypeRef::optional(TypeRef::array(intType())));
    EXPECT_EQ(type("(Int)?"), TypeRef::optional(TypeRef::unsupported("a tuple")));
    EXPECT_EQ(type("[String: Int]?"), TypeRef::optional(TypeRef::unsupported("a dictionary")));
    EXPECT_EQ(type("[[String]: [Int]]"), TypeRef::unsupported("a dictionary"));
    EXPECT_EQ(type("[]"), TypeRef::array(TypeRef::unsupported("an unrecognized type")));
}

TEST(DeclarationParser, ReadsTheLastComponentOfAName) {
    EXPECT_EQ(type("Swift.Array<Int>"), TypeRef::array(intType()));
    EXPECT_EQ(type("Foundation.URL"), TypeRef::named("URL"));
    EXPECT_EQ(type("Outer<Int>.Inner"), TypeRef::named("Inner"));
    EXPECT_EQ(type("Set<Int>.Element?"), TypeRef::optional(TypeRef::named("Element")));
}

TEST(DeclarationParser, RendersAnnotations) {
    const auto rendered = [](std::string_view annotation) {
        return property("var x: " + std::string(annotation)).typeText;
    };
    EXPECT_EQ(rendered("[String :Int]"), "[String: Int]");
    EXPECT_EQ(rendered("Dictionary<String,Int> = [:]"), "Dictionary<String, Int>");
    EXPECT_EQ(rendered("some View"), "some View");
    EXPECT_EQ(rendered("Größe<größe größe, e\u0301 1, $ a>"), "Größe<größe größe, e\u0301 1, $a>");
    EXPECT_EQ(rendered("Int?"), "Int?");
}

TEST(DeclarationParser, EndsAnInitialValueWhereADeclarationBegins) {
    EXPECT_EQ(
        names(properties("var a: Int = 1 +\n  2\nvar b: [Int] = [1,\n var]\n/// c\nlet c = {\n"
                         "var inner: Int\n}()\n@Guide var d: Int = 3; var e: Int")),
        (Strings{"a", "b", "c", "d", "e"}));
}

TEST(DeclarationParser, PassesOverWhatDeclaresNoType) {
    EXPECT_EQ(names(types("import Foundation\ntypealias A = B\nlet x = 3\n}\n"
                          "precedencegroup P { higherThan: Q }\noperator +\n"
                          "macro m() = #externalMacro(module: \"a\", type: \"b\")\n"
                          "if true { struct Lost {} }\nstruct\n{ }\nstruct Kept {}")),
              Strings{"Kept"});
    EXPECT_EQ(names(properties("let (a, b) = (1, 2)\nvar c: Int")), Strings{"c"});
}

TEST(DeclarationParser, SkipsFunctionsWithoutABody) {
    EXPECT_EQ(names(properties("func f(a: Int = { 3 }())\n  -> Int\nvar a: Int\nfunc g()\n/// d\n"
                               "func h()\n@Guide var b: Int\ninit?(x: Int) throws { var c: Int }")),
              (Strings{"a", "b"}));
}

TEST(DeclarationParser, FindsNothingWhereNothingIsDeclared) {
    EXPECT_TRUE(types("").empty());
    EXPECT_TRUE(types("print(\"struct A {}\") // struct B {}").empty());
    EXPECT_TRUE(types("struct A }").empty());
    EXPECT_TRUE(types("struct A").empty());
}

TEST(DeclarationParser, KeepsAnUnclosedType) {
    const auto parsed = types("struct A { var x: Int\nstruct B { var y: [Int");
    ASSERT_EQ(names(parsed), (Strings{"A", "B"}));
    EXPECT_EQ(names(parsed[0].properties), Strings{"x"});
    EXPECT_EQ(parsed[1].properties[0].type, TypeRef::array(intType()));
}

std::string repeated(std::string_view piece, std::size_t times) {
    std::string all;
    for (std::size_t i = 0; i < times; ++i) {
        all += piece;
    }
    return all;
}

TEST(DeclarationParser, ReadsDeepNestingOfEverything) {
    const std::size_t depth = 100'000;
    EXPECT_EQ(types(repeated("struct A { var x: Int;", depth)).size(), depth);
    EXPECT_EQ(types(repeated("struct A {", depth) + repeated("}", depth)).size(), depth);
    EXPECT_TRUE(types(repeated("extension A {", depth)).empty());
    const TypeRef array = type(repeated("[", depth) + "Int" + repeated("]", depth));
    EXPECT_EQ(array.wrappers.size(), depth);
    EXPECT_EQ(TypeRef(array), array);
    EXPECT_EQ(type("Int" + repeated("?", depth)).wrappers.size(), depth);
    EXPECT_EQ(type(repeated("Optional<", depth) + "Int" + repeated(">", depth)).wrappers.size(),
              depth);
    EXPECT_EQ(type(repeated("Int -> ", depth) + "Int"), TypeRef::unsupported("a function type"));
    EXPECT_EQ(type(repeated("any ", depth)), TypeRef::unsupported("an existential (`any`) type"));
    EXPECT_EQ(type(repeated("[Int:", depth)), TypeRef::unsupported("a dictionary"));
    EXPECT_EQ(type(repeated("(", depth)), TypeRef::unsupported("a tuple"));
    for (const char* piece : {"{", "(", "[", "@Guide(", "var x = (", "func f(", "case a(", "/*",
                              "/**", "\"\\(", "#if", "`", "@a.", "///\n", "class "}) {
        types("struct A {" + repeated(piece, depth));
        types("enum A {" + repeated(piece, depth));
    }
}

// Each would take hours, or all memory, if it took them with the square of its length.
TEST(DeclarationParser, SharesWhatManyBindingsHaveInCommon) {
    const std::size_t many = 200'000;
    const auto found =
        properties("/// " + std::string(1'000'000, 'd') + "\n@Guide(description: \"" +
                   std::string(1'000'000, 'g') + "\", .anyOf([" + repeated("\"x\",", many) +
                   "]), " + repeated(".c,", many) + ") var " + repeated("x: Int,", many));
    ASSERT_EQ(found.size(), many);
    EXPECT_EQ(property("@Guide(" + repeated("`\u0301`", many) + ") var x: Int").constraints.size(),
              1U);
    EXPECT_EQ(found.back().guideDescription->text().size(), 1'000'000U);
    EXPECT_EQ(found.back().constraints.identity(), found.front().constraints.identity());
    EXPECT_EQ(found.back().anyOf->identity(), found.front().anyOf->identity());
}

} // namespace
} // namespace ombrel
