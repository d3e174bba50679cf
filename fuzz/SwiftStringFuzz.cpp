// Any text in a generated package reads back as itself: between quotation marks as far as a
// compiler takes its characters, and packed always.
#include "../tests/export/SwiftReader.h"
#include "export/CompactChunks.h"
#include "export/PackageSources.h"
#include "export/SwiftLiteral.h"
#include "platform/Text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

using namespace ombrel;

namespace {

void check(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string text = repairUtf8(bytes);
    check(swiftStringEscape(bytes) == swiftStringEscape(text));

    DocumentChunk chunk;
    chunk.text = text;
    chunk.breadcrumb = {text, ""};
    chunk.contextualNote = text;
    chunk.parentText = "parent " + text;
    for (std::size_t i = 0; i + sizeof(double) <= size; i += sizeof(double)) {
        double number = 0;
        std::memcpy(&number, data + i, sizeof number);
        chunk.embedding = chunk.embedding.value_or(std::vector<double>());
        chunk.embedding->push_back(number);
    }
    IndexedDocument entry;
    entry.chunks = std::vector<DocumentChunk>{chunk};

    const auto packed = test::readCompact(compactChunksSource({entry}));
    check(packed.size() == 1 && test::holds(packed[0], chunk));
    if (!firstRefusedCharacter(text)) {
        const auto read = test::readArrayLiteral(chunksSource({entry}));
        check(read.size() == 1 && test::holds(read[0], chunk));
    }
    return 0;
}
