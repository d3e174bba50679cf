#include "cli/Command.h"
#include "cli/OutputTable.h"
#include "cli/Terminal.h"
#include "core/Box.h"
#include "core/JsonEncoder.h"
#include "generable/GenerableImporter.h"
#include "generable/SwiftLexer.h"
#include "platform/Text.h"
#include "platform/TextFile.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <tuple>
#include <utility>
#include <variant>
#include <vector>

namespace ombrel {

namespace {

// A `TypeRef` as it is printed: the type inside is the payload.
struct TypeTree {
    struct Named {
        std::string name;
        static constexpr auto keys() { return std::tuple(required("_0", &Named::name)); }
    };
    struct Unsupported {
        std::string shape;
        static constexpr auto keys() { return std::tuple(required("_0", &Unsupported::shape)); }
    };
    struct Array {
        Box<TypeTree> element;
        static constexpr auto keys() { return std::tuple(required("_0", &Array::element)); }
    };
    struct Optional {
        Box<TypeTree> type;
        static constexpr auto keys() { return std::tuple(required("_0", &Optional::type)); }
    };

    std::variant<Named, Array, Optional, Unsupported> value;

    static constexpr auto cases() {
        return std::tuple(payloadCase<Named>("named"), payloadCase<Array>("array"),
                          payloadCase<Optional>("optional"),
                          payloadCase<Unsupported>("unsupported"));
    }
};

// The tree, with no more arrays and optionals around it than JSON is written with.
TypeTree treeOf(const TypeRef& ref) {
    constexpr std::size_t maximumWrappers = 400;
    const std::size_t count = ref.wrappers.size();
    const std::size_t hidden = count - std::min(count, maximumWrappers);
    TypeTree tree;
    if (hidden > 0) {
        tree.value = TypeTree::Unsupported{"a type that is nested too deeply"};
    } else if (ref.kind == TypeRef::Kind::named) {
        tree.value = TypeTree::Named{ref.text};
    } else {
        tree.value = TypeTree::Unsupported{ref.text};
    }
    for (std::size_t i = hidden; i < count; ++i) {
        TypeTree outer;
        if (ref.wrappers[i] == TypeRef::Wrapper::array) {
            outer.value = TypeTree::Array{Box<TypeTree>(std::move(tree))};
        } else {
            outer.value = TypeTree::Optional{Box<TypeTree>(std::move(tree))};
        }
        tree = std::move(outer);
    }
    return tree;
}

struct PropertyRow {
    std::string name;
    std::optional<TypeTree> type;
    std::string typeText;
    std::optional<SharedText> guideDescription;
    std::optional<SharedText> docComment;
    CowArray<std::string> constraints;
    std::optional<CowArray<std::string>> anyOf;
    bool hasNonLiteralDescription = false;
    std::int64_t line = 1;

    static constexpr auto keys() {
        return std::tuple(
            required("name", &PropertyRow::name), optional("type", &PropertyRow::type),
            required("typeText", &PropertyRow::typeText),
            optional("guideDescription", &PropertyRow::guideDescription),
            optional("docComment", &PropertyRow::docComment),
            required("constraints", &PropertyRow::constraints),
            optional("anyOf", &PropertyRow::anyOf),
            required("hasNonLiteralDescription", &PropertyRow::hasNonLiteralDescription),
            required("line", &PropertyRow::line));
    }
};

struct TypeRow {
    std::string name;
    ParsedType::Kind kind = ParsedType::Kind::structure;
    bool isGenerable = false;
    bool isGeneric = false;
    std::int64_t line = 1;
    std::vector<PropertyRow> properties;
    std::vector<ParsedCase> cases;

    static constexpr auto keys() {
        return std::tuple(
            required("name", &TypeRow::name), required("kind", &TypeRow::kind),
            required("isGenerable", &TypeRow::isGenerable),
            required("isGeneric", &TypeRow::isGeneric), required("line", &TypeRow::line),
            required("properties", &TypeRow::properties), required("cases", &TypeRow::cases));
    }
};

struct ImportReport {
    std::vector<TypeRow> types;
    std::vector<std::string> candidateRoots; // their names
    std::optional<std::string> root;
    std::optional<AgentOutputKind> output;
    std::vector<GenerableImportWarning> warnings;

    static constexpr auto keys() {
        return std::tuple(required("types", &ImportReport::types),
                          required("candidateRoots", &ImportReport::candidateRoots),
                          optional("root", &ImportReport::root),
                          optional("output", &ImportReport::output),
                          required("warnings", &ImportReport::warnings));
    }
};

struct TokenRow {
    SwiftLexer::Kind kind = SwiftLexer::Kind::punctuation;
    std::string text;
    std::int64_t line = 1;

