#include "export/ArrayLiteralWarning.h"
#include "export/ExportReadiness.h"
#include "tests/shell/Studio.h"

#include <QDialog>
#include <QFileDialog>

#include <filesystem>
#include <fstream>

namespace ombrel {
namespace {

using namespace test;

struct ExportFixture {
    Studio studio;
    DocumentWindow& window = studio.newDocument();
    AppState& state = *window.document().state();
    TemporaryFolder destination;

    ExportFixture() {
        state.project.edit()->name = "My Docs";
        state.setSelectedTab(AppTab::exportPackage);
        studio.until([&] { return isShown(window, "tab.export"); });
        studio.settle();
    }

    void setKind(IndexKind kind) {
        Variant variant = state.currentVariant();
        variant.settings.index = kind;
        state.updateVariant(variant);
        refresh();
    }
    void setRecall(double recall) {
        Variant variant = state.currentVariant();
        variant.recallAt5 = recall;
        state.updateVariant(variant);
        refresh();
    }
    void add(const std::string& text, SourceStatus status = {}, int count = 1) {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = "a.md";
        source.status = status;
        source.chunkCount = count;
        std::vector<DocumentChunk> chunks(static_cast<std::size_t>(count));
        for (DocumentChunk& chunk : chunks) {
            chunk.id = Uuid::random();
            chunk.text = text;
        }
        {
            auto index = state.editCurrentIndex();
            index->sources.push_back(source);
            index->chunksByDocument[source.id] = std::move(chunks);
        }
        refresh();
    }
    // Until the screen shows the state.
    void refresh() {
        EXPECT_TRUE(studio.until([&] {
            return textOf(window, "export.chunks") == exportSummary(state) &&
                   textOf(window, "export.usage") == usageText(state) && showsChecklist();
        }));
        studio.settle();
    }
    QWidget& row(const char* name) { return find<QWidget>(window, name); }
    bool showsChecklist() {
        const char* const names[] = {"export.check.sources", "export.check.evaluation",
                                     "export.check.warnings", "export.check.index"};
        const auto rows = exportChecklist(state);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (textOf(row(names[i]), "title") != rows[i].title ||
                textOf(row(names[i]), "detail") != rows[i].detail ||
                row(names[i]).property("state").toString() != toQt(rawValue(rows[i].state))) {
                return false;
            }
        }
        return true;
    }
    std::string stateOf(const char* name) { return fromQt(row(name).property("state").toString()); }
    void choose(const std::filesystem::path& folder) {
        click(window, "export.choose");
        auto& panel = find<QFileDialog>(window, "export.panel");
        EXPECT_EQ(panel.fileMode(), QFileDialog::Directory);
        Q_EMIT panel.fileSelected(toQt(folder));
        static_cast<QDialog&>(panel).done(QDialog::Accepted);
        studio.settle();
        EXPECT_EQ(textOf(window, "export.destination"), folder.string());
    }
    // Presses the button and waits for the alert; its title.
    std::string exported() {
        click(window, "export.export");
        EXPECT_TRUE(studio.until([&] { return window.findChild<QDialog*>("alert") != nullptr; }));
        return textOf(window, "alert.title");
    }
};

TEST(ExportTab, BlocksAnIndexWithoutChunks) {
    ExportFixture f;
    EXPECT_FALSE(find<QWidget>(f.window, "export.export").isEnabled());
    EXPECT_EQ(textOf(f.window, "export.note"), "No chunks to export yet \u2014 add sources first.");
    EXPECT_EQ(textOf(f.window, "export.chunks"), "0 chunks");
    EXPECT_EQ(textOf(f.row("export.check.sources"), "detail"), "0 documents, 0 chunks imported");
    f.add("text");
    EXPECT_TRUE(find<QWidget>(f.window, "export.export").isEnabled());
    EXPECT_FALSE(isShown(f.window, "export.note"));
}

TEST(ExportTab, PressingWithoutAFolderIsSilent) {
    ExportFixture f;
    f.add("text");
    EXPECT_EQ(textOf(f.window, "export.destination"), "No folder chosen");
    click(f.window, "export.export");
    f.studio.settle();
    EXPECT_EQ(f.window.findChild<QDialog*>("alert"), nullptr);
    EXPECT_FALSE(isShown(f.window, "export.progress"));
    EXPECT_TRUE(find<QWidget>(f.window, "export.export").isEnabled());
}

TEST(ExportTab, WritesThePackageWithoutHoldingTheWindow) {
    ExportFixture f;
    f.add("text");
    f.choose(f.destination.path());
    click(f.window, "export.export");
    EXPECT_TRUE(isShown(f.window, "export.progress"));
    EXPECT_EQ(textOf(f.window, "export.note"), "Writing the package\u2026");
    EXPECT_FALSE(find<QWidget>(f.window, "export.export").isEnabled());
    EXPECT_TRUE(f.studio.until([&] { return f.window.findChild<QDialog*>("alert") != nullptr; }));
    EXPECT_EQ(textOf(f.window, "alert.title"), "Package generated");
    EXPECT_EQ(textOf(f.window, "alert.message"), (f.destination / "MyDocsRAG").string());
    click(f.window, "alert.ok");
    EXPECT_FALSE(isShown(f.window, "export.progress"));
    EXPECT_TRUE(isShown(f.window, "export.show"));
    EXPECT_TRUE(find<QWidget>(f.window, "export.export").isEnabled());
    EXPECT_TRUE(
        std::filesystem::exists(f.destination / "MyDocsRAG/Sources/MyDocsRAG/Chunks.swift"));
}

TEST(ExportTab, TellsWhyAnExportFailed) {
    ExportFixture f;
    f.add("text");
    std::ofstream(f.destination / "file") << "x";
    f.choose(f.destination / "file");
    EXPECT_EQ(f.exported(), "Export failed");
    EXPECT_NE(textOf(f.window, "alert.message").find("file"), std::string::npos);
    EXPECT_FALSE(isShown(f.window, "export.done"));
}

TEST(ExportTab, PassesTheEvaluationAtTheBaselineAndExportsBelowIt) {
    ExportFixture f;
    f.add("text");
    EXPECT_EQ(f.stateOf("export.check.evaluation"), "warning");
    f.setRecall(0.8);
    EXPECT_EQ(f.stateOf("export.check.evaluation"), "ok");
    f.setRecall(0.79);
    EXPECT_EQ(f.stateOf("export.check.evaluation"), "warning");
    f.choose(f.destination.path());
    EXPECT_EQ(f.exported(), "Package generated");
}

TEST(ExportTab, ExportsWithoutEvaluationAndWithWarningsOnAllSources) {
    ExportFixture f;
    f.add("text", SourceStatus{SourceStatus::Oversized{2}});
    EXPECT_EQ(f.stateOf("export.check.warnings"), "warning");
    f.choose(f.destination.path());
    EXPECT_EQ(f.exported(), "Package generated");
}

TEST(ExportTab, WarnsOfMissingEmbeddingsAndExportsEmptyVectors) {
    ExportFixture f;
    f.add("text");
    f.setKind(IndexKind::hybrid);
    EXPECT_EQ(f.stateOf("export.check.index"), "warning");
    f.choose(f.destination.path());
    EXPECT_EQ(f.exported(), "Package generated");
    std::ifstream file(f.destination / "MyDocsRAG/Sources/MyDocsRAG/Chunks.swift");
    const std::string source{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(source.find("embedding: []"), std::string::npos);
}

TEST(ExportTab, SaysThatSpotlightFallsBackToKeyword) {
    ExportFixture f;
    f.add("text");
    f.setKind(IndexKind::spotlight);
    EXPECT_EQ(f.stateOf("export.check.index"), "ok");
    EXPECT_NE(textOf(f.row("export.check.index"), "detail").find("falls back to Keyword BM25"),
              std::string::npos);
    EXPECT_NE(textOf(f.window, "export.usage").find("BM25"), std::string::npos);
}

TEST(ExportTab, ShowsTheFilesOfThePackage) {
    ExportFixture f;
    f.add("text");
    const auto files = previewFiles(f.state);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string number = std::to_string(i);
        EXPECT_EQ(textOf(f.window, ("export.file." + number).c_str()), files[i].path);
        EXPECT_EQ(textOf(f.window, ("export.size." + number).c_str()), files[i].size.value_or(""));
    }
    EXPECT_EQ(textOf(f.window, "export.name"), "MyDocsRAG");
}

TEST(ExportTab, WarnsOfTextThatTheReadableFormCannotHold) {
    ExportFixture f;
    f.add(std::string("a\x01") + "b");
    EXPECT_TRUE(f.studio.until([&] { return isShown(f.window, "export.warning"); }));
    EXPECT_EQ(textOf(find<QWidget>(f.window, "export.warning"), "bannerText"),
              *arrayLiteralWarning(f.state.indexedChunks()));
    click(f.window, "export.form.compact");
    EXPECT_FALSE(isShown(f.window, "export.warning"));
    f.choose(f.destination.path());
    EXPECT_EQ(f.exported(), "Package generated");
    std::ifstream file(f.destination / "MyDocsRAG/Sources/MyDocsRAG/Chunks.swift");
    std::string first;
    std::getline(file, first);
    EXPECT_EQ(first, "import Foundation");
}

} // namespace
} // namespace ombrel
