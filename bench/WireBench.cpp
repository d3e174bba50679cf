// WireBench CHUNKS DIMENSION FILE: builds the request of a flow whose one agent has an index of so
// many chunks attached, writes it to FILE once, and then encodes it three times to nowhere. Prints,
// as one JSON object, the seconds that building took, those of the fastest encoding, and the bytes.
#include "flows/FlowSpecBuilder.h"
#include "flows/WireFlowRunRequest.h"
#include "platform/JsonWriter.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace ombrel;
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// Texts of about 800 bytes, and vectors as a model gives them: 32-bit numbers of length 1.
RAGIndex knowledge(std::size_t count, std::size_t dimension) {
    std::mt19937_64 source(3);
    std::normal_distribution<float> part(0.0F, 0.05F);
    RAGIndex index(Uuid::random(), "Handbook");
    index.variants[0].settings.index = IndexKind::hybrid;
    constexpr std::size_t chunksPerDocument = 100;
    for (std::size_t first = 0; first < count; first += chunksPerDocument) {
        SourceDocument document;
        document.id = Uuid::random();
        std::vector<DocumentChunk> chunks(std::min(chunksPerDocument, count - first));
        for (DocumentChunk& chunk : chunks) {
            chunk.id = Uuid::random();
            chunk.breadcrumb = {"Handbook", "Section " + std::to_string(first)};
            while (chunk.text.size() < 800) {
                chunk.text += "Word " + std::to_string(source() % 10000) + " says “so”.\n";
            }
            auto& embedding = chunk.embedding.emplace(dimension);
            std::ranges::generate(embedding, [&] { return static_cast<double>(part(source)); });
        }
        index.chunksByDocument.emplace(document.id, std::move(chunks));
        index.sources.push_back(std::move(document));
    }
    return index;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: WireBench CHUNKS DIMENSION FILE\n");
        return 2;
    }
    const auto count = static_cast<std::size_t>(std::atoll(argv[1]));
    const auto dimension = static_cast<std::size_t>(std::atoll(argv[2]));
    const std::vector<RAGIndex> indexes{knowledge(count, dimension)};
    Agent agent = newAgent("Writer");
    agent.ragAttachments = {{Uuid::random(), indexes[0].id, 5, 0.25}};
    Flow flow("Support");
    const Uuid node = Uuid::random();
    const Uuid end = Uuid::random();
    flow.nodes.push_back({node, {FlowNodeKind::Agent{agent.id}}, {}});
    flow.nodes.push_back({end, {FlowNodeKind::End{"done", true}}, {}});
    flow.edges = {{Uuid::random(), flow.nodes[0].id, std::nullopt, node},
                  {Uuid::random(), node, std::nullopt, end}};

    const auto buildStart = Clock::now();
    auto spec = FlowSpecBuilder::build(flow, {agent}, {}, indexes);
    const double building = secondsSince(buildStart);
    if (!spec) {
        std::fprintf(stderr, "WireBench: %s\n", spec.error().message().c_str());
        return 1;
    }
    const WireFlowRunRequest request{std::move(*spec), "/runtime", "/build", "{}"};

    std::ofstream file(argv[3], std::ios::binary);
    JsonWriter fileWriter([&](std::string_view bytes) {
        return static_cast<bool>(
            file.write(bytes.data(), static_cast<std::streamsize>(bytes.size())));
    });
    if (!encode(fileWriter, request) || !fileWriter.finish() || !file.flush()) {
        std::fprintf(stderr, "WireBench: %s couldn't be written\n", argv[3]);
        return 1;
    }
    double fastest = std::numeric_limits<double>::infinity();
    std::size_t bytes = 0;
    for (int round = 0; round < 3; ++round) {
        bytes = 0;
        const auto start = Clock::now();
        JsonWriter writer([&](std::string_view piece) {
            bytes += piece.size();
            return true;
        });
        if (!encode(writer, request) || !writer.finish()) {
            return 1;
        }
        fastest = std::min(fastest, secondsSince(start));
    }
    std::printf("{\"building\": %.9f, \"encoding\": %.9f, \"bytes\": %zu}\n", building, fastest,
                bytes);
}