    static constexpr auto keys() {
        return std::tuple(required("kind", &TokenRow::kind), required("text", &TokenRow::text),
                          required("line", &TokenRow::line));
    }
};

TypeRow rowOf(const ParsedType& type) {
    TypeRow row{type.name, type.kind, type.isGenerable, type.isGeneric, type.line, {}, type.cases};
    for (const ParsedProperty& property : type.properties) {
        row.properties.push_back({property.name, std::nullopt, property.typeText,
                                  property.guideDescription, property.docComment,
                                  property.constraints, property.anyOf,
                                  property.hasNonLiteralDescription, property.line});
        if (property.type) {
            row.properties.back().type = treeOf(*property.type);
        }
    }
    return row;
}

std::string readSource(const std::string& file) {
    if (file == "-") {
        std::string text{std::istreambuf_iterator<char>(std::cin), {}};
        if (!isValidUtf8(text)) {
            throw Failure{"Standard input isn't valid UTF-8 text."};
        }
        return text;
    }
    auto text = readTextFile(file);
    if (!text) {
        throw Failure{"Couldn't read " + std::filesystem::path(file).filename().string() + ": " +
                      text.error().message};
    }
    return std::move(*text);
}

// Bindings share their texts, and print them one by one, which can be far more than the source is
// long: too much to have in memory.
void printLongJson(const ImportReport& report) {
    JsonWriter writer([](std::string_view bytes) {
        std::cout << bytes;
        return std::cout.good();
    });
    static_cast<void>(encode(writer, report));
    writer.finish();
    std::cout << "\n";
}

void printTokens(std::string_view source, const Invocation& invocation) {
    const SwiftLexer::Tokens tokens = SwiftLexer::tokenize(source);
    std::vector<TokenRow> list;
    for (const SwiftLexer::Token& token : tokens.list) {
        list.push_back({token.kind, std::string(token.text), token.line});
    }
    if (invocation.json) {
        invocation.printJson(encodeJson(list));
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const TokenRow& token : list) {
        rows.push_back({std::string(rawValue(token.kind)), std::to_string(token.line),
                        oneLine(token.text, 80)});
    }
    invocation.print(table({"KIND", "LINE", "TEXT"}, rows));
}

std::string typeTable(const std::vector<ParsedType>& types, const ImportReport& report) {
    std::vector<std::vector<std::string>> rows;
    for (const ParsedType& type : types) {
        const bool isStructure = type.kind == ParsedType::Kind::structure;
        const bool isCandidate =
            std::find(report.candidateRoots.begin(), report.candidateRoots.end(), type.name) !=
            report.candidateRoots.end();
        rows.push_back(
            {oneLine(type.name, 60),
             std::string(type.isGenerable ? "@Generable " : "") + (isStructure ? "struct" : "enum"),
             isStructure ? std::to_string(type.properties.size()) +
                               (type.properties.size() == 1 ? " property" : " properties")
                         : counted(type.cases.size(), "case"),
             std::to_string(type.line),
             report.root == type.name ? "root" : (isCandidate ? "candidate" : "")});
    }
    return table({"TYPE", "KIND", "HOLDS", "LINE", ""}, rows);
}

void printImport(std::string_view source, const std::string& chosenRoot,
                 const Invocation& invocation) {
    const std::vector<ParsedType> types = GenerableImporter::parse(source).types;
    ImportReport report;
    for (const ParsedType& root : GenerableImporter::candidateRoots(types)) {
        report.candidateRoots.push_back(root.name);
    }
    if (!chosenRoot.empty()) {
        const auto found = std::find_if(types.begin(), types.end(), [&](const ParsedType& type) {
            return canonicallyEqual(type.name, chosenRoot);
        });
        if (found == types.end()) {
            throw Failure{"There is no struct or enum named “" + chosenRoot + "” in this source."};
        }
        report.root = found->name;
    } else if (!report.candidateRoots.empty()) {
        report.root = report.candidateRoots.front();
    }
    if (report.root) {
        auto converted = GenerableImporter::convert(types, *report.root);
        report.output = std::move(converted.output);
        report.warnings = std::move(converted.warnings);
    }
    if (invocation.json) {
        for (const ParsedType& type : types) {
            report.types.push_back(rowOf(type));
        }
        printLongJson(report);
        return;
    }
    if (types.empty()) {
        invocation.print("No struct or enum declaration found.\n");
        return;
    }
    invocation.print(typeTable(types, report));
    if (report.output) {
        invocation.print("\n" + *report.root + "\n" + outputTable(*report.output));
    }
    if (!report.warnings.empty()) {
        std::vector<std::vector<std::string>> rows;
        for (const GenerableImportWarning& warning : report.warnings) {
            rows.push_back({"Line " + std::to_string(warning.line.value_or(0)),
                            oneLine(warning.message, 400)});
        }
        invocation.print("\n" + table({"WARNING", ""}, rows));
    }
}

} // namespace

void addGenerableCommand(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string file;
        std::string root;
        bool tokens = false;
    };
    const auto options = std::make_shared<Options>();
    auto* generable =
        addCommand(app, "generable", "Show the output that @Generable Swift declarations define",
                   "ombrel generable TripPlan.swift --root TripPlan", invocation);
    generable->add_option("FILE", options->file, "Swift source; - reads standard input")
        ->required();
    auto* root = generable->add_option("--root", options->root,
                                       "The type to show; else the first that no other refers to");
    generable->add_flag("--tokens", options->tokens, "Show the tokens of the source instead")
        ->excludes(root);
    generable->callback([options, &invocation] {
        const std::string source = readSource(options->file);
        if (options->tokens) {
            printTokens(withoutByteOrderMark(source), invocation);
        } else {
            printImport(withoutByteOrderMark(source), options->root, invocation);
        }
    });
}

} // namespace ombrel
