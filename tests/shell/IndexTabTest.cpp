#include "knowledge/BuildTexts.h"
#include "knowledge/IndexReport.h"
#include "shell/QtText.h"
#include "shell/design/StatTile.h"
#include "shell/tabs/ChunkListModel.h"
#include "shell/tabs/ChunkListView.h"
#include "tests/shell/Studio.h"

#include <QClipboard>
#include <QDialog>
#include <QMenu>
#include <QScrollBar>

namespace ombrel {
namespace {

using namespace test;
using RowKind = ChunkListModel::RowKind;

ChunkArray chunksOf(int count, const std::string& text = "Words of a chunk.") {
    std::vector<DocumentChunk> chunks(static_cast<std::size_t>(count));
    std::int64_t number = 0;
    for (DocumentChunk& chunk : chunks) {
        number += 1;
        chunk.id = Uuid::random();
        chunk.index = number;
        chunk.breadcrumb = {"Guide", "Section " + std::to_string(number)};
        chunk.tokenCount = 4;
        chunk.text = text + " It is number " + std::to_string(number) + ".";
    }
    return chunks;
}

struct IndexFixture {
    Studio studio;
    DocumentWindow& window = studio.newDocument();
    AppState& state = *window.document().state();

    IndexFixture() {
        window.resize(1000, 800);
        state.setSelectedTab(AppTab::index);
        studio.until([&] { return isShown(window, "tab.index"); });
    }

