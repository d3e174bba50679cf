#include "cli/FindNamed.h"
#include "cli/Session.h"
#include "core/JsonEncoder.h"
#include "core/SettingRange.h"
#include "knowledge/BuildTexts.h"
#include "platform/Text.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace ombrel {

namespace {

// A raw value or case name as people type it: "heading-aware", "Heading-aware" and "headingAware"
// are one.
std::string folded(std::string_view text) {
    std::string key;
    for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c))) {
            key += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return key;
}

template <RawEnum E>
E parseChoice(std::string_view key, std::string_view text,
              const std::vector<std::pair<E, std::string_view>>& extraNames = {}) {
    std::string choices;
    for (const auto& entry : rawValues(E{})) {
        if (folded(entry.raw) == folded(text)) {
            return entry.value;
        }
        choices += (choices.empty() ? "" : ", ") + std::string(entry.raw);
    }
    for (const auto& [value, name] : extraNames) {
        if (folded(name) == folded(text)) {
            return value;
        }
    }
    throw Failure{std::string(key) + " can't be “" + std::string(text) +
                      "”. It is one of: " + choices + ".",
                  true};
}

double parseNumber(std::string_view key, std::string_view text, SettingRange allowed) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !(value >= allowed.least) ||
        !(value <= allowed.most)) {
        char range[64];
        std::snprintf(range, sizeof range, "%g to %g", allowed.least, allowed.most);
        throw Failure{std::string(key) + " is a number from " + range + ", not “" +
                          std::string(text) + "”.",
                      true};
    }
    return value;
}

bool parseBool(std::string_view key, std::string_view text) {
    const std::string word = folded(text);
    if (word == "true" || word == "on" || word == "yes") {
        return true;
    }
    if (word == "false" || word == "off" || word == "no") {
        return false;
    }
    throw Failure{std::string(key) + " is on or off, not “" + std::string(text) + "”.", true};
}

std::set<Enrichment> parseEnrichments(std::string_view key, std::string_view text) {
    std::set<Enrichment> set;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t comma = std::min(text.find(',', start), text.size());
        const auto name = trimBlanksAndTabs(text.substr(start, comma - start));
        if (!name.empty() && folded(name) != "none") {
            set.insert(parseChoice<Enrichment>(key, name));
        }
        start = comma + 1;
    }
    return set;
}

// Writes one "key=value" of the command line into the settings.
void apply(BuildSettings& settings, const std::string& assignment) {
    const std::size_t equals = assignment.find('=');
    if (equals == std::string::npos) {
        throw Failure{"“" + assignment + "” isn't of the form key=value.", true};
    }
    const std::string key = assignment.substr(0, equals);
    const std::string value = assignment.substr(equals + 1);
    if (key == "chunking") {
        settings.chunking = parseChoice<ChunkingStrategy>(key, value);
    } else if (key == "targetChunkSize") {
        settings.targetChunkSize = parseNumber(key, value, targetChunkSizeRange);
    } else if (key == "overlapPercent") {
        settings.overlapPercent = parseNumber(key, value, overlapPercentRange);
    } else if (key == "index") {
        settings.index = parseChoice<IndexKind>(key, value);
    } else if (key == "enrichments") {
        settings.enrichments = parseEnrichments(key, value);
    } else if (key == "generatedQuestionsPerChunk") {
        settings.generatedQuestionsPerChunk =
            parseNumber(key, value, generatedQuestionsPerChunkRange);
    } else if (key == "transform") {
        settings.transform = parseChoice<QueryTransform>(
            key, value, {{QueryTransform::rewrite, "rewrite"}, {QueryTransform::tool, "tool"}});
    } else if (key == "rerank") {
        settings.rerank = parseBool(key, value);
    } else if (key == "topK") {
        settings.topK = parseNumber(key, value, topKRange);
    } else if (key == "contextBudget") {
        settings.contextBudget = parseNumber(key, value, contextBudgetRange);
    } else {
        throw Failure{"There is no setting “" + key +
                          "”. There are: chunking, targetChunkSize, overlapPercent, index, "
                          "enrichments, generatedQuestionsPerChunk, transform, rerank, topK, "
                          "contextBudget.",
                      true};
    }
}

