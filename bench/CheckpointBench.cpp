// What an undo checkpoint costs in a project of 100,000 chunks in 1,000 documents, against copying
// the least that a snapshot must hold, and against copying everything.
//
//   CheckpointBench [ROUNDS]
//
// Prints one JSON object for each peer: {"name", "ours", "peer", "unit"}, medians over the rounds.
#include "core/AppState.h"
#include "platform/RunLoopExecutor.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace ombrel;

namespace {

constexpr std::size_t documents = 1000;
constexpr std::size_t chunksPerDocument = 100;
constexpr std::size_t dimensions = 384;

std::vector<DocumentChunk> someChunks(std::size_t document) {
    std::vector<DocumentChunk> chunks(chunksPerDocument);
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        DocumentChunk& chunk = chunks[i];
        chunk.id = Uuid::random();
        chunk.index = static_cast<std::int64_t>(i) + 1;
        chunk.breadcrumb = {"Document " + std::to_string(document), "Section"};
        chunk.text.assign(1600, static_cast<char>('a' + i % 26));
        chunk.tokenCount = 400;
        chunk.contextualNote = "This chunk is one of many in a document about measurements.";
        chunk.embedding.emplace(dimensions, 1.0 / static_cast<double>(i + 1));
    }
    return chunks;
}

void fill(AppState& state) {
    auto index = state.editCurrentIndex();
    for (std::size_t i = 0; i < documents; ++i) {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = "measurements-of-station-" + std::to_string(i) + ".md";
        source.type = SourceType::markdown;
        source.chunkCount = chunksPerDocument;
        source.tokenCount = chunksPerDocument * 400;
        source.fileURL = "/home/someone/Documents/Field Station/Notes/" + source.name;
        index->chunksByDocument[source.id] = someChunks(i);
        index->sources.push_back(std::move(source));
    }
}

// The least that a snapshot must hold of a document: what tells it from others, its name, its path
// and a counted reference to its chunks, all rows in one piece of memory.
struct Row {
    Uuid id;
    std::string name;
    std::string path;
    std::shared_ptr<const void> chunks;
    std::int64_t chunkCount;
    std::int64_t tokenCount;
};

std::vector<Row> rows(const RAGIndex& index) {
    std::vector<Row> result;
    for (const auto& source : index.sources) {
        result.push_back({source.id, source.name, source.fileURL->native(),
                          std::make_shared<const int>(0), source.chunkCount, source.tokenCount});
    }
    return result;
}

// All chunks in memory of their own.
std::vector<std::vector<DocumentChunk>> deepCopy(const PersistedProject& snapshot) {
    std::vector<std::vector<DocumentChunk>> copy;
    for (const auto& [id, chunks] : snapshot.ragIndexes[0].chunksByDocument) {
        copy.push_back(chunks.values());
    }
    return copy;
}

double milliseconds(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "CheckpointBench: %s\n", what);
        std::exit(1);
    }
}

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 15;
    check(rounds > 0, "the number of rounds must be positive");
    Platform platform; // checkpoints use no other service than the executor
    platform.executor = std::make_shared<RunLoopExecutor>();
    const auto state = AppState::make(platform);
    state->undoManager = std::make_shared<UndoManager>();
    fill(*state);
    const RAGIndex& index = state->currentIndex();
    const std::vector<Row> least = rows(index);

    state->checkpoint();
    state->checkpoint();
    const PersistedProject& snapshot = *state->lastSnapshot;
    check(state->undoManager->count() == 2, "a checkpoint is no undo step");
    check(snapshot.ragIndexes[0].sources.size() == least.size(), "a source is missing");
    for (const auto& [id, chunks] : index.chunksByDocument) {
        const ChunkArray& held = snapshot.ragIndexes[0].chunksByDocument.at(id);
        check(held.identity() == chunks.identity(), "a snapshot does not share its chunks");
    }
    {
        const auto deep = deepCopy(snapshot);
        std::size_t i = 0;
        for (const auto& [id, chunks] : index.chunksByDocument) {
            check(deep[i++] == chunks.values(), "the deep copy differs");
        }
    }

    const auto print = [](const char* name, std::vector<double> ours, std::vector<double> peer) {
        std::printf(R"({"name": "%s", "ours": %.4f, "peer": %.4f, "unit": "ms"})"
                    "\n",
                    name, median(std::move(ours)), median(std::move(peer)));
    };
    const auto timeCheckpoint = [&] {
        state->undoManager->removeAllActions();
        return milliseconds([&] { state->checkpoint(); });
    };
    {
        std::vector<double> ours, peer;
        for (int round = 0; round < 20 * rounds; ++round) {
            const bool oursFirst = round % 2 == 0; // whoever is second finds the names in the cache
            if (oursFirst) {
                ours.push_back(timeCheckpoint());
            }
            std::vector<Row> copy;
            peer.push_back(milliseconds([&] { copy = least; }));
            if (!oursFirst) {
                ours.push_back(timeCheckpoint());
            }
        }
        print("checkpoint of 100,000 chunks vs. copying names, paths and references", ours, peer);
    }
    {
        std::vector<double> ours, peer;
        for (int round = 0; round < rounds; ++round) {
            ours.push_back(timeCheckpoint());
            std::vector<std::vector<DocumentChunk>> copy;
            peer.push_back(milliseconds([&] { copy = deepCopy(*state->lastSnapshot); }));
        }
        print("checkpoint of 100,000 chunks vs. copying the chunks", ours, peer);
    }
    return 0;
}
