// Vector search for vector_index_bench.py, which tells by lines on standard input what to do:
//
//   VectorIndexBench DIMENSION EMBEDDINGS QUERIES
//
// Both are files of doubles, vector after vector; the embeddings become chunks, a hundred to a
// document. Prints one JSON value for each line that it reads:
//   build    the seconds of the first query on chunks of which nothing is known yet
//   change   the seconds of a query after one embedding was replaced by an equal one
//   queries  the microseconds of each query, ten results wanted
//   results  for each query the numbers of the first ten chunks
#include "platform/LanguageRecognizer.h"
#include "platform/Uuid.h"
#include "retrieval/VectorIndex.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

using namespace ombrel;

namespace {

constexpr std::size_t chunksPerDocument = 100;
constexpr std::int64_t wanted = 10;

class NoLanguages : public LanguageRecognizer {
  public:
    std::optional<std::string> dominantLanguage(std::string_view) const override { return {}; }
};

std::vector<Vector> readVectors(const char* path, std::size_t dimension) {
    std::vector<Vector> vectors;
    std::ifstream file(path, std::ios::binary);
    Vector vector(dimension);
    while (file.read(reinterpret_cast<char*>(vector.data()),
                     static_cast<std::streamsize>(dimension * sizeof(double)))) {
        vectors.push_back(vector);
    }
    return vectors;
}

template <class Work>
double seconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv) {
    const std::size_t dimension = argc == 4 ? std::strtoul(argv[1], nullptr, 10) : 0;
    if (dimension == 0) {
        std::fputs("usage: VectorIndexBench DIMENSION EMBEDDINGS QUERIES\n", stderr);
        return 2;
    }
    IndexedChunks corpus;
    std::vector<Vector> embeddings = readVectors(argv[2], dimension);
    for (std::size_t i = 0; i < embeddings.size(); i += chunksPerDocument) {
        std::vector<DocumentChunk> chunks(std::min(chunksPerDocument, embeddings.size() - i));
        for (std::size_t j = 0; j < chunks.size(); ++j) {
            chunks[j].id = Uuid::random();
            chunks[j].embedding = std::move(embeddings[i + j]);
        }
        IndexedDocument& entry = corpus.emplace_back();
        entry.document.id = Uuid::random();
        entry.chunks = std::move(chunks);
    }
    const std::vector<Vector> queries = readVectors(argv[3], dimension);
    if (corpus.empty() || queries.empty()) {
        std::fputs("VectorIndexBench: nothing to search\n", stderr);
        return 1;
    }

    const NoLanguages languages;
    std::size_t found = 0; // so that no search is left out
    std::size_t edits = 0;
    for (std::string command; std::getline(std::cin, command);) {
        if (command == "build") {
            for (IndexedDocument& entry : corpus) {
                entry.chunks.edit(); // everything that was computed from the chunks goes
            }
            std::printf("%.6f\n", seconds([&] {
                            const VectorIndex index(corpus, languages);
                            found += index.search(queries[0], wanted).size();
                        }));
        } else if (command == "change") {
            DocumentChunk& chunk = corpus[++edits * 7 % corpus.size()].chunks.edit()[0];
            chunk.embedding = Vector(*chunk.embedding);
            std::printf("%.6f\n", seconds([&] {
                            const VectorIndex index(corpus, languages);
                            found += index.search(queries[0], wanted).size();
                        }));
        } else if (command == "queries") {
            const VectorIndex index(corpus, languages);
            for (std::size_t i = 0; i < queries.size(); ++i) {
                const double took =
                    seconds([&] { found += index.search(queries[i], wanted).size(); });
                std::printf("%s%.2f", i == 0 ? "[" : ", ", took * 1e6);
            }
            std::puts("]");
        } else if (command == "results") {
            const VectorIndex index(corpus, languages);
            std::unordered_map<const DocumentChunk*, std::size_t> numbers;
            for (const IndexedDocument& entry : corpus) {
                for (const DocumentChunk& chunk : entry.chunks) {
                    numbers.emplace(&chunk, numbers.size());
                }
            }
            for (std::size_t i = 0; i < queries.size(); ++i) {
                const auto best = index.search(queries[i], wanted);
                found += best.size();
                std::fputs(i == 0 ? "[[" : ", [", stdout);
                for (std::size_t j = 0; j < best.size(); ++j) {
                    std::printf("%s%zu", j == 0 ? "" : ", ", numbers.at(best[j].chunk));
                }
                std::fputs("]", stdout);
            }
            std::puts("]");
        } else {
            std::fprintf(stderr, "VectorIndexBench: no such command: %s\n", command.c_str());
            return 2;
        }
        std::fflush(stdout);
    }
    return found == 0;
}
