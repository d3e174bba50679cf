#include "shell/agents/GenerableImportSheet.h"
#include "generable/ImportTexts.h"
#include "shell/agents/SwiftSourceEditor.h"
#include "shell/design/Banner.h"
#include "tests/shell/Choose.h"
#include "tests/shell/TabOrder.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QListView>
#include <QMimeData>
#include <QTextBlock>
#include <QTextLayout>

#include <fstream>

namespace ombrel {
namespace {

using namespace test;

struct Import {
    Import() {
        sheet = new GenerableImportSheet(
            studio.platform.executor, [this](const AgentOutputKind& output) { imported = output; },
            nullptr);
        sheet->show();
        studio.settle();
    }
    ~Import() { delete sheet; }

    SwiftSourceEditor& source() { return find<SwiftSourceEditor>(*sheet, "import.source"); }
    // Puts the source in, and waits until it is read.
    void read(const std::string& text) {
        source().setPlainText(toQt(text));
        EXPECT_TRUE(studio.until([&] { return sheet->isUpToDate(); }));
    }
    bool canImport() { return find<QWidget>(*sheet, "import.go").isEnabled(); }
    std::vector<std::string> entries(const char* list, int role = Qt::DisplayRole) {
        std::vector<std::string> shown;
        const auto& model = *find<QListView>(*sheet, list).model();
        for (int row = 0; row < model.rowCount(); ++row) {
            shown.push_back(fromQt(model.index(row, 0).data(role).toString()));
        }
        return shown;
    }

