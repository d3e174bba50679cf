#include "core/ProjectFile.h"

#include "core/Decode.h"
#include "core/Encode.h"
#include "platform/JsonReader.h"
#include "platform/PropertyListReader.h"
#include "platform/PropertyListWriter.h"

#include <array>
#include <utility>

namespace ombrel {

namespace {

// What every error of reading starts with; the details follow.
constexpr std::string_view damaged = "The file isn't a project file or is damaged. ";

// The keys of version 1, whose single index lay at the root. Read and never written.
constexpr std::array<std::string_view, 7> legacyKeys = {
    "sources",          "chunksByDocument", "variants",          "selectedVariantID",
    "selectedSourceID", "testQuestions",    "playgroundQuestion"};

template <class Reader>
class ProjectReading {
  public:
    using Dictionary = typename Decoder<Reader>::Dictionary;

    explicit ProjectReading(Reader& reader)
        : m_reader(reader), m_decoder(reader), m_root(m_decoder) {}

    Result<ReadProject> run() {
        if (!m_root.open(m_reader.top()) || !readAll()) {
            return failure(m_decoder.error().text());
        }
        m_root.reportUnknown();
        m_project.leftBehind.unknownKeys = m_decoder.unknownKeys();
        return std::move(m_project);
    }

  private:
    bool readAll() {
        PersistedProject& project = m_project.snapshot;
        project.formatVersion = 1;
        return m_root.decodeOr("formatVersion", project.formatVersion) &&
               m_root.decode("project", project.project) &&
               m_root.decodeOr("agents", project.agents) &&
               m_root.decodeOr("tools", project.tools) && m_root.decodeOr("flows", project.flows) &&
               readIndexes() && readSelection();
    }

    // Indexes that cannot be read count as none, and then the keys of version 1 do.
    bool readIndexes() {
        PersistedProject& project = m_project.snapshot;
        if (!attempt("ragIndexes", project.ragIndexes, m_project.leftBehind.ragIndexes)) {
            return false;
        }
        if (project.ragIndexes.empty()) {
            return migrate();
        }
        const Uuid first = project.ragIndexes.front().id;
        return decodeOr("selectedRAGIndexID", project.selectedRAGIndexID, first);
    }

    bool migrate() {
        PersistedProject& project = m_project.snapshot;
        for (const std::string_view key : legacyKeys) {
            m_root.find(key); // is known, even where an earlier one of them is damaged
        }
        m_root.find("selectedRAGIndexID");
        PersistedRAGIndex index;
        std::optional<std::vector<Variant>> variants;
        std::optional<Uuid> selectedVariantID;
        if (!m_root.decodeIfPresent("variants", variants) ||
            !m_root.decodeOr("sources", index.sources) ||
            !m_root.decodeOr("chunksByDocument", index.chunksByDocument) ||
            !m_root.decodeIfPresent("selectedVariantID", selectedVariantID) ||
            !m_root.decodeIfPresent("selectedSourceID", index.selectedSourceID) ||
            !m_root.decodeOr("testQuestions", index.testQuestions) ||
            !m_root.decodeOr("playgroundQuestion", index.playgroundQuestion)) {
            return false;
        }
        if (variants && variants->empty()) {
            return m_decoder.fail("variants: expected at least one variant");
        }
        index.variants = variants ? std::move(*variants) : std::vector{defaultVariant()};
        index.id = Uuid::random();
        index.name = project.project.name.empty() ? "Default" : project.project.name;
        index.selectedVariantID = selectedVariantID.value_or(index.variants.front().id);
        project.selectedRAGIndexID = index.id;
        project.ragIndexes.clear();
        project.ragIndexes.push_back(std::move(index));
        return true;
    }

    static Variant defaultVariant() {
        Variant variant;
        variant.id = Uuid::random();
        variant.name = "Default";
        return variant;
    }

    bool readSelection() {
        PersistedProject& project = m_project.snapshot;
        return decodeOr("selectedNavigatorItem", project.selectedNavigatorItem,
                        NavigatorSelection{NavigatorSelection::Rag{project.selectedRAGIndexID}});
    }

    // A value that cannot be decoded, or is absent, counts as `fallback`.
    template <class T>
    bool decodeOr(std::string_view key, T& out, T fallback) {
        std::optional<std::string> problem;
        T value{};
        const bool isPresent = m_root.find(key).has_value();
        if (!attempt(key, value, problem)) {
            return false;
        }
        out = isPresent && !problem ? std::move(value) : std::move(fallback);
        return true;
    }

    // A failure that is swallowed: `out` keeps its default value and `problem` tells why. An absent
    // key is no problem. False only when the file could not be read.
    template <class T>
    bool attempt(std::string_view key, T& out, std::optional<std::string>& problem) {
        const auto mark = m_decoder.mark();
        if (!m_root.find(key) || m_root.decode(key, out)) {
            return true;
        }
        problem = m_decoder.error().text();
        out = T{};
        return m_decoder.recover(mark);
    }

    Reader& m_reader;
    Decoder<Reader> m_decoder;
    Dictionary m_root;
    ReadProject m_project;
};

template <class Reader>
Result<ReadProject> readProject(Result<Reader> reader) {
    if (!reader) {
        return failure(std::string(damaged) + reader.error().message + ".");
    }
    auto project = ProjectReading<Reader>(*reader).run();
    if (!project) {
        return failure(reader->readFailed() ? reader->problem() + "."
                                            : std::string(damaged) + project.error().message + ".");
    }
    return project;
}

} // namespace

std::string LeftBehind::description() const {
    std::string text;
    if (ragIndexes) {
        text = "The RAG indexes couldn't be read (" + *ragIndexes + ").";
    }
    if (unknownKeys.count > 0) {
        constexpr std::size_t mostShown = 5;
        text += text.empty() ? "" : " ";
        text += "The file holds what this version doesn't know: ";
        for (std::size_t i = 0; i < unknownKeys.paths.size() && i < mostShown; ++i) {
            text += (i > 0 ? ", " : "") + unknownKeys.paths[i];
        }
        if (unknownKeys.count > mostShown) {
            text += " and " + std::to_string(unknownKeys.count - mostShown) + " more";
        }
        text += ".";
    }
    return text;
}

Result<ReadProject> readSnapshot(std::string_view fileContents) {
    return readSnapshot(PropertyListBytes(fileContents));
}

Result<ReadProject> readSnapshot(PropertyListBytes fileContents) {
    return readProject(PropertyListReader::open(std::move(fileContents)));
}

Result<ReadProject> readSnapshotJson(std::string_view json) {
    return readProject(JsonReader::open(json));
}

Result<std::string> writeFile(const PersistedProject& snapshot) {
    std::string contents;
    const auto written = writeFile(snapshot, [&contents](std::string_view bytes) {
        contents += bytes;
        return true;
    });
    if (!written) {
        return tl::unexpected(written.error());
    }
    return contents;
}

Result<void> writeFile(const PersistedProject& snapshot, const ByteSink& sink) {
    PropertyListCounter counter;
    if (!encode(counter, snapshot)) {
        return failure("Something in the project is nested too deeply to be stored.");
    }
    PropertyListWriter writer(sink, counter.objects());
    if (!encode(writer, snapshot) || !writer.finish()) {
        return failure("");
    }
    return {};
}

} // namespace ombrel
