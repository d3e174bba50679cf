#include "generable/GenerableImporter.h"

#include "core/JsonEncoder.h"
#include "generable/ConversionContext.h"
#include "platform/GenerationSchema.h"

#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel {

void PrintTo(const GenerableImportWarning& warning, std::ostream* out) {
    *out << warning.id();
}

namespace {

using Warnings = std::vector<GenerableImportWarning>;
using Strings = std::vector<std::string>;

std::vector<ParsedType> types(std::string_view source) {
    return GenerableImporter::parse(source).types;
}

Strings roots(std::string_view source) {
    Strings names;
    for (const ParsedType& type : GenerableImporter::candidateRoots(types(source))) {
        names.push_back(type.name);
    }
    return names;
}

GenerableImporter::Converted convert(std::string_view source, std::string_view root) {
    return GenerableImporter::convert(types(source), root);
}

// The cases as "a, b (its description)".
std::string told(const std::vector<AgentEnumCase>& cases) {
    std::string text;
    for (const AgentEnumCase& each : cases) {
        text += (text.empty() ? "" : ", ") + each.name;
        text += each.description ? " (" + *each.description + ")" : "";
        EXPECT_NE(each.id, Uuid());
    }
    return text;
}

std::string told(const std::vector<AgentProperty>& properties);

std::string told(const PropertyKind& kind) {
    if (const auto* object = std::get_if<PropertyKind::Object>(&kind.value)) {
        return "{" + told(object->properties) + "}";
    }
    if (const auto* array = std::get_if<PropertyKind::Array>(&kind.value)) {
        return "[" + told(*array->element) + "]";
    }
    if (const auto* choice = std::get_if<PropertyKind::Enumeration>(&kind.value)) {
        return "<" + told(choice->cases) + ">";
    }
    return kind.typeLabel();
}

// The properties as "a: Int?, b: {c: String} (its description)".
std::string told(const std::vector<AgentProperty>& properties) {
    std::string text;
    for (const AgentProperty& property : properties) {
        text += (text.empty() ? "" : ", ") + property.name + ": " + told(property.kind);
        text += property.isOptional ? "?" : "";
        text += property.description ? " (" + *property.description + ")" : "";
        EXPECT_NE(property.id, Uuid());
    }
    return text;
}

std::string told(const std::optional<AgentOutputKind>& output) {
    if (!output) {
        return "none";
    }
    if (const auto* object = std::get_if<AgentOutputKind::Object>(&output->value)) {
        return "{" + told(object->properties) + "}";
    }
    if (const auto* choice = std::get_if<AgentOutputKind::Enumeration>(&output->value)) {
        return "<" + told(choice->cases) + ">";
    }
    return "text";
}

// One property in a structure on line 1.
GenerableImporter::Converted property(std::string_view declaration) {
    return convert("@Generable struct S { " + std::string(declaration) + " }", "S");
}

TEST(TypeConversion, WarnsOfAPlainStructureAtItsOwnLine) {
    const std::string source = "@Generable\nstruct A {\n  var b: B\n  var c: B\n}\n"
                               "struct B {\n  var x: Int\n}";
    EXPECT_EQ(roots(source), Strings{"A"});
    const auto converted = convert(source, "A");
    EXPECT_EQ(told(converted.output), "{b: {x: Int}, c: {x: Int}}");
    EXPECT_EQ(converted.warnings,
              (Warnings{{6, "`B` isn't marked @Generable. It was imported anyway; add @Generable "
                            "before using it with Foundation Models."}}));
}

TEST(TypeConversion, StartsWithTheFirstTypeThatNoneRefersTo) {
    const std::string source = "struct B { var x: Int }\nstruct A {\n  var b: [B?]\n}";
    EXPECT_EQ(roots(source), Strings{"A"});
    const auto converted = convert(source, "A");
    EXPECT_EQ(told(converted.output), "{b: [{x: Int}]}");
    EXPECT_EQ(converted.warnings,
              (Warnings{{3, "`b` has an optional nested inside another type (like `[T?]`). That "
                            "isn't supported, so it was imported as non-optional."},
                        {1, "`B` isn't marked @Generable. It was imported anyway; add @Generable "
                            "before using it with Foundation Models."},
                        {2, "`A` isn't marked @Generable. It was imported anyway; add @Generable "
                            "before using it with Foundation Models."}}));
}

TEST(TypeConversion, IgnoresTheReferencesOfOtherTypesThanTheGenerableOnes) {
    EXPECT_EQ(roots("struct A { var b: B }\n@Generable struct B { var b: B }"), Strings{"B"});
    EXPECT_EQ(roots(""), Strings{});
}

TEST(TypeConversion, CutsOffTypesThatReferToEachOther) {
    const std::string source = "@Generable struct A {\n  var b: B\n}\n"
                               "@Generable struct B {\n  var a: A\n}";
    EXPECT_EQ(roots(source), (Strings{"A", "B"}));
    const auto converted = convert(source, "A");
    EXPECT_EQ(told(converted.output), "{b: {a: String}}");
    EXPECT_EQ(converted.warnings,
              (Warnings{{5, "`a` refers back to `A` recursively. Recursive types can't be "
                            "represented, so it was imported as String."}}));
}

TEST(TypeConversion, ReadsKnownForeignTypesAsStrings) {
    const auto converted = property("var x: Date");
    EXPECT_EQ(told(converted.output), "{x: String}");
    EXPECT_EQ(converted.warnings,
              (Warnings{{1, "`x` is a `Date`, which isn't Generable. It was imported as String "
                            "(e.g. ask for ISO 8601 text and convert it yourself)."}}));
    for (const char* name : {"URL", "UUID", "Data", "Character", "GeneratedContent"}) {
        const auto other = property("var x: " + std::string(name));
        EXPECT_EQ(told(other.output), "{x: String}");
        ASSERT_EQ(other.warnings.size(), 1U);
        EXPECT_TRUE(other.warnings[0].message.starts_with("`x` is a `" + std::string(name) + "`"));
    }
}

TEST(TypeConversion, AsksForTheDeclarationOfAnUnknownType) {
    const auto converted = property("var y: Foo");
    EXPECT_EQ(told(converted.output), "{y: String}");
    EXPECT_EQ(converted.warnings,
              (Warnings{{1, "Type `Foo` (used by `y`) isn't declared in this code. Paste its "
                            "declaration too, or it stays imported as String."}}));
}

TEST(TypeConversion, ReadsADictionaryAsAString) {
    const auto converted = property("var t: [String: Int]");
    EXPECT_EQ(told(converted.output), "{t: String}");
    EXPECT_EQ(converted.warnings,
              (Warnings{{1, "`t` uses a dictionary, which the builder can't represent. It was "
                            "imported as String."}}));
}

TEST(TypeConversion, NamesEveryShapeThatItCannotRepresent) {
    const auto shape = [](std::string_view type) {
        const auto converted = property("var t: " + std::string(type));
        return converted.warnings.empty() ? "none" : converted.warnings[0].message;
    };
    const std::string end = ", which the builder can't represent. It was imported as String.";
    EXPECT_EQ(shape("(Int, Int)"), "`t` uses a tuple" + end);
    EXPECT_EQ(shape("(Int) -> Int"), "`t` uses a function type" + end);
    EXPECT_EQ(shape("some View"), "`t` uses an existential (`some`) type" + end);
    EXPECT_EQ(shape("any View"), "`t` uses an existential (`any`) type" + end);
    EXPECT_EQ(shape("Set<Int>"), "`t` uses the generic type `Set<…>`" + end);
    EXPECT_EQ(shape("& = 3"), "`t` uses an unrecognized type" + end);
    const auto missing = convert("@Generable struct S { var t:", "S");
    EXPECT_EQ(missing.warnings, (Warnings{{1, "`t` uses a missing type" + end}}));
}

TEST(TypeConversion, ReadsTheBuiltInTypes) {
    EXPECT_EQ(told(property("var a: String, b: Substring").output), "{a: String, b: String}");
    for (const char* name : {"Int", "Int8", "Int16", "Int32", "Int64", "UInt", "UInt8", "UInt16",
                             "UInt32", "UInt64"}) {
        EXPECT_EQ(told(property("var a: " + std::string(name)).output), "{a: Int}");
    }
    for (const char* name :
         {"Double", "Float", "Float16", "Float32", "Float64", "CGFloat", "Decimal"}) {
        EXPECT_EQ(told(property("var a: " + std::string(name)).output), "{a: Double}");
    }
    EXPECT_EQ(told(property("var a: Bool").output), "{a: Bool}");
    EXPECT_EQ(told(convert("struct Int { var x: S }\nstruct S { var n: Int }", "S").output),
              "{n: Int}");
}

TEST(TypeConversion, TellsAnOptionalArrayFromAnArrayOfOptionals) {
    const auto inner = property("var tags: [String?]");
    EXPECT_EQ(told(inner.output), "{tags: [String]}");
    EXPECT_EQ(inner.warnings,
              (Warnings{{1, "`tags` has an optional nested inside another type (like `[T?]`). That "
                            "isn't supported, so it was imported as non-optional."}}));
    const auto outer = property("var tags: [String]?");
    EXPECT_EQ(told(outer.output), "{tags: [String]?}");
    EXPECT_EQ(outer.warnings, Warnings{});
    EXPECT_EQ(told(property("var x: Int??").output), "{x: Int?}");
}

TEST(TypeConversion, MakesChoicesOfStrings) {
    EXPECT_EQ(told(property("@Guide(.anyOf([\"a\", \"b\"])) var s: String?").output),
              "{s: <a, b>?}");
    EXPECT_EQ(told(property("@Guide(.anyOf([\"a\", \"b\"])) var s: [String]").output),
              "{s: [<a, b>]}");
    const auto empty = property("@Guide(.anyOf(list)) var s: String");
    EXPECT_EQ(told(empty.output), "{s: String}");
    EXPECT_EQ(empty.warnings, Warnings{});
}

TEST(TypeConversion, IgnoresChoicesOfOtherTypes) {
    const auto converted = property("@Guide(.anyOf([\"a\"])) var n: Int");
    EXPECT_EQ(told(converted.output), "{n: Int}");
    EXPECT_EQ(
        converted.warnings,
        (Warnings{{1, "`.anyOf` on `n` only applies to String properties; it was ignored."}}));
    EXPECT_EQ(told(property("@Guide(.anyOf([\"a\"])) var n: [[String]]").output),
              "{n: [[String]]}");
}

TEST(TypeConversion, AddsConstraintsToTheDescription) {
    const auto converted = property("@Guide(description: \"Count\", .range(1...5)) var n: Int");
    EXPECT_EQ(told(converted.output), "{n: Int (Count — Constraint: .range(1...5))}");
    EXPECT_EQ(
        converted.warnings,
        (Warnings{{1, "`n` has .range(1...5). The builder has no constraint fields yet, so it "
                      "was kept as description text — the model sees it, but it isn't "
                      "enforced."}}));
}

TEST(TypeConversion, DescribesByConstraintsAlone) {
    EXPECT_EQ(told(property("@Guide(.minimum(1), .maximum(5)) var n: Int").output),
              "{n: Int (Constraint: .minimum(1), .maximum(5))}");
}

TEST(TypeConversion, PrefersTheGuideToTheDocComment) {
    EXPECT_EQ(told(property("/** Doc */ @Guide(description: \"Guide\") var n: Int").output),
              "{n: Int (Guide)}");
    EXPECT_EQ(told(property("/** Doc */ var n: Int").output), "{n: Int (Doc)}");
    EXPECT_EQ(told(property("/** Doc */ @Guide(description: \"\") var n: Int").output), "{n: Int}");
    const auto computed = property("/** Doc */ @Guide(description: text) var n: Int");
    EXPECT_EQ(told(computed.output), "{n: Int (Doc)}");
    EXPECT_EQ(computed.warnings,
              (Warnings{{1, "The @Guide description on `n` isn't a plain string literal, so it "
                            "couldn't be read."}}));
}

TEST(TypeConversion, ImportsTheNamesOfCasesWithPayloads) {
    const auto converted =
        convert("@Generable\nenum E {\n  /// First\n  case a(Int), b(Int)\n  case c\n}", "E");
    EXPECT_EQ(told(converted.output), "<a (First), b, c>");
    EXPECT_EQ(converted.warnings,
              (Warnings{{2, "Enum `E` has cases with associated values. Only the case names were "
                            "imported — the builder's enums don't carry payloads."}}));
}

TEST(TypeConversion, ImportsAnEmptyEnumeration) {
    const auto converted = convert("@Generable enum E {}", "E");
    EXPECT_EQ(told(converted.output), "<>");
    EXPECT_EQ(converted.warnings, (Warnings{{1, "Enum `E` has no cases."}}));
}

TEST(TypeConversion, ImportsAnEnumerationOfAProperty) {
    const auto converted = convert("@Generable struct S { var e: E }\nenum E { case a, b }", "S");
    EXPECT_EQ(told(converted.output), "{e: <a, b>}");
    EXPECT_EQ(converted.warnings.size(), 1U);
}

TEST(TypeConversion, ImportsAStructureWithoutStoredProperties) {
    const auto converted = property("var a: Int { 3 }");
    EXPECT_EQ(told(converted.output), "{}");
    EXPECT_EQ(converted.warnings, (Warnings{{1, "`S` has no stored properties."}}));
}

TEST(TypeConversion, UsesTheLaterOfTwoDeclarations) {
    const std::string source = "@Generable struct A { var b: B }\n"
                               "@Generable struct B { var old: Int }\n"
                               "@Generable struct B { var new: Int }";
    EXPECT_EQ(told(convert(source, "A").output), "{b: {new: Int}}");
    EXPECT_EQ(types(source).size(), 3U);
    EXPECT_EQ(told(convert(source, "B").output), "{new: Int}");
}

TEST(TypeConversion, LeavesOutAPropertyWithoutAnnotation) {
    const auto converted = property("/** Doc */ var x = 3; var y: Int");
    EXPECT_EQ(told(converted.output), "{y: Int}");
    EXPECT_EQ(converted.warnings,
              (Warnings{{1, "`x` has no type annotation — @Generable needs an explicit type, so it "
                            "was skipped."}}));
}

TEST(TypeConversion, ReportsAProblemThatTwoPathsReachOnce) {
    const std::string source = "@Generable struct A { var b: B; var c: C }\n"
                               "@Generable struct B { var c: C }\n"
                               "@Generable struct C { var d: Date }";
    const auto converted = convert(source, "A");
    EXPECT_EQ(told(converted.output), "{b: {c: {d: String}}, c: {d: String}}");
    ASSERT_EQ(converted.warnings.size(), 1U);
    EXPECT_EQ(converted.warnings[0].line, 3);
}

TEST(TypeConversion, WarnsOfAGenericRootOnly) {
    const std::string source = "@Generable struct A<T> { var b: B }\n"
                               "@Generable struct B<T> { var t: Int }";
    const auto converted = convert(source, "A");
    EXPECT_EQ(told(converted.output), "{b: {t: Int}}");
    EXPECT_EQ(converted.warnings,
              (Warnings{{1, "`A` is generic — @Generable output types can't be generic, so its "
                            "generic parameters were ignored."}}));
}

TEST(TypeConversion, WarnsOfTheRootAfterItsContents) {
    const auto converted = convert("struct A<T> { var d: Date }", "A");
    ASSERT_EQ(converted.warnings.size(), 3U);
    EXPECT_TRUE(converted.warnings[0].message.starts_with("`A` is generic"));
    EXPECT_TRUE(converted.warnings[1].message.starts_with("`d` is a `Date`"));
    EXPECT_TRUE(converted.warnings[2].message.starts_with("`A` isn't marked"));
}

TEST(TypeConversion, GivesNothingForAnUnknownRoot) {
    const auto converted = convert("struct A { var d: Date }", "B");
    EXPECT_EQ(converted.output, std::nullopt);
    EXPECT_EQ(converted.warnings, Warnings{});
}

TEST(TypeConversion, FindsNamesThatAreWrittenInAnotherForm) {
    EXPECT_EQ(told(convert("@Generable struct A { var c: Cafe\u0301 }\n"
                           "@Generable struct Caf\u00e9 { var x: Int }",
                           "A")
                       .output),
              "{c: {x: Int}}");
}

TEST(GenerableImportWarning, IsToldApartByLineAndMessage) {
    EXPECT_EQ((GenerableImportWarning{7, "a"}).id(), "7:a");
    EXPECT_EQ((GenerableImportWarning{std::nullopt, "a"}).id(), "0:a");
}

std::size_t countProperties(const std::vector<AgentProperty>& properties);

std::size_t countProperties(const PropertyKind& kind) {
    if (const auto* object = std::get_if<PropertyKind::Object>(&kind.value)) {
        return countProperties(object->properties);
    }
    const auto* array = std::get_if<PropertyKind::Array>(&kind.value);
    return array != nullptr ? countProperties(*array->element) : 0;
}

std::size_t countProperties(const std::vector<AgentProperty>& properties) {
    std::size_t count = properties.size();
    for (const AgentProperty& property : properties) {
        count += countProperties(property.kind);
    }
    return count;
}

// Levels of structures, each of which refers to the next one this many times.
std::string fanningOut(int levels, int references) {
    std::string source;
    for (int level = 0; level < levels; ++level) {
        source += "@Generable struct T" + std::to_string(level) + " {\n";
        for (int i = 0; i < references; ++i) {
            source += "  var p" + std::to_string(i) + ": T" + std::to_string(level + 1) + "\n";
        }
        source += "}\n";
    }
    return source + "@Generable struct T" + std::to_string(levels) + " { var end: Int }\n";
}

TEST(TypeConversion, CutsOffTypesThatMultiply) {
    const auto converted = convert(fanningOut(50, 2), "T0");
    ASSERT_TRUE(converted.output.has_value());
    const auto& root = std::get<AgentOutputKind::Object>(converted.output->value);
    EXPECT_LE(countProperties(root.properties), ConversionContext::maximumRepetition + 101);
    ASSERT_FALSE(converted.warnings.empty());
    EXPECT_TRUE(converted.warnings[0].message.ends_with(
        ", and types are repeated in every place that uses them: the output would become too "
        "large. It was imported as String."));
}

TEST(TypeConversion, CutsOffAWebOfTypesThatAllReferToEachOther) {
    std::string source;
    for (int type = 0; type < 100; ++type) {
        source += "@Generable struct T" + std::to_string(type) + " {";
        for (int other = 0; other < 100; ++other) {
            source += " var p" + std::to_string(other) + ": T" + std::to_string(other) + ";";
        }
        source += "}\n";
    }
    const auto converted = convert(source, "T0");
    const auto& root = std::get<AgentOutputKind::Object>(converted.output->value);
    EXPECT_LE(countProperties(root.properties), ConversionContext::maximumRepetition + 10'000);
}

TEST(TypeConversion, TakesAnyNumberOfTypesThatAreUsedOnce) {
    std::string root = "@Generable struct Root {\n";
    std::string source;
    for (int type = 0; type < 20'000; ++type) {
        const std::string name = "T" + std::to_string(type);
        root += "  var p" + std::to_string(type) + ": " + name + "\n";
        source += "@Generable struct " + name + " { var x: Int }\n";
    }
    const auto converted = convert(root + "}\n" + source, "Root");
    EXPECT_EQ(converted.warnings, Warnings{});
    EXPECT_EQ(
        countProperties(std::get<AgentOutputKind::Object>(converted.output->value).properties),
        40'000U);
}

TEST(TypeConversion, CutsOffTextsThatMultiply) {
    std::string source = fanningOut(12, 2);
    source.replace(source.rfind("var end"), 0, "/** " + std::string(1'000'000, 'd') + " */ ");
    const auto converted = convert(source, "T0");
    ASSERT_FALSE(converted.warnings.empty());
    EXPECT_LT(encodeJson(*converted.output).size(), ConversionContext::maximumText + 10'000'000);
}

TEST(TypeConversion, RefusesARootWithTooMuchText) {
    std::string source = "@Generable struct A { /** " + std::string(1'000'000, 'd') + " */ var ";
    for (int i = 0; i < 100; ++i) {
        source += "a: Int, ";
    }
    const auto converted = convert(source, "A");
    EXPECT_EQ(converted.output, std::nullopt);
    EXPECT_EQ(converted.warnings,
              (Warnings{{1, "`A` has more text than an output can hold, so it wasn't imported."}}));
}

TEST(TypeConversion, CutsOffWhatIsNestedTooDeeply) {
    const auto types = convert(fanningOut(100, 1), "T0");
    EXPECT_EQ(types.warnings,
              (Warnings{{179, "`p0` is nested more than 60 levels deep. It was imported as "
                              "String."}}));
    EXPECT_EQ(std::get<AgentOutputKind::Object>(types.output->value).properties.size(), 1U);

    const std::string deep(100'000, '[');
    const auto arrays = property("var x: " + deep + "Int");
    EXPECT_EQ(told(arrays.output),
              "{x: " + std::string(59, '[') + "String" + std::string(59, ']') + "}");
    EXPECT_EQ(arrays.warnings.size(), 1U);
}

TEST(TypeConversion, NestsNoDeeperThanAProjectFileCarries) {
    const auto converted = convert(fanningOut(100, 1), "T0");
    std::string text;
    JsonWriter writer([&text](std::string_view bytes) {
        text += bytes;
        return true;
    });
    EXPECT_TRUE(encode(writer, *converted.output));
}

DynamicGenerationSchema schemaOf(const std::vector<AgentProperty>& properties) {
    DynamicGenerationSchema::Object object{"O", {}};
    for (const AgentProperty& property : properties) {
        const auto* inner = std::get_if<PropertyKind::Object>(&property.kind.value);
        object.properties.push_back(
            {property.name, property.description,
             std::make_shared<const DynamicGenerationSchema>(
                 inner != nullptr
                     ? schemaOf(inner->properties)
                     : DynamicGenerationSchema{DynamicGenerationSchema::Scalar::string}),
             property.isOptional});
    }
    return {object};
}

TEST(TypeConversion, NestsNoDeeperThanASchemaCarries) {
    const auto converted = convert(fanningOut(100, 1), "T0");
    EXPECT_TRUE(GenerationSchema::make(
                    schemaOf(std::get<AgentOutputKind::Object>(converted.output->value).properties))
                    .has_value());
}

} // namespace
} // namespace ombrel
