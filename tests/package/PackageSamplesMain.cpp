// Writes what compiled_package_test.py builds and compares:
//
//   package_samples packages FOLDER   packages, queries, vectors, and what the studio finds
//   package_samples scalars           a line for each scalar: its lower case, whether it is a
//   letter
//                                     or a number, and how many characters some texts with it have
//   package_samples large FOLDER CHUNKS NUMBERS FORM
//                                     one package of chunks of 1,600 characters
//
// Texts in the files are hexadecimal UTF-8.
#include "core/TokenEstimate.h"
#include "export/PackageGenerator.h"
#include "export/PackageName.h"
#include "platform/MainExecutor.h"
#include "platform/Text.h"
#include "retrieval/CompositeSearcher.h"
#include "tests/package/SampleCorpus.h"
#include "tests/support/ScriptedRecognizer.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

using namespace ombrel;
using namespace ombrel::test;

namespace {

namespace fs = std::filesystem;

// What a package of this kind is to find: the studio's hits, and each chunk that may be in the list
// with its score, of which only that order matters.
void printExpected(std::ostream& out, const std::string& package, IndexKind kind,
                   const IndexedChunks& corpus, const std::vector<Query>& queries) {
    Platform platform;
    platform.languages = std::make_shared<test::ScriptedRecognizer>();
    const IndexKind studioKind = kind == IndexKind::spotlight ? IndexKind::keyword : kind;
    const CompositeSearcher searcher = buildSearcher(studioKind, corpus, platform);
    for (std::size_t i = 0; i < queries.size(); ++i) {
        const auto& [text, topK, vector] = queries[i];
        out << package << ' ' << i;
        const auto hits = searcher.searchWithVector(text, vector, topK);
        for (const SearchHit& hit : hits) {
            out << ' ' << hit.chunk.id.text();
        }
        out << " |";
        if (kind == IndexKind::hybrid) {
            std::map<Uuid, double> sums;
            const auto addRanks = [&](const std::vector<RankedChunk>& ranked) {
                for (std::size_t p = 0; p < ranked.size(); ++p) {
                    sums[ranked[p].chunk->id] += 1.0 / (60.0 + static_cast<double>(p + 1));
                }
            };
            addRanks(searcher.keywordIndex()->search(text, topK * 3));
            if (vector) {
                addRanks(searcher.vectorIndex()->search(*vector, topK * 3));
            }
            for (const auto& [id, sum] : sums) {
                out << ' ' << id.text() << '=' << bits(sum);
            }
        } else {
            for (std::size_t p = 0; p < hits.size(); ++p) {
                out << ' ' << hits[p].chunk.id.text() << '=' << (hits.size() - p);
            }
        }
        out << '\n';
    }
}

void generate(const std::string& project, IndexKind kind, const IndexedChunks& corpus,
              const fs::path& folder, PackageForm form, std::ostream& packages) {
    BuildSettings settings;
    settings.index = kind;
    const test::ScriptedRecognizer languages;
    const std::string name = packageName(project);
    const auto package = generatePackage(name, settings, corpus, folder, languages, form);
    if (!package) {
        std::cerr << package.error().message << '\n';
        std::exit(1);
    }
    packages << name << '\n';
}

// Each chunk holds the word "every", so that a keyword search for it gives them all.
IndexedChunks everyCharacter() {
    std::vector<DocumentChunk> chunks;
    Random random(5);
    const auto add = [&](std::string text) {
        chunks.push_back(someChunk(random));
        chunks.back().text = std::move(text) + " every";
        chunks.back().breadcrumb = {chunks.back().text, ""};
        chunks.back().parentText = "parent " + chunks.back().text;
    };
    for (char32_t scalar = 0; scalar < 0xa0; ++scalar) {
        std::string text;
        appendScalar(text, scalar);
        add("x" + text + "y");
    }
    for (const char* text : {"\\(fatalError())", "\"\"\"", "#\"\\#(x)\"#", "\\u{41}", "\\", "\"",
                             "\u2028\u2029\ufeff", "\r\n", "\\\n", "*/ /* //"}) {
        add(text);
    }
    IndexedDocument entry;
    entry.chunks = std::move(chunks);
    return {entry};
}

// The same without what a compiler refuses or warns of in a literal.
IndexedChunks everyLiteralCharacter() {
    std::vector<DocumentChunk> chunks;
    const IndexedChunks all = everyCharacter();
    for (const DocumentChunk& chunk : all[0].chunks) {
        const char second = chunk.text[1];
        const bool isControl = static_cast<unsigned char>(second) < 0x20 || second == 0x7f;
        if (!isControl || second == '\t' || second == '\n' || second == '\r') {
            chunks.push_back(chunk);
        }
    }
    IndexedDocument entry;
    entry.chunks = std::move(chunks);
    return {entry};
}

IndexedChunks answerSample() {
    std::vector<DocumentChunk> chunks;
    Random random(6);
    const auto add = [&](std::string text, std::int64_t tokens) {
        chunks.push_back(someChunk(random));
        chunks.back() = {.id = chunks.back().id,
                         .index = 1,
                         .breadcrumb = {"Guide", "Start"},
                         .tokenCount = tokens,
                         .contextualNote = {},
                         .text = std::move(text),
                         .generatedQuestions = {},
                         .parentText = {},
                         .embedding = {}};
    };
    add("pump pump pump", 30);
    add("pump pump filler words", 50);
    add("pump with many more filler words around it", 20);
    IndexedDocument entry;
    entry.chunks = std::move(chunks);
    return {entry};
}

void writeChunks(std::ostream& out, const std::string& package, const IndexedChunks& corpus) {
    for (const IndexedDocument& entry : corpus) {
        for (const DocumentChunk& chunk : entry.chunks) {
            const bool isPlain = !chunk.parentText;
            out << package << ' ' << chunk.id.text() << ' ' << hex(chunk.text) << ' '
                << chunk.tokenCount << ' ' << hex(chunk.searchText()) << ' '
                << hex(chunk.packText()) << ' '
                << (isPlain ? chunk.tokenCount : estimateTokens(*chunk.parentText)) << ' '
                << hex(breadcrumbText(chunk.breadcrumb));
            for (const double number : chunk.embedding.value_or(Vector())) {
                out << ' ' << (number != number ? "nan" : bits(number));
            }
            out << '\n';
        }
    }
}

int writePackages(const fs::path& folder) {
    fs::create_directories(folder);
    Random random(20240229);
    const IndexedChunks corpus = someCorpus(random);
    const std::vector<Query> queries = someQueries(random, corpus);
    std::ofstream packages(folder / "packages.txt");
    std::ofstream expected(folder / "expected.txt");
    constexpr IndexKind kinds[] = {IndexKind::spotlight, IndexKind::keyword, IndexKind::vector,
                                   IndexKind::hybrid};
    for (const IndexKind kind : kinds) {
        for (const auto& [form, title] : {std::pair(PackageForm::arrayLiteral, "Literal"),
                                          std::pair(PackageForm::compact, "Compact")}) {
            const std::string project = std::string(rawValue(kind)) + ' ' + title;
            generate(project, kind, corpus, folder / "packages", form, packages);
            printExpected(expected, packageName(project), kind, corpus, queries);
        }
    }
    std::ofstream chunks(folder / "chunks.txt");
    const std::string compact = "2024 Caf\u00e9";
    generate(compact, IndexKind::keyword, everyCharacter(), folder / "packages",
             PackageForm::compact, packages);
    writeChunks(chunks, packageName(compact), everyCharacter());
    generate("Every Literal", IndexKind::keyword, everyLiteralCharacter(), folder / "packages",
             PackageForm::arrayLiteral, packages);
    writeChunks(chunks, packageName("Every Literal"), everyLiteralCharacter());
    generate("Answers", IndexKind::keyword, answerSample(), folder / "packages",
             PackageForm::arrayLiteral, packages);
    generate("Empty", IndexKind::hybrid, {}, folder / "packages", PackageForm::arrayLiteral,
             packages);
    generate("Empty Compact", IndexKind::vector, {}, folder / "packages", PackageForm::compact,
             packages);

    std::ofstream queryFile(folder / "queries.txt");
    std::ofstream vectorFile(folder / "vectors.txt");
    std::map<std::string, bool> written;
    for (const Query& query : queries) {
        queryFile << query.topK << ' ' << hex(query.text) << '\n';
        if (query.vector && written.emplace(query.text, true).second) {
            vectorFile << "en " << hex(query.text);
            for (const double number : *query.vector) {
                vectorFile << ' ' << bits(number);
            }
            vectorFile << '\n';
        }
    }
    return 0;
}

int printScalars() {
    const std::pair<std::string, std::string> contexts[] = {
        {"a", "a"},
        {"\r", "\n"},
        {"\U0001F469\u200D", "\U0001F469"},
        {"\u0915\u094D", "\u0915"},
        {"\U0001F1E9", "\U0001F1EA"},
        {"\u1100", "\u11A8"},
        {"\uAC00", "\u1161"},
        {"\u0600", "\u0301"},
        {"\u0B95\u0BCD", "\u0B95\u0BCD\u0B95"},
        {"-", "\u0301a"},
        {"a\u0301", "-\u0301a"},
    };
    for (char32_t scalar = 0; scalar < 0x110000; ++scalar) {
        if (scalar >= 0xd800 && scalar < 0xe000) {
            continue;
        }
        std::string text;
        appendScalar(text, scalar);
        const std::string lower = lowercased(text);
        std::printf("%lx ", static_cast<unsigned long>(scalar));
        for (std::size_t i = 0; i < lower.size();) {
            const DecodedScalar decoded = decodeScalar(lower, i);
            std::printf("%s%lx", i == 0 ? "" : "+", static_cast<unsigned long>(decoded.scalar));
            i += decoded.length;
        }
        std::printf(" %c%c ", isLetter(scalar) ? 'L' : '-', isNumber(scalar) ? 'N' : '-');
        for (const auto& [before, after] : contexts) {
            for (const std::string& term : KeywordIndex::tokenize(before + text + after)) {
                std::printf("%zu ", term.size());
            }
            std::putchar('|');
        }
        std::putchar('\n');
    }
    return 0;
}

int writeLarge(const fs::path& folder, std::size_t count, std::size_t numbers, PackageForm form) {
    Random random(1);
    std::vector<DocumentChunk> chunks(count);
    for (DocumentChunk& chunk : chunks) {
        chunk.id = Uuid::random();
        chunk.breadcrumb = {"Guide", "Section " + std::to_string(below(random, 100))};
        while (chunk.text.size() < 1600) {
            chunk.text += "word" + std::to_string(below(random, 20000)) + ' ';
        }
        chunk.text.resize(1600);
        chunk.tokenCount = 400;
        chunk.contextualNote = "This passage is one of many.";
        if (numbers > 0) {
            chunk.embedding.emplace(numbers);
            for (double& number : *chunk.embedding) {
                number = static_cast<float>(static_cast<double>(random() >> 11) * 0x1p-53 - 0.5);
            }
        }
    }
    IndexedDocument entry;
    entry.chunks = std::move(chunks);
    std::ostringstream names;
    generate("Large", IndexKind::hybrid, {entry}, folder, form, names);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == "packages") {
        return writePackages(arguments[1]);
    }
    if (arguments.size() == 1 && arguments[0] == "scalars") {
        return printScalars();
    }
    if (arguments.size() == 5 && arguments[0] == "large") {
        return writeLarge(arguments[1], std::stoul(arguments[2]), std::stoul(arguments[3]),
                          arguments[4] == "compact" ? PackageForm::compact
                                                    : PackageForm::arrayLiteral);
    }
    std::fputs("usage: package_samples packages FOLDER | scalars | large FOLDER CHUNKS NUMBERS "
               "compact|literal\n",
               stderr);
    return 2;
}