std::string number(double value) {
    char text[32];
    const auto result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

std::string settingsTable(const BuildSettings& settings) {
    std::string enrichments;
    for (const Enrichment enrichment : settings.enrichments) {
        enrichments += (enrichments.empty() ? "" : ", ") + std::string(rawValue(enrichment));
    }
    return table({"SETTING", "VALUE"},
                 {{"chunking", std::string(rawValue(settings.chunking))},
                  {"targetChunkSize", number(settings.targetChunkSize) + " tokens"},
                  {"overlapPercent", number(settings.overlapPercent) + "%"},
                  {"index", std::string(rawValue(settings.index))},
                  {"enrichments", enrichments.empty() ? "none" : enrichments},
                  {"generatedQuestionsPerChunk", number(settings.generatedQuestionsPerChunk)},
                  {"transform", std::string(rawValue(settings.transform))},
                  {"rerank", settings.rerank ? "on" : "off"},
                  {"topK", number(settings.topK)},
                  {"contextBudget", number(settings.contextBudget) + " of 8,192 tokens"}});
}

struct VariantList {
    std::vector<Variant> variants;
    Uuid selectedVariantID;

    static constexpr auto keys() {
        return std::tuple(required("variants", &VariantList::variants),
                          required("selectedVariantID", &VariantList::selectedVariantID));
    }
};

struct IndexRow {
    Uuid id;
    std::string name;
    std::int64_t sources = 0;
    std::int64_t chunks = 0;

    static constexpr auto keys() {
        return std::tuple(required("id", &IndexRow::id), required("name", &IndexRow::name),
                          required("sources", &IndexRow::sources),
                          required("chunks", &IndexRow::chunks));
    }
};

struct IndexList {
    std::vector<IndexRow> ragIndexes;
    Uuid selectedRAGIndexID;

    static constexpr auto keys() {
        return std::tuple(required("ragIndexes", &IndexList::ragIndexes),
                          required("selectedRAGIndexID", &IndexList::selectedRAGIndexID));
    }
};

void printVariants(const RAGIndex& index, const Invocation& invocation) {
    if (invocation.json) {
        invocation.printJson(encodeJson(VariantList{index.variants, index.selectedVariantID}));
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const Variant& variant : index.variants) {
        rows.push_back({variant.summaryLabel(),
                        variant.id == index.selectedVariantID ? "selected" : "",
                        variant.id.text()});
    }
    invocation.print(table({"VARIANT", "", "ID"}, rows));
}

void printIndexes(const AppState& state, Uuid selected, const Invocation& invocation) {
    IndexList list{{}, selected};
    for (const RAGIndex& index : *state.ragIndexes) {
        std::int64_t chunks = 0;
        for (const SourceDocument& source : index.sources) {
            const auto found = index.chunksByDocument.find(source.id);
            chunks += found == index.chunksByDocument.end()
                          ? 0
                          : static_cast<std::int64_t>(found->second.size());
        }
        list.ragIndexes.push_back(
            {index.id, index.name, static_cast<std::int64_t>(index.sources.size()), chunks});
    }
    if (invocation.json) {
        invocation.printJson(encodeJson(list));
        return;
    }
    std::vector<std::vector<std::string>> rows;
    for (const IndexRow& row : list.ragIndexes) {
        rows.push_back({row.name, std::to_string(row.sources), std::to_string(row.chunks),
                        row.id == selected ? "selected" : "", row.id.text()});
    }
    invocation.print(table({"RAG INDEX", "SOURCES", "CHUNKS", "", "ID"}, rows));
}

} // namespace

Uuid findRAGIndex(const AppState& state, const std::string& nameOrID) {
    return findNamed(*state.ragIndexes, nameOrID, "RAG index");
}

Uuid findVariant(const AppState& state, const std::string& nameOrID) {
    return findNamed(state.currentIndex().variants, nameOrID, "variant");
}

