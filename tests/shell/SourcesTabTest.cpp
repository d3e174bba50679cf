#include "shell/tabs/SourcesTab.h"

#include "core/FindByID.h"
#include "knowledge/Ingestion.h"
#include "shell/tabs/PasteSheet.h"
#include "shell/tabs/SourceImport.h"
#include "shell/tabs/SourceList.h"
#include "shell/tabs/SourcesModel.h"
#include "tests/shell/Studio.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDialog>
#include <QDropEvent>
#include <QFileDialog>
#include <QMenu>
#include <QMimeData>
#include <QTextBrowser>
#include <QUrl>

#include <algorithm>
#include <chrono>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

struct Fixture {
    Studio studio;
    TemporaryFolder files;
    DocumentWindow& window = studio.newDocument();
    AppState& state = *window.document().state();
    SourceList& list;

    Fixture() : list(openTab()) {}

    SourceList& openTab() {
        window.resize(1280, 800);
        state.setSelectedTab(AppTab::sources);
        studio.settle();
        return find<SourceList>(window, "sources.list");
    }
    const RAGIndex& index() const { return state.currentIndex(); }
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const SourceDocument& source : index().sources) {
            result.push_back(source.name);
        }
        return result;
    }
    // What the table shows, column by column.
    std::vector<std::string> column(SourcesModel::Column which) const {
        std::vector<std::string> result;
        for (int row = 0; row < list.model()->rowCount(); ++row) {
            result.push_back(fromQt(list.model()->index(row, which).data().toString()));
        }
        return result;
    }
    bool shows(std::size_t count) {
        return studio.until([&] { return list.model()->rowCount() == static_cast<int>(count); });
    }
    bool imported(std::size_t count) {
        return studio.until([&] {
            return index().sources.size() == count && !index().importProgress &&
                   list.model()->rowCount() == static_cast<int>(count);
        });
    }
    // Drags the paths over the window's content and drops them there.
    void drop(const std::vector<std::filesystem::path>& paths) {
        auto& area = find<QWidget>(window, "dropArea");
        QMimeData data;
        QList<QUrl> urls;
        for (const auto& path : paths) {
            urls.append(QUrl::fromLocalFile(toQt(path)));
        }
        data.setUrls(urls);
        const QPoint where(200, 200);
        QDragEnterEvent enter(where, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(area.parentWidget(), &enter);
        EXPECT_TRUE(enter.isAccepted());
        EXPECT_TRUE(area.isVisible());
        QDropEvent drop(where, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&area, &drop);
        EXPECT_TRUE(drop.isAccepted());
        EXPECT_FALSE(area.isVisible());
    }
    void import(const std::vector<std::filesystem::path>& paths, std::size_t expected) {
        drop(paths);
        ASSERT_TRUE(imported(expected));
        studio.advance(400ms);
    }
    void select(int row) { list.setCurrentIndex(list.model()->index(row, 0)); }
    std::string shownAlert() {
        studio.until([&] { return window.findChild<QDialog*>("alert") != nullptr; });
        return textOf(window, "alert.title") + "|" + textOf(window, "alert.message");
    }
};