    Uuid add(std::string name, ChunkArray chunks) {
        SourceDocument source;
        source.id = Uuid::random();
        source.name = std::move(name);
        source.chunkCount = static_cast<std::int64_t>(chunks.size());
        source.tokenCount = 4 * source.chunkCount;
        {
            auto index = state.editCurrentIndex();
            index->sources.push_back(source);
            if (!chunks.empty()) {
                index->chunksByDocument[source.id] = std::move(chunks);
            }
        }
        EXPECT_TRUE(studio.until([&] {
            return model().rowCount() > 0 && model().sections().back().id == source.id &&
                   list().isVisible();
        }));
        studio.settle();
        return source.id;
    }
    ChunkListView& list() { return find<ChunkListView>(window, "index.list"); }
    const ChunkListModel& model() { return *qobject_cast<const ChunkListModel*>(list().model()); }
    QModelIndex at(int row) { return model().index(row); }
    StatTile& tile(const char* name) { return find<StatTile>(window, name); }
};

TEST(IndexTab, SaysThatThereAreNoSourcesAndNothingElse) {
    IndexFixture f;
    EXPECT_TRUE(isShown(f.window, "index.empty"));
    EXPECT_EQ(textOf(find<QWidget>(f.window, "index.empty"), "empty.title"), noSourcesNote);
    EXPECT_FALSE(isShown(f.window, "index.report"));
}

TEST(IndexTab, ShowsASourceWithoutChunksAsASectionThatSaysSo) {
    IndexFixture f;
    f.add("empty.md", {});
    ASSERT_EQ(f.model().rowCount(), 2);
    EXPECT_EQ(f.model().kindOf(0), RowKind::header);
    EXPECT_EQ(fromQt(f.at(0).data().toString()), "empty.md, 0 chunks \u00b7 0 tok");
    EXPECT_EQ(f.model().kindOf(1), RowKind::noChunks);
    EXPECT_EQ(fromQt(f.at(1).data().toString()), "No chunks yet.");
}

TEST(IndexTab, ListsTheChunksOfEachSourceInOrder) {
    IndexFixture f;
    f.add("b.md", chunksOf(2));
    f.add("a.md", chunksOf(1));
    ASSERT_EQ(f.model().rowCount(), 5);
    EXPECT_EQ(fromQt(f.at(0).data().toString()), "b.md, 2 chunks \u00b7 8 tok");
    EXPECT_EQ(f.model().cardOf(2).number(), "#2");
    EXPECT_EQ(fromQt(f.at(3).data().toString()), "a.md, 1 chunks \u00b7 4 tok");
    EXPECT_EQ(f.model().cardOf(4).breadcrumb(), "Guide > Section 1");
}

TEST(IndexTab, ShowsTheTilesWholeAtEveryWidth) {
    IndexFixture f;
    f.add("a.md", chunksOf(3));
    for (const int width : {1400, 900, 1000, 1320, 900}) {
        f.window.resize(width, 800);
        f.studio.settle();
        for (const char* name : {"index.chunks", "index.kind", "index.embedded", "index.groups"}) {
            const auto& subtitle = find<QLabel>(f.tile(name), "subtitle");
            EXPECT_GE(subtitle.height(), subtitle.heightForWidth(subtitle.width()))
                << name << " at " << width;
        }
    }
}

TEST(IndexTab, ShowsTheTilesOfTheReport) {
    IndexFixture f;
    f.add("a.md", chunksOf(3));
    const auto figures = indexTiles(f.state);
    const char* const names[] = {"index.chunks", "index.kind", "index.embedded", "index.groups"};
    for (std::size_t i = 0; i < figures.size(); ++i) {
        EXPECT_EQ(textOf(f.tile(names[i]), "title"), fromQt(toQt(figures[i].title).toUpper()));
        EXPECT_EQ(fromQt(f.tile(names[i]).value()), figures[i].value);
        EXPECT_EQ(fromQt(f.tile(names[i]).subtitle()), figures[i].subtitle);
    }
    EXPECT_EQ(figures[0].value, "3");
}

TEST(IndexTab, SaysThatTheSettingsChangedUntilABuild) {
    IndexFixture f;
    f.add("a.md", chunksOf(1));
    EXPECT_TRUE(isShown(f.window, "index.stale"));
    EXPECT_EQ(textOf(find<QWidget>(f.window, "index.stale"), "bannerText"), staleIndexNote);
    f.state.project.edit()->lastBuiltSettings = f.state.currentVariant().settings;
    EXPECT_TRUE(f.studio.until([&] { return !isShown(f.window, "index.stale"); }));
    Variant variant = f.state.currentVariant();
    variant.settings.topK += 1;
    f.state.updateVariant(variant);
    f.studio.settle();
    EXPECT_FALSE(isShown(f.window, "index.stale"));
    variant.settings.index = IndexKind::vector;
    f.state.updateVariant(variant);
    EXPECT_TRUE(f.studio.until([&] { return isShown(f.window, "index.stale"); }));
}

TEST(IndexTab, LaysOutOnlyWhatIsSeenOfAHundredThousandCards) {
    IndexFixture f;
    f.add("large.md", chunksOf(100'000));
    EXPECT_EQ(f.model().rowCount(), 100'001);
    const int most = f.list().viewport()->height() / 40 + 2; // no card is lower than 40 pixels
    EXPECT_GT(f.list().layoutCount(), 0);
    EXPECT_LE(f.list().rowHeights().measuredCount(), most);

    QScrollBar& bar = *f.list().verticalScrollBar();
    EXPECT_GT(bar.maximum(), 100'000 * 40);
    for (const double part : {0.25, 0.5, 0.75, 1.0}) {
        bar.setValue(static_cast<int>(bar.maximum() * part));
        f.studio.settle();
    }
    EXPECT_EQ(bar.value(), bar.maximum());
    EXPECT_EQ(f.list().indexAt({10, f.list().viewport()->height() - 12}).row(), 100'000);
    EXPECT_LE(f.list().rowHeights().measuredCount(), 6 * most);
    EXPECT_LE(f.list().layoutCount(), 6 * most);
}

TEST(IndexTab, KeepsWhatIsReadInPlaceWhileCardsAboveTurnOutHigher) {
    IndexFixture f;
    // One line for the estimate, many to be laid out.
    f.add("lines.md", chunksOf(300, std::string("a\nb\nc\nd\ne\nf\ng\nh\ni\nj\n")));
    f.list().goTo(200);
    f.studio.settle();
    QScrollBar& bar = *f.list().verticalScrollBar();
    for (int i = 0; i < 40; ++i) {
        const QModelIndex read = f.list().indexAt({10, 40});
        const int before = f.list().visualRect(read).top();
        bar.setValue(bar.value() - 30);
        EXPECT_EQ(f.list().visualRect(read).top(), before + 30);
    }
    bar.setValue(0);
    f.studio.settle();
    EXPECT_EQ(f.list().visualRect(f.at(0)).top(), 0);
}

TEST(IndexTab, KeepsItsPlaceWhenASourceIsAddedAndChunksAreEnriched) {
    IndexFixture f;
    const Uuid id = f.add("a.md", chunksOf(500));
    f.list().goTo(250);
    f.studio.settle();
    const int top = f.list().visualRect(f.at(250)).top();
    f.add("b.md", chunksOf(3));
    EXPECT_EQ(f.list().currentIndex().row(), 250);
    EXPECT_EQ(f.list().visualRect(f.at(250)).top(), top);

    const int height = f.list().visualRect(f.at(250)).height();
    (*f.state.editCurrentIndex()).chunksByDocument[id].edit()[249].contextualNote = "A note.";
    EXPECT_TRUE(f.studio.until([&] { return f.model().cardOf(250).note().has_value(); }));
    f.studio.settle();
    EXPECT_GT(f.list().visualRect(f.at(250)).height(), height);
    EXPECT_EQ(f.list().currentIndex().row(), 250);
}

TEST(IndexTab, FollowsRemovedAndReplacedSources) {
    IndexFixture f;
    f.add("a.md", chunksOf(50));
    f.add("b.md", chunksOf(50));
    f.list().goTo(80);
    f.studio.settle();
    {
        auto index = f.state.editCurrentIndex();
        index->sources.erase(index->sources.begin());
    }
    EXPECT_TRUE(f.studio.until([&] { return f.model().rowCount() == 51; }));
    f.studio.settle();
    EXPECT_EQ(f.list().currentIndex().row(), 29);
    EXPECT_EQ(f.list().rowHeights().count(), 51);
    f.state.editCurrentIndex()->sources.clear();
    EXPECT_TRUE(f.studio.until([&] { return isShown(f.window, "index.empty"); }));
    EXPECT_EQ(f.model().rowCount(), 0);
    EXPECT_EQ(f.list().rowHeights().count(), 0);
}

TEST(IndexTab, FindsWordsInAllChunksAndGoesRound) {
    IndexFixture f;
    f.add("a.md", chunksOf(300));
    type(f.window, "index.find", "NUMBER 29");
    EXPECT_TRUE(
        f.studio.until([&] { return textOf(f.window, "index.find.position") == "1 of 11"; }));
    EXPECT_EQ(f.list().currentIndex().row(), 29);
    click(f.window, "index.find.next");
    EXPECT_EQ(textOf(f.window, "index.find.position"), "2 of 11");
    EXPECT_EQ(f.list().currentIndex().row(), 290);
    EXPECT_TRUE(f.list().viewport()->rect().contains(f.list().visualRect(f.at(290))));
    pressKey(find<QWidget>(f.window, "index.find"), Qt::Key_Return, Qt::ShiftModifier);
    click(f.window, "index.find.previous");
    EXPECT_EQ(textOf(f.window, "index.find.position"), "11 of 11");
    EXPECT_EQ(f.list().currentIndex().row(), 299);

    type(f.window, "index.find", "nowhere");
    EXPECT_TRUE(
        f.studio.until([&] { return textOf(f.window, "index.find.position") == "No matches"; }));
    EXPECT_FALSE(find<QWidget>(f.window, "index.find.next").isEnabled());
    pressKey(find<QWidget>(f.window, "index.find"), Qt::Key_Escape);
    EXPECT_EQ(textOf(f.window, "index.find.position"), "");
}

TEST(IndexTab, CopiesTheTextsOfTheSelectedCards) {
    IndexFixture f;
    f.add("a.md", chunksOf(3));
    f.list().goTo(1);
    pressKey(f.list(), Qt::Key_Down, Qt::ShiftModifier);
    f.list().setFocus();
    trigger(f.window, "command.copy");
    EXPECT_EQ(fromQt(QGuiApplication::clipboard()->text()),
              "Words of a chunk. It is number 1.\n\nWords of a chunk. It is number 2.");
}

TEST(IndexTab, OpensACardToBeReadByTheKeyboard) {
    IndexFixture f;
    f.add("a.md", chunksOf(3));
    f.list().goTo(2);
    pressKey(f.list(), Qt::Key_Return);
    auto& dialog = find<QDialog>(f.window, "chunk");
    EXPECT_EQ(textOf(dialog, "chunk.title"), "a.md  #2");
    EXPECT_EQ(fromQt(find<QPlainTextEdit>(dialog, "chunk.text").toPlainText()),
              "Words of a chunk. It is number 2.");
    click(dialog, "chunk.copy");
    EXPECT_EQ(fromQt(QGuiApplication::clipboard()->text()), "Words of a chunk. It is number 2.");
    click(dialog, "chunk.close");
}

TEST(IndexTab, ShowsTheBeginningOfAVeryLongText) {
    IndexFixture f;
    f.add("a.md", chunksOf(1, std::string(200'000, 'x')));
    EXPECT_LT(f.list().rowHeights().height(1), 20'000);
    f.list().goTo(1);
    pressKey(f.list(), Qt::Key_Return);
    EXPECT_GT(find<QPlainTextEdit>(f.window, "chunk.text").toPlainText().size(), 200'000);
}

} // namespace
} // namespace ombrel