void addRecipeCommands(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string project;
        std::vector<std::string> assignments;
        std::string name;
        std::string newName;
    };
    const auto options = std::make_shared<Options>();

    auto* settings =
        addCommand(app, "settings", "Show or change the recipe of the selected variant",
                   "ombrel settings handbook.ombrel index=keyword topK=8 "
                   "enrichments=contextualNotes,parentChild",
                   invocation);
    addProjectArgument(*settings, options->project, invocation);
    settings->add_option("key=value", options->assignments, "Settings to change");
    settings->callback([options, &invocation] {
        Session session(options->project, invocation);
        Variant variant = session->currentVariant();
        const QueryTransform oldTransform = variant.settings.transform;
        for (const std::string& assignment : options->assignments) {
            apply(variant.settings, assignment);
        }
        const auto reason = disabledReason(variant.settings.transform, variant.settings.index);
        if (reason && variant.settings.transform != oldTransform) {
            throw Failure{std::string(rawValue(variant.settings.transform)) + ": " +
                              std::string(*reason),
                          true};
        }
        if (!options->assignments.empty()) {
            session->updateVariant(variant);
            session.save();
        }
        if (invocation.json) {
            invocation.printJson(encodeJson(variant.settings));
            return;
        }
        invocation.print(variant.summaryLabel() + "\n\n" + settingsTable(variant.settings));
        if (settingsChangedSinceBuild(*session)) {
            invocation.note("\nNot built yet with these settings: `ombrel build` builds them.");
        }
    });

    auto* variant =
        addCommand(app, "variant", "List, choose, copy and name the recipes of an index",
                   "ombrel variant handbook.ombrel duplicate && "
                   "ombrel settings handbook.ombrel index=keyword",
                   invocation);
    addProjectArgument(*variant, options->project, invocation);
    variant->require_subcommand(0, 1);
    variant->fallthrough();
    auto* selectVariant = variant->add_subcommand("select", "Choose the variant in force");
    selectVariant->add_option("NAME", options->name, "Name or id")->required();
    auto* duplicateVariant =
        variant->add_subcommand("duplicate", "Copy the selected variant and choose the copy");
    auto* renameVariant = variant->add_subcommand("rename", "Give a variant another name");
    renameVariant->add_option("NAME", options->name, "Name or id")->required();
    renameVariant->add_option("NEW", options->newName, "The new name")->required();
    variant->callback([=, &invocation] {
        Session session(options->project, invocation);
        if (*selectVariant) {
            const Uuid id = findVariant(*session, options->name);
            session->editCurrentIndex()->selectedVariantID = id;
            session.save();
        } else if (*duplicateVariant) {
            session->duplicateVariant();
            session.save();
        } else if (*renameVariant) {
            const Uuid id = findVariant(*session, options->name);
            for (Variant copy : session->currentIndex().variants) {
                if (copy.id == id) {
                    copy.name = options->newName;
                    session->updateVariant(copy);
                    break;
                }
            }
            session.save();
        }
        printVariants(session->currentIndex(), invocation);
    });

    auto* index = addCommand(app, "index", "List, add, choose, copy, name and delete RAG indexes",
                             "ombrel index handbook.ombrel add && ombrel index handbook.ombrel "
                             "rename \"New RAG 2\" Manuals",
                             invocation);
    index->add_option("PROJECT", options->project, "The project file")->required();
    index->require_subcommand(0, 1);
    index->fallthrough();
    auto* add = index->add_subcommand("add", "Add an empty index and choose it");
    const auto withName = [&](const char* name, const char* description) {
        auto* command = index->add_subcommand(name, description);
        command->add_option("NAME", options->name, "Name or id")->required();
        return command;
    };
    auto* select = withName("select", "Choose the index that commands use");
    auto* duplicate = withName("duplicate", "Copy an index with all that is in it");
    auto* remove = withName("delete", "Delete an index with all that is in it");
    auto* rename = withName("rename", "Give an index another name");
    rename->add_option("NEW", options->newName, "The new name")->required();
    index->callback([=, &invocation] {
        Session session(options->project, invocation);
        bool changed = true;
        if (*add) {
            session->addRAGIndex();
        } else if (*select) {
            session->selectRAGIndex(findRAGIndex(*session, options->name));
        } else if (*duplicate) {
            session->duplicateRAGIndex(findRAGIndex(*session, options->name));
        } else if (*remove) {
            if (session->ragIndexes->size() == 1) {
                throw Failure{"A project keeps at least one RAG index."};
            }
            session->deleteRAGIndex(findRAGIndex(*session, options->name));
        } else if (*rename) {
            session->renameRAGIndex(findRAGIndex(*session, options->name), options->newName);
        } else {
            changed = false;
        }
        if (changed) {
            session.save(true);
        }
        printIndexes(*session, *session->selectedRAGIndexID, invocation);
    });
}

} // namespace ombrel
