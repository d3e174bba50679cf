// Keyword search for keyword_index_bench.py, which tells by lines on standard input what to do:
//
//   KeywordIndexBench CORPUS QUERIES
//
// Both are files of one text a line: chunks, a hundred to a document, and queries. Prints one JSON
// value for each line that it reads:
//   build    the seconds of the first query on chunks of which nothing is known yet
//   change   the seconds of a query after one chunk was edited
//   queries  the microseconds of each query, ten results wanted
//   results  for each query the number of matching chunks and the numbers of the first ten
#include "platform/Uuid.h"
#include "retrieval/KeywordIndex.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
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

IndexedChunks readCorpus(const char* path) {
    IndexedChunks corpus;
    std::vector<DocumentChunk> chunks;
    const auto finishDocument = [&] {
        if (!chunks.empty()) {
            IndexedDocument& entry = corpus.emplace_back();
            entry.document.id = Uuid::random();
            entry.chunks = std::exchange(chunks, {});
        }
    };
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        chunks.emplace_back().id = Uuid::random();
        chunks.back().text = std::move(line);
        if (chunks.size() == chunksPerDocument) {
            finishDocument();
        }
    }
    finishDocument();
    return corpus;
}

// Makes everything that was computed from the chunks go.
void forget(IndexedChunks& corpus) {
    for (IndexedDocument& entry : corpus) {
        entry.chunks.edit();
    }
}

template <class Work>
double seconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: KeywordIndexBench CORPUS QUERIES\n", stderr);
        return 2;
    }
    IndexedChunks corpus = readCorpus(argv[1]);
    std::vector<std::string> queries;
    std::ifstream file(argv[2]);
    for (std::string line; std::getline(file, line);) {
        queries.push_back(line);
    }
    if (corpus.empty() || queries.empty()) {
        std::fputs("KeywordIndexBench: nothing to search\n", stderr);
        return 1;
    }

    std::size_t found = 0; // so that no search is left out
    std::size_t edits = 0;
    for (std::string command; std::getline(std::cin, command);) {
        if (command == "build") {
            forget(corpus);
            std::printf("%.6f\n", seconds([&] {
                            found += KeywordIndex(corpus).search(queries[0], wanted).size();
                        }));
        } else if (command == "change") {
            std::size_t document = ++edits * 7 % corpus.size();
            corpus[document].chunks.edit()[0].text += " changed";
            std::printf("%.6f\n", seconds([&] {
                            found += KeywordIndex(corpus).search(queries[0], wanted).size();
                        }));
        } else if (command == "queries") {
            const KeywordIndex index(corpus);
            for (std::size_t i = 0; i < queries.size(); ++i) {
                const double took =
                    seconds([&] { found += index.search(queries[i], wanted).size(); });
                std::printf("%s%.2f", i == 0 ? "[" : ", ", took * 1e6);
            }
            std::puts("]");
        } else if (command == "results") {
            const KeywordIndex index(corpus);
            std::unordered_map<const DocumentChunk*, std::size_t> numbers;
            for (const IndexedDocument& entry : corpus) {
                for (const DocumentChunk& chunk : entry.chunks) {
                    numbers.emplace(&chunk, numbers.size());
                }
            }
            for (std::size_t i = 0; i < queries.size(); ++i) {
                const auto all = index.search(queries[i], static_cast<std::int64_t>(index.size()));
                const auto best = index.search(queries[i], wanted);
                found += best.size();
                std::printf("%s[%zu, [", i == 0 ? "[" : ", ", all.size());
                for (std::size_t j = 0; j < best.size(); ++j) {
                    std::printf("%s%zu", j == 0 ? "" : ", ", numbers.at(best[j].chunk));
                }
                std::printf("]]");
            }
            std::puts("]");
        } else {
            std::fprintf(stderr, "KeywordIndexBench: no such command: %s\n", command.c_str());
            return 2;
        }
        std::fflush(stdout);
    }
    return found == 0;
}