    Studio studio;
    QPointer<GenerableImportSheet> sheet;
    std::optional<AgentOutputKind> imported;
};

using Texts = std::vector<std::string>;

TEST(GenerableImportSheet, SaysWhatToDoWhileThereIsNoSource) {
    Import i;
    EXPECT_EQ(textOf(*i.sheet, "import.status"),
              "Paste code on the left to preview the output it defines.");
    EXPECT_EQ(fromQt(i.source().placeholderText()), importSample);
    EXPECT_FALSE(i.canImport());
    i.read(" \n ");
    EXPECT_TRUE(isShown(*i.sheet, "import.status"));
    EXPECT_EQ(textOf(*i.sheet, "import.status"),
              "Paste code on the left to preview the output it defines.");
    EXPECT_EQ(textOf(*i.sheet, "import.note"),
              "Importing replaces the output you're editing. Nothing is saved until you click "
              "Save.");
}

TEST(GenerableImportSheet, SaysWhenThereIsNoDeclaration) {
    Import i;
    i.read("let answer = 42");
    EXPECT_EQ(textOf(*i.sheet, "import.status"), "No struct or enum declaration found.");
    EXPECT_FALSE(i.canImport());
}

TEST(GenerableImportSheet, ImportsItsOwnSample) {
    Import i;
    i.read(std::string(importSample));
    EXPECT_EQ(textOf(*i.sheet, "import.heading"), "Object \u00b7 4 properties");
    EXPECT_EQ(i.entries("import.rows"), (Texts{"title: String", "priority: Enum", ".low", ".normal",
                                               ".high", "tags: [String]", "dueDate: String?"}));
    EXPECT_FALSE(isShown(*i.sheet, "import.warnings"));
    EXPECT_EQ(find<QComboBox>(*i.sheet, "import.type").currentText(),
              "TaskSuggestion (@Generable struct)");
    click(*i.sheet, "import.go");
    i.studio.settle();
    EXPECT_EQ(i.sheet, nullptr);
    ASSERT_TRUE(i.imported);
    EXPECT_EQ(i.imported->kind(), AgentOutputKind::Kind::object);
}

TEST(GenerableImportSheet, ImportsNothingWhenItIsCancelled) {
    Import i;
    i.read("@Generable enum E { case a }");
    EXPECT_EQ(textOf(*i.sheet, "import.heading"), "Enum \u00b7 1 case");
    click(*i.sheet, "import.cancel");
    i.studio.settle();
    EXPECT_FALSE(i.imported);
}

TEST(GenerableImportSheet, OffersARootAmongSeveralTypesOnly) {
    Import i;
    i.read("@Generable struct A { var name: String }");
    EXPECT_FALSE(isShown(*i.sheet, "import.type"));
    i.read("@Generable struct A { var b: B }\n@Generable struct B { var a: A }");
    EXPECT_TRUE(isShown(*i.sheet, "import.type"));
    EXPECT_EQ(textOf(*i.sheet, "import.typeHint"),
              "The type the agent returns. Other types in the code are only used where this one "
              "refers to them.");
    EXPECT_EQ(i.entries("import.rows"), (Texts{"b: Object", "a: String"}));
    EXPECT_EQ(textOf(*i.sheet, "import.warningsHeading"), "1 WARNING");
    EXPECT_EQ(i.entries("import.warnings", Qt::AccessibleTextRole),
              (Texts{"Line 2: `a` refers back to `A` recursively. Recursive types can't be "
                     "represented, so it was imported as String."}));
    choose(*i.sheet, "import.type", "B (@Generable struct)");
    EXPECT_TRUE(i.studio.until([&] {
        return i.entries("import.rows") == Texts{"a: Object", "b: String"};
    }));
    i.read("@Generable struct A { var b: B }\n@Generable struct B { var a: A; var c: Int }");
    EXPECT_EQ(i.entries("import.rows"), (Texts{"a: Object", "b: String", "c: Int"}));
    i.read("@Generable struct C { var d: D }\n@Generable struct D { var e: Bool }");
    EXPECT_EQ(i.entries("import.rows"), (Texts{"d: Object", "e: Bool"}));
}

TEST(GenerableImportSheet, ListsBothDeclarationsOfOneName) {
    Import i;
    i.read("struct A { var x: Int }\nstruct A { var y: Int }");
    auto& menu = find<QComboBox>(*i.sheet, "import.type");
    EXPECT_EQ(menu.count(), 2);
    EXPECT_EQ(i.entries("import.rows"), (Texts{"y: Int"}));
}

TEST(GenerableImportSheet, WarnsOfWhatIsLostAndMarksTheLines) {
    Import i;
    i.read("@Generable\nstruct A {\n    var when: Date\n    var map: [String: Int]\n}");
    EXPECT_EQ(textOf(*i.sheet, "import.warningsHeading"), "2 WARNINGS");
    EXPECT_EQ(i.entries("import.warnings")[1],
              "`map` uses a dictionary, which the builder can't represent. It was imported as "
              "String.");
    EXPECT_TRUE(i.canImport());
    auto& source = i.source();
    const int lineHeight = source.cursorRect().height();
    const int third = source.cursorRect().center().y() + 2 * lineHeight;
    EXPECT_TRUE(source.warningAt(third).startsWith(QStringLiteral("`when` is a `Date`")));
    EXPECT_EQ(source.warningAt(third - lineHeight), "");
    auto& warnings = find<QListView>(*i.sheet, "import.warnings");
    Q_EMIT warnings.activated(warnings.model()->index(1, 0));
    EXPECT_EQ(source.textCursor().blockNumber(), 3);
}

TEST(GenerableImportSheet, ShowsTheSourceInColours) {
    Import i;
    i.read("/* a\nb */ struct Book {\n    var title: String // the title\n}");
    const auto formats = [&](int line) {
        return i.source().document()->findBlockByNumber(line).layout()->formats();
    };
    EXPECT_EQ(formats(0).size(), 1);
    ASSERT_EQ(formats(1).size(), 3);
    EXPECT_EQ(formats(1)[0].length, 4);
    ASSERT_EQ(formats(2).size(), 3);
    EXPECT_EQ(formats(2)[0].start, 4);
    EXPECT_EQ(formats(2)[2].start, 22);
    EXPECT_TRUE(formats(3).isEmpty());
}

TEST(GenerableImportSheet, KeepsNoBreakSpacesOfTheSource) {
    Import i;
    i.source().setPlainText(QString::fromUtf8("let a = \"x\u00a0y\"\nlet b = 1"));
    EXPECT_EQ(fromQt(i.source().source()), "let a = \"x\u00a0y\"\nlet b = 1");
}

TEST(GenerableImportSheet, OpensAFileAndSaysWhyItCant) {
    Import i;
    i.read("enum E { case a }");
    i.sheet->openFile(toQt(i.studio.folder / "Gone.swift"));
    ASSERT_TRUE(i.studio.until([&] { return isShown(*i.sheet, "import.fileError"); }));
    EXPECT_TRUE(find<Banner>(*i.sheet, "import.fileError")
                    .text()
                    .startsWith(QStringLiteral("Couldn't read Gone.swift: ")));
    EXPECT_EQ(fromQt(i.source().source()), "enum E { case a }");
    std::ofstream(i.studio.folder / "Book.swift") << "struct Book { var title: String }\n";
    i.sheet->openFile(toQt(i.studio.folder / "Book.swift"));
    ASSERT_TRUE(i.studio.until([&] { return i.entries("import.rows") == Texts{"title: String"}; }));
    EXPECT_FALSE(isShown(*i.sheet, "import.fileError"));
}

TEST(GenerableImportSheet, TakesADroppedFileLikeAChosenOne) {
    Import i;
    const auto file = i.studio.folder / "Book.swift";
    std::ofstream(file) << "struct Book { var title: String }\n";
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(toQt(file))});
    auto& target = *i.source().parentWidget();
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&target, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&target, &drop);
    EXPECT_TRUE(i.studio.until([&] { return i.entries("import.rows") == Texts{"title: String"}; }));
}

