// Package generation for package_generator_bench.py:
//
//   PackageGeneratorBench FOLDER [ROUNDS]
//
// Generates packages of 20,000 chunks of 1,600 characters with 384 numbers each, in single
// precision as embedding models give them and in double precision, in turn with the least that a
// generator can do: the peers write the finished bytes to a file in the same way (and nothing
// else), and print each number with printf's "%.17g", which reads back too. Prints one JSON object
// for each comparison: {"name", "ours", "peer", "unit"}, medians over the rounds in MB of output a
// second.
#include "export/CompactChunks.h"
#include "export/PackageGenerator.h"
#include "export/PackageSources.h"
#include "export/SwiftLiteral.h"
#include "platform/AtomicFile.h"
#include "platform/LanguageRecognizer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace ombrel;

namespace {

constexpr std::size_t chunkTotal = 20000;
constexpr std::size_t dimensions = 384;

class English : public LanguageRecognizer {
  public:
    std::optional<std::string> dominantLanguage(std::string_view) const override { return "en"; }
};

IndexedChunks someChunks(bool isSingle) {
    std::mt19937_64 random(1);
    std::vector<DocumentChunk> chunks(chunkTotal);
    for (DocumentChunk& chunk : chunks) {
        chunk.id = Uuid::random();
        chunk.breadcrumb = {"Guide", "Section " + std::to_string(random() % 100)};
        while (chunk.text.size() < 1600) {
            chunk.text += "word" + std::to_string(random() % 20000);
            chunk.text += random() % 12 == 0 ? '\n' : ' ';
        }
        chunk.text.resize(1600);
        chunk.tokenCount = 400;
        chunk.embedding.emplace(dimensions);
        for (double& number : *chunk.embedding) {
            number = (static_cast<double>(random() >> 11) * 0x1p-53 - 0.5) / 9;
            number = isSingle ? static_cast<float>(number) : number;
        }
    }
    IndexedDocument entry;
    entry.document.id = Uuid::random();
    entry.chunks = std::move(chunks);
    return {entry};
}

double seconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "PackageGeneratorBench: %s\n", what);
        std::exit(1);
    }
}

void write(const std::filesystem::path& file, const std::string& bytes) {
    check(replaceFile(file, {.expected = {}, .replaceAny = true, .keepOldAs = {}},
                      [&](const ByteSink& sink) { return sink(bytes); })
              .has_value(),
          "a file could not be written");
}

// Times both in turn, and prints how many of `megabytes` each does in a second.
void compare(const char* name, int rounds, double oursMegabytes, double peerMegabytes,
             const std::function<void()>& ours, const std::function<void()>& peer) {
    std::vector<double> oursTimes, peerTimes;
    for (int round = 0; round < rounds; ++round) {
        oursTimes.push_back(seconds(ours));
        peerTimes.push_back(seconds(peer));
    }
    std::printf(R"({"name": "%s", "ours": %.1f, "peer": %.1f, "unit": "MB/s"})"
                "\n",
                name, oursMegabytes / median(oursTimes), peerMegabytes / median(peerTimes));
    std::fflush(stdout);
}

void compareForm(const char* name, int rounds, const IndexedChunks& pairs, PackageForm form,
                 const std::filesystem::path& folder) {
    const English english;
    const auto generate = [&] {
        check(
            generatePackage("BenchRAG", BuildSettings(), pairs, folder, english, form).has_value(),
            "the package could not be generated");
    };
    const std::string bytes =
        form == PackageForm::compact ? compactChunksSource(pairs) : chunksSource(pairs);
    const double megabytes = static_cast<double>(bytes.size()) / 1e6;
    compare(name, rounds, megabytes, megabytes, generate,
            [&] { write(folder / "bytes.swift", bytes); });
}

void compareNumbers(const char* name, int rounds, const IndexedChunks& pairs) {
    std::size_t oursBytes = 0;
    std::size_t peerBytes = 0;
    const auto ours = [&] {
        std::string text;
        for (const DocumentChunk& chunk : pairs[0].chunks) {
            for (const double number : *chunk.embedding) {
                appendSwiftDouble(text, number);
                text += ", ";
            }
        }
        oursBytes = text.size();
    };
    const auto peer = [&] {
        std::string text;
        char digits[40];
        for (const DocumentChunk& chunk : pairs[0].chunks) {
            for (const double number : *chunk.embedding) {
                text.append(digits, static_cast<std::size_t>(
                                        std::snprintf(digits, sizeof digits, "%.17g, ", number)));
            }
        }
        peerBytes = text.size();
    };
    ours();
    peer();
    compare(name, rounds, static_cast<double>(oursBytes) / 1e6,
            static_cast<double>(peerBytes) / 1e6, ours, peer);
}

} // namespace

int main(int argc, char** argv) {
    check(argc == 2 || argc == 3, "usage: PackageGeneratorBench FOLDER [ROUNDS]");
    const std::filesystem::path folder = argv[1];
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
    check(rounds > 0, "the number of rounds must be positive");
    for (const bool isSingle : {true, false}) {
        const IndexedChunks pairs = someChunks(isSingle);
        const std::string numbers = isSingle ? "single" : "double";
        const std::string size = "package of 20,000 chunks, " + numbers + " precision, ";
        compareForm((size + "array literal vs. writing its bytes").c_str(), rounds, pairs,
                    PackageForm::arrayLiteral, folder);
        compareForm((size + "compact vs. writing its bytes").c_str(), rounds, pairs,
                    PackageForm::compact, folder);
        compareNumbers(("numbers of " + numbers + " precision vs. printf").c_str(), rounds, pairs);
    }
    return 0;
}