// Shows what the desktop would open.
struct OpenedUrl {
    OpenedUrl() { QDesktopServices::setUrlHandler(QStringLiteral("file"), &browser, "setSource"); }
    ~OpenedUrl() { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    std::string path() const { return fromQt(browser.source().toLocalFile()); }
    QTextBrowser browser;
};

TEST(SourcesTab, InvitesWhenThereAreNoSources) {
    Fixture f;
    EXPECT_TRUE(isShown(f.window, "sources.empty"));
    EXPECT_FALSE(isShown(f.window, "sources.list"));
    EXPECT_EQ(textOf(f.window, "sources.empty.drop"),
              "Drop folders or files — Markdown, text, PDF");
    EXPECT_TRUE(isShown(f.window, "sources.addFiles"));
    EXPECT_TRUE(isShown(f.window, "sources.empty.paste"));
}

TEST(SourcesTab, TakesDroppedFilesAndFoldersAndShowsWhatCameOfThem) {
    Fixture f;
    const auto notes = f.files.write("notes.md", "# One\n\nSome text here.\n");
    const auto folder = f.files / "folder";
    f.files.write("folder/b.TXT", "Text of b.");
    f.files.write("folder/deep/c.markdown", "Text of c.");
    f.files.write("folder/.hidden.md", "No.");
    f.files.write("folder/picture.png", "No.");
    const auto paper = f.files.write("paper.pdf", "%PDF");
    f.studio.platform.pdf->setPages(paper, {"First page.", "", "Third page."});
    f.import({notes, folder, paper}, 4);

    EXPECT_FALSE(isShown(f.window, "sources.empty"));
    EXPECT_EQ(f.column(SourcesModel::document),
              (std::vector<std::string>{"notes.md", "b.TXT", "c.markdown", "paper.pdf"}));
    EXPECT_EQ(f.column(SourcesModel::type),
              (std::vector<std::string>{"Markdown", "Text", "Markdown", "PDF · 3 pp"}));
    EXPECT_EQ(f.column(SourcesModel::status),
              (std::vector<std::string>{"Ready", "Ready", "Ready", "1 empty page"}));
    EXPECT_FALSE(f.index().importError);
    EXPECT_FALSE(f.window.findChild<QDialog*>("alert"));
    // The last one read is selected, and its detail says what it is.
    EXPECT_EQ(textOf(f.window, "sources.detail.name"), "paper.pdf");
    EXPECT_EQ(textOf(f.window, "sources.detail.place"), paper.string());
    EXPECT_EQ(textOf(f.window, "sources.summary"), "4 documents · 1 to look at");
}

TEST(SourcesTab, HasItsColumnsInOrder) {
    Fixture f;
    QStringList titles;
    for (int i = 0; i < f.list.model()->columnCount(); ++i) {
        titles.append(f.list.model()->headerData(i, Qt::Horizontal).toString());
    }
    EXPECT_EQ(titles.join('|'), "DOCUMENT|TYPE|CHUNKS|TOKENS|STATUS");
}

TEST(SourcesTab, TellsTheChunksOfTheSelectedSource) {
    Fixture f;
    f.import({f.files.write("a.md", "Alpha text.\n"), f.files.write("b.md", "Beta text.\n")}, 2);
    f.select(0);
    ASSERT_TRUE(f.studio.until([&] { return textOf(f.window, "sources.detail.name") == "a.md"; }));
    EXPECT_EQ(f.index().selectedSourceID, f.index().sources[0].id);
    const SourceDocument& source = f.index().sources[0];
    EXPECT_EQ(textOf(f.window, "sources.detail.counts"),
              "1 chunks · avg " + std::to_string(source.tokenCount) + " tokens / chunk");
    EXPECT_NE(textOf(f.window, "sources.detail.excerpt").find("Alpha text."), std::string::npos);
    click(f.window, "sources.showChunks");
    EXPECT_EQ(f.state.selectedTab(), AppTab::index);
}

TEST(SourcesTab, ShowsTheSelectedSourceAndTheStatusWholeInASmallWindow) {
    Fixture f;
    std::string text;
    for (int i = 0; i < 200; ++i) {
        text += "Some words of a long text. ";
    }
    f.import({f.files.write("a.md", text)}, 1);
    EXPECT_TRUE(isShown(f.window, "sources.drop"));
    f.window.resize(900, 700);
    ASSERT_TRUE(f.studio.until([&] { return !isShown(f.window, "sources.drop"); }));
    ASSERT_EQ(f.window.size(), QSize(900, 700));
    for (const char* name : {"sources.detail.excerpt", "sources.open", "sources.remove"}) {
        auto& part = find<QWidget>(f.window, name);
        EXPECT_GE(part.height(), part.sizeHint().height()) << name;
        const QWidget& around = find<QWidget>(f.window, "sources.detail");
        EXPECT_LE(part.mapTo(&around, QPoint(0, part.height())).y(), around.height()) << name;
    }
    // A label that is cut says in its tip what it leaves out.
    ASSERT_TRUE(f.studio.until(
        [&] { return textOf(f.window, "topBar.status").starts_with("Build Succeeded"); }));
    EXPECT_EQ(find<QWidget>(f.window, "topBar.status").toolTip(), QString());
}

TEST(SourcesTab, ImportingAFileAgainLeavesOneSourceAndSelectsIt) {
    Fixture f;
    const auto a = f.files.write("a.md", "Alpha text.\n");
    const auto b = f.files.write("b.md", "Beta text.\n");
    f.import({a, b}, 2);
    const Uuid old = f.index().sources[0].id;
    f.drop({a});
    ASSERT_TRUE(f.studio.until([&] {
        return f.names() == std::vector<std::string>{"b.md", "a.md"};
    }));
    ASSERT_TRUE(f.studio.until([&] {
        return f.column(SourcesModel::document) == std::vector<std::string>{"b.md", "a.md"};
    }));
    EXPECT_NE(f.index().sources[1].id, old);
    EXPECT_EQ(textOf(f.window, "sources.detail.name"), "a.md");
}

TEST(SourcesTab, AFileThatCannotBeReadIsToldAndTheOthersComeIn) {
    Fixture f;
    f.drop({f.files.write("bad.txt", "\xff\xfe\xfd"), f.files.write("good.txt", "Good."),
            f.files.write("broken.pdf", "no pdf")});
    ASSERT_TRUE(f.imported(1));
    EXPECT_EQ(f.names(), std::vector<std::string>{"good.txt"});
    EXPECT_EQ(f.shownAlert(), "Import problem|Couldn't read broken.pdf: The PDF couldn't be opened "
                              "— it may be corrupt or password-protected.");
    EXPECT_EQ(textOf(f.window, "alert.ok"), "OK");
    click(f.window, "alert.ok");
    f.studio.settle();
    EXPECT_FALSE(f.index().importError);
    EXPECT_FALSE(f.window.findChild<QDialog*>("alert"));
}

TEST(SourcesTab, SaysWhenThereWasNothingToTakeIn) {
    Fixture f;
    f.drop({f.files.write("picture.png", "No.")});
    ASSERT_TRUE(f.studio.until([&] { return isShown(f.window, "sources.notice"); }));
    EXPECT_EQ(textOf(find<QWidget>(f.window, "sources.notice"), "bannerText"),
              "There is no Markdown, text or PDF document in “picture.png”.");
    EXPECT_FALSE(f.index().importError);
    click(f.window, "sources.notice.dismiss");
    EXPECT_FALSE(isShown(f.window, "sources.notice"));
    f.drop({f.files / "gone"});
    ASSERT_TRUE(f.studio.until([&] { return isShown(f.window, "sources.notice"); }));
    f.import({f.files.write("a.md", "Text.")}, 1);
    EXPECT_FALSE(isShown(f.window, "sources.notice"));
}

TEST(SourcesTab, ADropOnAnotherTabShowsTheSources) {
    Fixture f;
    f.state.setSelectedTab(AppTab::project);
    f.studio.settle();
    f.import({f.files.write("a.md", "Text.")}, 1);
    EXPECT_EQ(f.state.selectedTab(), AppTab::sources);
    EXPECT_TRUE(f.list.isVisible());
}

TEST(SourcesTab, WhatIsNoFileIsNotTakenByDropping) {
    Fixture f;
    QMimeData data;
    data.setText(QStringLiteral("words"));
    QDragEnterEvent enter(QPoint(200, 200), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    auto& area = find<QWidget>(f.window, "dropArea");
    QCoreApplication::sendEvent(area.parentWidget(), &enter);
    EXPECT_FALSE(enter.isAccepted());
    EXPECT_FALSE(area.isVisible());
}

TEST(SourcesTab, ReadsTwoThousandFilesAndShowsHowFarItIs) {
    Fixture f;
    for (int i = 0; i < 2000; ++i) {
        f.files.write("many/" + std::to_string(i) + ".txt", "Text " + std::to_string(i) + ".");
    }
    const auto last = f.files.write("many/zz.pdf", "%PDF");
    f.studio.platform.pdf->setPages(last, {"Page."});
    f.studio.platform.pdf->gate.close();
    f.drop({f.files / "many"});
    ASSERT_TRUE(f.studio.until(
        [&] { return f.index().importProgress && f.index().importProgress->completed == 2000; }));
    ASSERT_TRUE(f.studio.until([&] {
        return isShown(f.window, "buildProgress") &&
               textOf(find<QWidget>(f.window, "buildProgress"), "progress.text") ==
                   "Reading files — 2000 of 2001";
    }));
    f.studio.platform.pdf->gate.open();
    ASSERT_TRUE(f.imported(2001));
    ASSERT_TRUE(f.studio.until([&] { return !isShown(f.window, "buildProgress"); }));
    EXPECT_EQ(textOf(f.window, "sources.summary"), "2,001 documents");
}

TEST(SourcesTab, ADropWhileFilesAreReadWaitsForItsTurn) {
    Fixture f;
    const auto paper = f.files.write("paper.pdf", "%PDF");
    f.studio.platform.pdf->setPages(paper, {"Page."});
    f.studio.platform.pdf->gate.close();
    f.drop({paper});
    ASSERT_TRUE(f.studio.until([&] { return f.index().importProgress.has_value(); }));
    f.drop({f.files.write("a.md", "Text."), f.files.write("b.md", "Text.")});
    ASSERT_TRUE(f.studio.until([&] {
        return textOf(find<QWidget>(f.window, "sources.search"), "progress.text") ==
               "2 more wait until the files before them are read";
    }));
    EXPECT_TRUE(f.index().sources.empty());
    f.studio.platform.pdf->gate.open();
    ASSERT_TRUE(f.imported(3));
    EXPECT_EQ(f.names(), (std::vector<std::string>{"paper.pdf", "a.md", "b.md"}));
    EXPECT_FALSE(isShown(f.window, "sources.search"));
}

TEST(SourcesTab, ADropGoesToTheIndexThatWasShownThen) {
    Fixture f;
    const Uuid first = f.index().id;
    const auto paper = f.files.write("paper.pdf", "%PDF");
    f.studio.platform.pdf->setPages(paper, {"Page."});
    f.studio.platform.pdf->gate.close();
    f.drop({paper});
    ASSERT_TRUE(f.studio.until([&] { return f.index().importProgress.has_value(); }));
    f.drop({f.files.write("a.md", "Text.")});
    f.state.addRAGIndex();
    f.studio.platform.pdf->gate.open();
    ASSERT_TRUE(f.studio.until([&] { return f.state.ragIndex(first)->sources.size() == 2; }));
    EXPECT_TRUE(f.index().sources.empty());
}

TEST(SourcesTab, PastedTextBecomesASourceThatCanBeEdited) {
    Fixture f;
    click(f.window, "sources.paste");
    auto& sheet = find<QDialog>(f.window, "pasteSheet");
    EXPECT_EQ(textOf(sheet, "paste.heading"), "Paste Text");
    EXPECT_EQ(textOf(sheet, "paste.note"),
              "Chunked with the current Settings — same pipeline as an imported file.");
    EXPECT_EQ(textOf(sheet, "paste.go"), "Add");
    EXPECT_EQ(textOf(sheet, "paste.cancel"), "Cancel");
    EXPECT_FALSE(find<QAbstractButton>(sheet, "paste.go").isEnabled());
    type(sheet, "paste.text", QStringLiteral("  Some\u00a0words. "));
    click(sheet, "paste.go");
    ASSERT_TRUE(f.shows(1));
    EXPECT_EQ(f.names(), std::vector<std::string>{"Pasted text"});
    EXPECT_EQ(f.index().sources[0].pastedText->text(), "  Some\u00a0words. ");
    EXPECT_EQ(textOf(f.window, "sources.open"), "View Text");
    EXPECT_FALSE(isShown(f.window, "sources.showInFolder"));

    const Uuid id = f.index().sources[0].id;
    f.studio.settle();
    click(f.window, "sources.open");
    auto& editor = find<QDialog>(f.window, "pasteSheet");
    EXPECT_EQ(textOf(editor, "paste.heading"), "Edit Pasted Text");
    EXPECT_EQ(textOf(editor, "paste.go"), "Save");
    type(editor, "paste.title", QStringLiteral("Named"));
    click(editor, "paste.go");
    ASSERT_TRUE(f.studio.until([&] { return f.names() == std::vector<std::string>{"Named"}; }));
    EXPECT_EQ(f.index().sources[0].id, id);
    EXPECT_EQ(f.index().sources[0].pastedText->text(), "  Some\u00a0words. ");
}

TEST(SourcesTab, TypedTextIsNotLostByEscape) {
    Fixture f;
    click(f.window, "sources.paste");
    auto& sheet = find<QDialog>(f.window, "pasteSheet");
    type(sheet, "paste.text", QStringLiteral("words"));
    pressKey(sheet, Qt::Key_Escape);
    EXPECT_TRUE(sheet.isVisible());
    click(find<QDialog>(sheet, "confirmation"), "confirmation.cancel");
    f.studio.settle();
    EXPECT_TRUE(sheet.isVisible());
    pressKey(sheet, Qt::Key_Escape);
    click(find<QDialog>(sheet, "confirmation"), "confirmation.confirm");
    f.studio.settle();
    EXPECT_FALSE(f.window.findChild<QDialog*>("pasteSheet"));
    EXPECT_TRUE(f.index().sources.empty());
}

TEST(SourcesTab, RemovedSourcesComeBackByUndo) {
    Fixture f;
    f.import(
        {f.files.write("a.md", "A."), f.files.write("b.md", "B."), f.files.write("c.md", "C.")}, 3);
    const auto before = f.index().chunksByDocument;
    f.list.setFocus();
    f.select(1);
    pressKey(f.list, Qt::Key_Delete);
    ASSERT_TRUE(f.shows(2));
    EXPECT_EQ(f.names(), (std::vector<std::string>{"a.md", "c.md"}));
    EXPECT_EQ(f.index().selectedSourceID, f.index().sources[0].id);
    EXPECT_EQ(textOf(f.window, "sources.detail.name"), "a.md");
    f.studio.advance(400ms);
    trigger(f.window, "command.undo");
    ASSERT_TRUE(f.shows(3));
    EXPECT_EQ(f.names(), (std::vector<std::string>{"a.md", "b.md", "c.md"}));
    EXPECT_EQ(f.index().chunksByDocument, before);
}

TEST(SourcesTab, RemovesEverySelectedSourceInOneStep) {
    Fixture f;
    f.import(
        {f.files.write("a.md", "A."), f.files.write("b.md", "B."), f.files.write("c.md", "C.")}, 3);
    f.list.selectAll();
    ASSERT_TRUE(
        f.studio.until([&] { return textOf(f.window, "sources.remove") == "Remove 3 Documents"; }));
    click(f.window, "sources.remove");
    ASSERT_TRUE(f.studio.until([&] { return isShown(f.window, "sources.empty"); }));
    EXPECT_TRUE(f.index().sources.empty());
    EXPECT_TRUE(f.index().chunksByDocument.empty());
    EXPECT_FALSE(f.index().selectedSourceID);
    f.studio.advance(400ms);
    trigger(f.window, "command.undo");
    ASSERT_TRUE(f.shows(3));
    EXPECT_TRUE(isShown(f.window, "sources.list"));
}

TEST(SourcesTab, TheMenuOfASourceRemovesIt) {
    Fixture f;
    f.import({f.files.write("a.md", "A."), f.files.write("b.md", "B.")}, 2);
    f.select(0);
    f.studio.settle();
    Q_EMIT f.list.customContextMenuRequested(
        f.list.visualRect(f.list.model()->index(0, 0)).center());
    auto& menu = find<QMenu>(f.window, "sources.menu");
    QStringList titles;
    for (const QAction* action : menu.actions()) {
        if (!action->isSeparator()) {
            titles.append(action->text());
        }
    }
    EXPECT_EQ(titles.join('|'), "Open File|Show in Folder|Copy Path|Show Chunks|Remove");
    find<QAction>(menu, "sources.menu.remove").trigger();
    ASSERT_TRUE(f.shows(1));
    EXPECT_EQ(f.names(), std::vector<std::string>{"b.md"});
}

TEST(SourcesTab, OpensAFileAndItsFolderInTheDesktop) {
    Fixture f;
    const OpenedUrl opened;
    const auto file = f.files.write("a.md", "A.");
    f.import({file}, 1);
    click(f.window, "sources.open");
    EXPECT_EQ(opened.path(), file.string());
    click(f.window, "sources.showInFolder");
    EXPECT_EQ(opened.path(), f.files.path().string());
    std::filesystem::remove(file);
    click(f.window, "sources.open");
    EXPECT_EQ(opened.path(), f.files.path().string());
    EXPECT_EQ(f.shownAlert(), "It isn’t there any more|" + file.string() +
                                  " was moved or deleted. The chunks that were read from it stay "
                                  "in force.");
}

TEST(SourcesTab, RescanReadsTheFilesAgainAndKeepsWhatCannotBeRead) {
    Fixture f;
    const auto a = f.files.write("a.md", "Old text.");
    const auto b = f.files.write("b.md", "Text that stays.");
    f.import({a, b}, 2);
    const Uuid idOfA = f.index().sources[0].id;
    f.files.write("a.md", "New text that is longer.");
    std::filesystem::remove(b);
    click(f.window, "sources.rescan");
    ASSERT_TRUE(f.studio.until([&] { return f.index().importError.has_value(); }));
    EXPECT_EQ(f.shownAlert().substr(0, 41), "Import problem|Couldn't re-scan b.md: The");
    EXPECT_EQ(f.index().sources[0].id, idOfA);
    EXPECT_EQ(f.index().chunksByDocument.at(idOfA)[0].text, "New text that is longer.");
    EXPECT_EQ(f.index().chunksByDocument.at(f.index().sources[1].id)[0].text, "Text that stays.");
}

TEST(SourcesTab, TheFilterHidesAndKeepsTheSelection) {
    Fixture f;
    f.import({f.files.write("apple.md", "A."), f.files.write("berry.md", "B.")}, 2);
    const auto selected = f.index().selectedSourceID;
    type(f.window, "sources.filter", QStringLiteral("APP"));
    EXPECT_EQ(f.column(SourcesModel::document), std::vector<std::string>{"apple.md"});
    type(f.window, "sources.filter", QStringLiteral("zzz"));
    ASSERT_TRUE(f.studio.until([&] { return isShown(f.window, "sources.noMatch"); }));
    EXPECT_EQ(f.index().selectedSourceID, selected);
    type(f.window, "sources.filter", QString());
    ASSERT_TRUE(f.studio.until([&] { return isShown(f.window, "sources.list"); }));
    EXPECT_EQ(f.column(SourcesModel::document), (std::vector<std::string>{"apple.md", "berry.md"}));
}

TEST(SourcesTab, SortsByAColumnWithoutChangingTheIndex) {
    Fixture f;
    f.import({f.files.write("b.md", "One two three four five six seven."),
              f.files.write("a.md", "One.")},
             2);
    f.list.sortByColumn(SourcesModel::tokens, Qt::AscendingOrder);
    EXPECT_EQ(f.column(SourcesModel::document), (std::vector<std::string>{"a.md", "b.md"}));
    EXPECT_EQ(f.names(), (std::vector<std::string>{"b.md", "a.md"}));
    f.select(1);
    EXPECT_EQ(f.index().selectedSourceID, f.index().sources[0].id);
}

TEST(SourcesTab, PastesWhatTheClipboardHolds) {
    Fixture f;
    f.import({f.files.write("a.md", "A.")}, 1);
    f.list.setFocus();
    auto* files = new QMimeData;
    files->setUrls({QUrl::fromLocalFile(toQt(f.files.write("b.md", "B.")))});
    QApplication::clipboard()->setMimeData(files);
    f.list.paste();
    ASSERT_TRUE(f.imported(2));
    QApplication::clipboard()->setText(QStringLiteral("Copied words."));
    f.list.paste();
    auto& sheet = find<QDialog>(f.window, "pasteSheet");
    EXPECT_TRUE(find<QAbstractButton>(sheet, "paste.go").isEnabled());
    click(sheet, "paste.go");
    ASSERT_TRUE(f.imported(3));
    EXPECT_EQ(f.index().sources[2].pastedText->text(), "Copied words.");
}

TEST(SourcesTab, FilesChosenInThePanelComeIn) {
    Fixture f;
    const auto file = f.files.write("a.md", "A.");
    click(f.window, "sources.addFiles");
    auto& panel = find<QFileDialog>(f.window, "sources.filePanel");
    EXPECT_EQ(panel.fileMode(), QFileDialog::ExistingFiles);
    Q_EMIT panel.filesSelected({toQt(file)});
    ASSERT_TRUE(f.imported(1));
    EXPECT_EQ(f.studio.services().settings().lastFolder(), toQt(f.files.path()));
    panel.close();
    click(f.window, "sources.addFolder");
    f.files.write("folder/b.md", "B.");
    Q_EMIT find<QFileDialog>(f.window, "sources.folderPanel")
        .fileSelected(toQt(f.files / "folder"));
    ASSERT_TRUE(f.imported(2));
}

TEST(SourcesTab, ASearchCanBeStopped) {
    Fixture f;
    for (int i = 0; i < 600; ++i) {
        f.files.write("many/" + std::to_string(i) + ".txt", "Text.");
    }
    auto& import = find<SourceImport>(f.window, "sources.import");
    import.add({f.files / "many"});
    EXPECT_TRUE(import.isSearching());
    EXPECT_TRUE(isShown(f.window, "sources.search"));
    import.stopSearch();
    ASSERT_TRUE(f.studio.until([&] { return !import.isSearching(); }));
    f.studio.settle();
    EXPECT_TRUE(f.index().sources.empty());
    EXPECT_FALSE(f.index().importProgress);
    EXPECT_FALSE(isShown(f.window, "sources.search"));
}

} // namespace
} // namespace ombrel