TEST(GenerableImportSheet, BeginsALineWhereTheOneBeforeBegan) {
    Import i;
    i.source().insertPlainText(QStringLiteral("struct A {"));
    pressKey(i.source(), Qt::Key_Return);
    i.source().insertPlainText(QStringLiteral("var x: Int"));
    pressKey(i.source(), Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(fromQt(i.source().source()), "struct A {\n    var x: Int\n    ");
    i.source().undo();
    EXPECT_EQ(fromQt(i.source().source()), "struct A {\n    var x: Int");
}

TEST(GenerableImportSheet, EndsQuietlyWhileItReads) {
    Import i;
    i.source().setPlainText(QStringLiteral("struct A { var x: Int }"));
    i.sheet->openFile(toQt(i.studio.folder / "Gone.swift"));
    delete i.sheet;
    i.studio.settle();
    EXPECT_FALSE(i.imported);
}

TEST(GenerableImportSheet, ReadsOneVeryLongLine) {
    Import i;
    std::string line = "struct A { ";
    constexpr int properties = 20'000;
    for (int p = 0; p < properties; ++p) {
        line += "var property" + std::to_string(p) + ": String; ";
    }
    i.read(line + "}");
    EXPECT_EQ(textOf(*i.sheet, "import.heading"), "Object \u00b7 20000 properties");
    EXPECT_FALSE(i.source().document()->firstBlock().layout()->formats().isEmpty());
}

TEST(GenerableImportSheet, IsReachedByTabFromTopToBottom) {
    Import i;
    i.read("@Generable struct A { var b: Date }\nstruct C { var d: Int }");
    EXPECT_EQ(
        tabOrder(*i.sheet, "import.open"),
        (std::vector<std::string>{"import.open", "import.source", "import.type", "import.rows",
                                  "import.warnings", "import.cancel", "import.go"}));
}

TEST(GenerableImportSheet, ReadsAVeryLargeSource) {
    Import i;
    std::string large;
    constexpr int types = 60'000;
    for (int t = 0; t < types; ++t) {
        large += "@Generable struct Type" + std::to_string(t) +
                 " {\n    var title: String // what it is\n    var at: Date\n}\n";
    }
    ASSERT_GT(large.size(), 5'000'000U);
    i.read(large);
    EXPECT_EQ(find<QComboBox>(*i.sheet, "import.type").count(), types);
    EXPECT_EQ(i.entries("import.rows"), (Texts{"title: String", "at: String"}));
    i.source().moveCursor(QTextCursor::End);
    i.source().insertPlainText(QStringLiteral("struct Last { var x: Int }"));
    EXPECT_TRUE(i.studio.until(
        [&] { return find<QComboBox>(*i.sheet, "import.type").count() == types + 1; }));
}

} // namespace
} // namespace ombrel
