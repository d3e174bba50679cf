// Writes what runtime_test.py has the runtime of compiled flows search, and what the studio finds:
//
//   runtime_samples FOLDER
//
// FOLDER/N.chunks     a line for each chunk: id, breadcrumb, text that is searched, text for the
//                     model, and the bits of its embedding's numbers, or "-" when it has none
// FOLDER/N.queries    a line for each query: how many hits, the text, and the bits of its vector's
//                     numbers, or "-" when it has none
// FOLDER/N.expected   a line for each kind and query: the kind, the query's number, and the hits
//                     with the bits of their scores
//
// Texts are hexadecimal UTF-8 with an "x" before.
#include "platform/Platform.h"
#include "retrieval/CompositeSearcher.h"
#include "tests/package/SampleCorpus.h"
#include "tests/support/ScriptedRecognizer.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace ombrel;
using namespace ombrel::test;

namespace {

namespace fs = std::filesystem;

// So many chunks that the studio does not look at each of them, with the words of the small corpus
// and some thousand others, and vectors that lie close together.
IndexedChunks largeCorpus(Random& random) {
    constexpr std::size_t dimension = 24;
    std::vector<Vector> centres;
    for (int i = 0; i < 20; ++i) {
        centres.push_back(someVector(random, dimension));
    }
    IndexedChunks corpus(8);
    for (IndexedDocument& entry : corpus) {
        std::vector<DocumentChunk> chunks;
        for (int i = 0; i < 500; ++i) {
            DocumentChunk& chunk = chunks.emplace_back(someChunk(random));
            for (std::size_t n = below(random, 60); n > 0; --n) {
                chunk.text += " term" + std::to_string(below(random, 1 + below(random, 3000)));
            }
            Vector vector = centres[below(random, centres.size())];
            for (double& number : vector) {
                number = static_cast<float>(number + 0.05 * someVector(random, 1).front());
            }
            chunk.embedding = vector;
        }
        entry.document.name = "Document";
        entry.chunks = std::move(chunks);
    }
    return corpus;
}

void addLargeQueries(Random& random, const IndexedChunks& corpus, std::vector<Query>& queries) {
    for (int i = 0; i < 150; ++i) {
        Query query;
        for (std::size_t n = 1 + below(random, 8); n > 0; --n) {
            query.text += "term" + std::to_string(below(random, 1 + below(random, 3000))) + ' ';
        }
        query.topK = static_cast<std::int64_t>(1 + below(random, 40));
        const ChunkArray& chunks = corpus[below(random, corpus.size())].chunks;
        query.vector = chunks[below(random, chunks.size())].embedding;
        for (double& number : *query.vector) {
            number += 0.1 * someVector(random, 1).front();
        }
        queries.push_back(std::move(query));
    }
}

void writeVector(std::ostream& out, const std::optional<Vector>& vector) {
    if (!vector) {
        out << " -";
        return;
    }
    for (const double number : *vector) {
        out << ' ' << bits(number);
    }
}

void write(const fs::path& folder, const std::string& name, const IndexedChunks& corpus,
           const std::vector<Query>& queries) {
    std::ofstream chunks(folder / (name + ".chunks"));
    for (const IndexedDocument& entry : corpus) {
        for (const DocumentChunk& chunk : entry.chunks) {
            chunks << chunk.id.text() << " x" << hex(breadcrumbText(chunk.breadcrumb)) << " x"
                   << hex(chunk.searchText()) << " x" << hex(chunk.packText());
            writeVector(chunks, chunk.embedding);
            chunks << '\n';
        }
    }
    std::ofstream queryFile(folder / (name + ".queries"));
    for (const Query& query : queries) {
        queryFile << query.topK << " x" << hex(query.text);
        writeVector(queryFile, query.vector);
        queryFile << '\n';
    }
    std::ofstream expected(folder / (name + ".expected"));
    Platform platform;
    platform.languages = std::make_shared<ScriptedRecognizer>();
    for (const auto& [kind, kindName] :
         {std::pair(IndexKind::keyword, "keyword"), std::pair(IndexKind::vector, "vector"),
          std::pair(IndexKind::hybrid, "hybrid")}) {
        const CompositeSearcher searcher = buildSearcher(kind, corpus, platform);
        for (std::size_t i = 0; i < queries.size(); ++i) {
            const Query& query = queries[i];
            // A run asks for one hit at least.
            const std::int64_t topK = std::max<std::int64_t>(query.topK, 1);
            expected << kindName << ' ' << i;
            for (const SearchHit& hit : searcher.searchWithVector(query.text, query.vector, topK)) {
                expected << ' ' << hit.chunk.id.text() << '=' << bits(hit.fusedScore);
            }
            expected << '\n';
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: runtime_samples FOLDER\n", stderr);
        return 2;
    }
    const fs::path folder = argv[1];
    fs::create_directories(folder);
    Random random(20250311);
    const IndexedChunks small = someCorpus(random);
    const std::vector<Query> queries = someQueries(random, small);
    write(folder, "small", small, queries);
    const IndexedChunks large = largeCorpus(random);
    std::vector<Query> more = queries;
    addLargeQueries(random, large, more);
    write(folder, "large", large, more);
    write(folder, "empty", {}, {queries.begin(), queries.begin() + 10});
    return 0;
}
