#include "cli/OutputOptions.h"

#include "agents/OutputDraft.h"
#include "cli/ArgumentText.h"
#include "cli/FieldArgument.h"
#include "core/JsonDecoder.h"
#include "generable/GenerableImporter.h"
#include "platform/Text.h"

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

// The output that Swift source defines; its first candidate, or the type with the name.
AgentOutputKind importGenerable(const std::string& file, const std::string& root,
                                const Invocation& invocation) {
    const std::string source = argumentText("@" + file);
    const ParsedFile parsed = GenerableImporter::parse(source);
    if (parsed.types.empty()) {
        throw Failure{file + ": No struct or enum declaration found."};
    }
    const std::string wanted =
        root.empty() ? GenerableImporter::candidateRoots(parsed.types).front().name : root;
    std::vector<std::string> names;
    for (const ParsedType& type : parsed.types) {
        names.push_back(type.name);
    }
    const auto name = std::ranges::find_if(
        names, [&](const std::string& each) { return canonicallyEqual(each, wanted); });
    if (name == names.end()) {
        throw Failure{file + " declares no “" + wanted + "”. It declares: " + join(names, ", ") +
                      "."};
    }
    auto converted = GenerableImporter::convert(parsed.types, *name);
    for (const GenerableImportWarning& warning : converted.warnings) {
        invocation.note("Line " + std::to_string(warning.line.value_or(0)) + ": " +
                        warning.message);
    }
    if (!converted.output) {
        throw Failure{file + ": “" + *name + "” couldn't be imported."};
    }
    return std::move(*converted.output);
}

} // namespace

void OutputOptions::addTo(CLI::App& command) {
    CLI::Option_group* group = command.add_option_group(
        "Output", "What is returned: one kind of these. They replace what was there.");
    auto* text = group->add_flag("--output-text", m_isText, "Plain text");
    auto* cases = group->add_option("--output-case", m_cases,
                                    "One of several cases: NAME[=DESCRIPTION]; repeat it");
    cases->allow_extra_args(false);
    auto* fields =
        group->add_option("--output-field", m_fields,
                          "A property of an object: " + std::string(fieldSyntax) + "; repeat it");
    fields->allow_extra_args(false);
    auto* json = group->add_option("--output-json", m_jsonFile,
                                   "An output as `show --json` prints it, from a file or -");
    auto* generable = group->add_option("--output-generable", m_generableFile,
                                        "A Swift @Generable struct or enum, from a file or -");
    group->add_option("--root", m_root, "Which type of that file; else the outermost one")
        ->needs(generable);
    const std::vector<CLI::Option*> all{text, cases, fields, json, generable};
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            all[i]->excludes(all[j]);
        }
    }
}

std::optional<AgentOutputKind> OutputOptions::read(const Invocation& invocation) const {
    AgentOutputKind output;
    if (!m_cases.empty()) {
        output.value = AgentOutputKind::Enumeration{parseEnumCases(m_cases)};
    } else if (!m_fields.empty()) {
        output.value = AgentOutputKind::Object{parseFields(m_fields)};
    } else if (m_jsonFile) {
        auto decoded = decodeJson<AgentOutputKind>(readAll(*m_jsonFile));
        if (!decoded) {
            throw Failure{*m_jsonFile + ": " + decoded.error().message};
        }
        output = std::move(*decoded);
    } else if (m_generableFile) {
        output = importGenerable(*m_generableFile, m_root, invocation);
    } else if (!m_isText) {
        return std::nullopt;
    }
    if (const auto message = validationMessage(output)) {
        throw Failure{"The output isn't complete: " + std::string(*message)};
    }
    return output;
}

} // namespace ombrel
