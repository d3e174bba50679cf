// Any bytes through the three chunkers. The first two bytes choose target and overlap.
#include "core/TokenEstimate.h"
#include "knowledge/Chunking.h"
#include "platform/Text.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void check(const std::vector<ombrel::DocumentChunk>& chunks, std::string_view source) {
    std::int64_t index = 0;
    for (const ombrel::DocumentChunk& chunk : chunks) {
        require(chunk.index == ++index);
        require(!chunk.text.empty());
        require(chunk.text == ombrel::trimWhitespacesAndNewlines(chunk.text));
        require(chunk.tokenCount == ombrel::estimateTokens(chunk.text));
        require(!ombrel::isValidUtf8(source) || ombrel::isValidUtf8(chunk.text));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A target of one and a full overlap repeat everything in every chunk.
    constexpr std::size_t most = 4096;
    if (size < 2 || size > most) {
        return 0;
    }
    const std::int64_t target = static_cast<std::int8_t>(data[0]);
    const std::int64_t overlap = static_cast<std::int8_t>(data[1]);
    const std::string_view text(reinterpret_cast<const char*>(data) + 2, size - 2);

    const ombrel::Chunked fixed = ombrel::chunkFixed(text, {"document"}, target, overlap, 0);
    check(fixed.chunks, text);
    for (const ombrel::DocumentChunk& chunk : fixed.chunks) {
        require(text.find(chunk.text) != text.npos);
    }
    check(ombrel::chunkParagraphs(text, {"document"}, target, overlap, 0).chunks, text);
    check(ombrel::chunkHeadingAware(text, "document", target, overlap), text);
    require(ombrel::characterCount(text) >=
            ombrel::characterCount(ombrel::lastCharacters(text, 5)));
    return 0;
}
