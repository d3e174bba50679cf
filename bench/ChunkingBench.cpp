// ChunkingBench STRATEGY FILE TARGET OVERLAP: chunks the file three times and prints, as one JSON
// object, the seconds of the fastest time, the number of chunks, and how many bytes of them are
// not ASCII white space.
#include "knowledge/Chunking.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

std::vector<ombrel::DocumentChunk> chunk(std::string_view strategy, std::string_view text,
                                         std::int64_t target, std::int64_t overlap) {
    if (strategy == "fixed") {
        return ombrel::chunkFixed(text, {"document"}, target, overlap, 0).chunks;
    }
    if (strategy == "paragraph") {
        return ombrel::chunkParagraphs(text, {"document"}, target, overlap, 0).chunks;
    }
    return ombrel::chunkHeadingAware(text, "document", target, overlap);
}

std::size_t inkOf(const std::vector<ombrel::DocumentChunk>& chunks) {
    std::size_t ink = 0;
    for (const ombrel::DocumentChunk& chunk : chunks) {
        ink += chunk.text.size() - static_cast<std::size_t>(std::count_if(
                                       chunk.text.begin(), chunk.text.end(), [](char byte) {
                                           return byte == ' ' || (byte >= '\t' && byte <= '\r');
                                       }));
    }
    return ink;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr,
                     "usage: ChunkingBench fixed|paragraph|headingAware FILE TARGET OVERLAP\n");
        return 2;
    }
    std::ifstream file(argv[2], std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.empty()) {
        std::fprintf(stderr, "ChunkingBench: nothing to read in %s\n", argv[2]);
        return 1;
    }
    double fastest = std::numeric_limits<double>::infinity();
    std::size_t chunks = 0;
    std::size_t ink = 0;
    for (int round = 0; round < 3; ++round) {
        const auto start = std::chrono::steady_clock::now();
        const auto made = chunk(argv[1], text, std::atoll(argv[3]), std::atoll(argv[4]));
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        fastest = std::min(fastest, taken.count());
        chunks = made.size();
        ink = inkOf(made);
    }
    std::printf("{\"seconds\": %.9f, \"chunks\": %zu, \"ink\": %zu}\n", fastest, chunks, ink);
}
