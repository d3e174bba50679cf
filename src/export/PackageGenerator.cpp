#include "export/PackageGenerator.h"

#include "export/CompactChunks.h"
#include "export/PackageName.h"
#include "export/PackageSources.h"
#include "platform/AtomicFile.h"

#include <system_error>

namespace ombrel {

namespace {

using std::filesystem::path;

// Detected from the first three chunks.
std::string languageOf(const IndexedChunks& pairs, const LanguageRecognizer& languages) {
    constexpr std::size_t examined = 3;
    std::string text;
    std::size_t count = 0;
    for (const IndexedDocument& entry : pairs) {
        for (std::size_t i = 0; i < entry.chunks.size() && count < examined; ++i, ++count) {
            if (count > 0) {
                text += '\n';
            }
            text += entry.chunks[i].text;
        }
    }
    return languages.dominantLanguage(text).value_or(std::string(fallbackLanguage));
}

tl::unexpected<Error> failureAt(const path& file, const std::string& message) {
    return failure(file.string() + ": " + message);
}

} // namespace

Result<path> generatePackage(std::string_view name, const BuildSettings& settings,
                             const IndexedChunks& pairs, const path& destination,
                             const LanguageRecognizer& languages, PackageForm form,
                             FileOperations& files) {
    const path package = destination / name;
    const path sources = package / "Sources" / name;
    std::error_code error;
    std::filesystem::create_directories(sources, error);
    if (error) {
        return failureAt(sources, error.message());
    }
    const std::string language = languageOf(pairs, languages);

    const auto write = [&](const path& file, std::string_view source) -> Result<void> {
        const auto replaced = replaceFile(
            file, {.expected = {}, .replaceAny = true, .keepOldAs = {}},
            [&](const ByteSink& sink) { return sink(source); }, files);
        if (!replaced) {
            return failureAt(file, replaced.error().message);
        }
        return {};
    };
    Result<void> written = write(package / "Package.swift", manifestSource(name));
    if (written) {
        written =
            write(sources / "Chunks.swift",
                  form == PackageForm::compact ? compactChunksSource(pairs) : chunksSource(pairs));
    }
    if (written) {
        written = write(sources / "KeywordIndex.swift", keywordIndexSource());
    }
    if (written) {
        written = write(sources / "VectorIndex.swift", vectorIndexSource());
    }
    if (written) {
        written = write(sources / (std::string(name) + ".swift"),
                        interfaceSource(name, settings, language));
    }
    if (!written) {
        return tl::unexpected(written.error());
    }
    return package;
}

Result<path> exportPackage(const AppState& state, const path& destination, PackageForm form) {
    return generatePackage(packageName(state.project->name), state.currentIndex().currentSettings(),
                           state.indexedChunks(), destination, *state.platform().languages, form);
}

} // namespace ombrel
