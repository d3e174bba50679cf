#include "export/ArrayLiteralWarning.h"

#include "export/SwiftLiteral.h"
#include "platform/FixedPoint.h"

#include <cmath>
#include <string_view>

namespace ombrel {

namespace {

constexpr double tooManySeconds = 60;

std::optional<char> refusedCharacter(const DocumentChunk& chunk) {
    for (const std::string& part : chunk.breadcrumb) {
        if (const auto found = firstRefusedCharacter(part)) {
            return found;
        }
    }
    if (const auto found = firstRefusedCharacter(chunk.searchText())) {
        return found;
    }
    return firstRefusedCharacter(chunk.packText());
}

std::string scalarName(char control) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(control);
    return std::string("U+00") + digits[value >> 4] + digits[value & 15];
}

} // namespace

double estimatedCompileSeconds(const IndexedChunks& pairs) {
    // 250 and 500 chunks without numbers took 2.9 and 8 seconds, 50 chunks with 384 numbers each 17
    // and 100 of them over 57: the time grows with the square, and 28 numbers weigh as much as a
    // chunk.
    constexpr double numbersPerChunk = 28;
    constexpr double chunksPerSecond = 177;
    double weight = 0;
    for (const IndexedDocument& entry : pairs) {
        for (const DocumentChunk& chunk : entry.chunks) {
            const std::size_t numbers = chunk.embedding ? chunk.embedding->size() : 0;
            weight += 1 + static_cast<double>(numbers) / numbersPerChunk;
        }
    }
    return weight / chunksPerSecond * (weight / chunksPerSecond);
}

std::optional<std::string> arrayLiteralWarning(const IndexedChunks& pairs) {
    for (const IndexedDocument& entry : pairs) {
        for (const DocumentChunk& chunk : entry.chunks) {
            if (const auto found = refusedCharacter(chunk)) {
                return "The text of \u201c" + entry.document.name +
                       "\u201d holds the control character " + scalarName(*found) +
                       ", which Swift refuses in source code: this package will not compile. "
                       "Export it in the compact form.";
            }
        }
    }
    const double seconds = estimatedCompileSeconds(pairs);
    if (seconds > tooManySeconds) {
        return "With " + std::to_string(chunkCount(pairs)) +
               " chunks this package will take the Swift compiler about " +
               (seconds < 3600 ? fixedPoint(std::ceil(seconds / 60), 0) + " minutes"
                               : std::string("an hour or far more")) +
               ". Export it in the compact form.";
    }
    return std::nullopt;
}

} // namespace ombrel
