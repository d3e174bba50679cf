#pragma once

#include "tests/shell/Studio.h"

#include <string>
#include <utility>
#include <vector>

namespace ombrel::test {

using Texts = std::vector<std::string>;

inline DocumentChunk makeChunk(std::string text, Texts breadcrumb, std::int64_t tokens = 20) {
    DocumentChunk chunk;
    chunk.id = Uuid::random();
    chunk.text = std::move(text);
    chunk.breadcrumb = std::move(breadcrumb);
    chunk.tokenCount = tokens;
    return chunk;
}

// A window on one of the tabs, whose recipe is keyword search with the question as asked.
struct TabWithChunks {
    explicit TabWithChunks(AppTab shownTab) {
        BuildSettings settings;
        settings.index = IndexKind::keyword;
        settings.transform = QueryTransform::direct;
        set(settings);
        show(shownTab);
    }

    void show(AppTab shownTab) {
        state.setSelectedTab(shownTab);
        const QString name = QStringLiteral("tab.") + toQt(rawValue(shownTab)).toLower();
        studio.until([&] { return isShown(window, name.toUtf8().constData()); });
    }
    BuildSettings settings() const { return state.currentVariant().settings; }
    void set(const BuildSettings& settings) const {
        Variant variant = state.currentVariant();
        variant.settings = settings;
        state.updateVariant(variant);
    }
    void setIndex(IndexKind kind) const {
        BuildSettings changed = settings();
        changed.index = kind;
        set(changed);
    }
    void setTransform(QueryTransform transform) const {
        BuildSettings changed = settings();
        changed.transform = transform;
        set(changed);
    }
    void addChunks(std::vector<DocumentChunk> chunks) const {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = "doc.md";
        source.chunkCount = static_cast<std::int64_t>(chunks.size());
        auto index = state.editCurrentIndex();
        index->chunksByDocument[source.id] = std::move(chunks);
        index->sources.push_back(std::move(source));
    }
    bool shows(const char* name, const std::string& text) {
        return studio.until([&] { return isShown(window, name) && textOf(window, name) == text; });
    }
    bool hides(const char* name) {
        return studio.until([&] { return !isShown(window, name); });
    }
    bool enables(const char* name, bool enabled) {
        return studio.until([&] { return find<QWidget>(window, name).isEnabled() == enabled; });
    }

    Studio studio;
    DocumentWindow& window = studio.newDocument();
    AppState& state = *window.document().state();
};

} // namespace ombrel::test
