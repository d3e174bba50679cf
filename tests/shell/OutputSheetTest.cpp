#include "shell/agents/OutputEditorSheet.h"
#include "tests/agents/Properties.h"
#include "tests/shell/Choose.h"
#include "tests/shell/TabOrder.h"

#include <QDialog>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

// The sheet of an agent's output.
struct Sheet {
    explicit Sheet(const AgentOutputKind& output = {}) : window(studio.newDocument()) {
        Agent agent = state().addAgent();
        agent.output = output;
        state().updateAgent(agent);
        id = agent.id;
        studio.advance(500ms);
        EXPECT_TRUE(studio.until([&] { return isShown(window, "agent.output.edit"); }));
        studio.settle();
        open();
    }
    void open() {
        click(window, "agent.output.edit");
        studio.settle();
    }
    AppState& state() { return *window.document().state(); }
    const AgentOutputKind& saved() { return state().agent(id)->output; }
    QWidget& sheet() { return find<QDialog>(window, "outputSheet"); }
    bool isOpen() { return window.findChild<QDialog*>(QStringLiteral("outputSheet")); }
    bool canSave() { return find<QWidget>(sheet(), "output.save").isEnabled(); }
    std::string example() {
        return fromQt(find<QPlainTextEdit>(sheet(), "output.example.text").toPlainText());
    }
    void undo() { QMetaObject::invokeMethod(&undoShortcut(), "activated"); }
    void redo() { QMetaObject::invokeMethod(&find<QObject>(sheet(), "output.redo"), "activated"); }
    QObject& undoShortcut() { return find<QObject>(sheet(), "output.undo"); }

    Studio studio;
    DocumentWindow& window;
    Uuid id;
};

TEST(OutputSheet, PassesANamelessNestedPropertyButNoTopLevelOne) {
    Sheet s(objectOutput({property("book", objectOf({property("", stringKind())}))}));
    EXPECT_TRUE(s.canSave());
    EXPECT_EQ(textOf(s.sheet(), "output.problem"), "");
    click(s.sheet(), "output.properties.add");
    EXPECT_FALSE(s.canSave());
    EXPECT_EQ(textOf(s.sheet(), "output.problem"), "Every property needs a name.");
    type(s.sheet(), "output.properties.1.name", QStringLiteral("  "));
    EXPECT_FALSE(s.canSave());
    type(s.sheet(), "output.properties.1.name", QStringLiteral("year"));
    EXPECT_TRUE(s.canSave());
}

TEST(OutputSheet, SaysWhatIsMissing) {
    Sheet s;
    EXPECT_TRUE(s.canSave());
    EXPECT_EQ(textOf(s.sheet(), "output.help"),
              "The agent returns plain text. Choose Enum or Object for a structured result.");
    click(s.sheet(), "output.kind.enum");
    EXPECT_EQ(textOf(s.sheet(), "output.help"), "The model picks exactly one.");
    EXPECT_EQ(textOf(s.sheet(), "output.problem"), "Add at least one case.");
    EXPECT_FALSE(isShown(s.sheet(), "output.example"));
    click(s.sheet(), "output.cases.add");
    EXPECT_EQ(textOf(s.sheet(), "output.problem"), "Every case needs a name.");
    click(s.sheet(), "output.kind.object");
    EXPECT_EQ(textOf(s.sheet(), "output.help"), "The model fills in every non-optional property.");
    EXPECT_EQ(textOf(s.sheet(), "output.problem"), "Add at least one property.");
    EXPECT_FALSE(s.canSave());
}

TEST(OutputSheet, RestoresTheListsOfTheOtherKinds) {
    Sheet s(objectOutput({property("title", stringKind())}));
    click(s.sheet(), "output.kind.text");
    EXPECT_FALSE(isShown(s.sheet(), "output.properties"));
    click(s.sheet(), "output.kind.enum");
    click(s.sheet(), "output.cases.add");
    type(s.sheet(), "output.cases.0.name", QStringLiteral("bug"));
    click(s.sheet(), "output.kind.object");
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "title");
    click(s.sheet(), "output.kind.enum");
    EXPECT_EQ(textOf(s.sheet(), "output.cases.0.name"), "bug");
    click(s.sheet(), "output.save");
    s.studio.settle();
    EXPECT_FALSE(s.isOpen());
    EXPECT_EQ(std::get<AgentOutputKind::Enumeration>(s.saved().value).cases[0].name, "bug");
}

TEST(OutputSheet, LeavesTheAgentAsItWasWhenItIsCancelled) {
    const AgentOutputKind output = objectOutput({property("title", stringKind())});
    Sheet s(output);
    type(s.sheet(), "output.properties.0.name", QStringLiteral("year"));
    click(s.sheet(), "output.cancel");
    s.studio.settle();
    EXPECT_FALSE(s.isOpen());
    EXPECT_EQ(s.saved(), output);
}

TEST(OutputSheet, IsOneStepOfTheProjectsUndo) {
    const AgentOutputKind output = objectOutput({property("title", stringKind())});
    Sheet s(output);
    type(s.sheet(), "output.properties.0.name", QStringLiteral("year"));
    choose(s.sheet(), "output.properties.0.type", "Int");
    click(s.sheet(), "output.save");
    s.studio.advance(500ms);
    EXPECT_NE(s.saved(), output);
    trigger(s.window, "command.undo");
    EXPECT_EQ(s.saved(), output);
}

TEST(OutputSheet, UndoesItsOwnSteps) {
    Sheet s(objectOutput({property("title", stringKind())}));
    type(s.sheet(), "output.properties.0.name", QStringLiteral("year"));
    s.undo();
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "title");
    click(s.sheet(), "output.kind.text");
    s.undo();
    EXPECT_TRUE(isShown(s.sheet(), "output.properties"));
    s.undo();
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "title");
}

TEST(OutputSheet, DoesAgainWhatWasUndone) {
    Sheet s(objectOutput({property("title", stringKind())}));
    type(s.sheet(), "output.properties.0.name", QStringLiteral("year"));
    s.undo();
    s.redo();
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "year");
    s.redo();
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "year");
    s.undo();
    type(s.sheet(), "output.properties.0.name", QStringLiteral("month"));
    s.redo(); // there is nothing any more: another way was taken
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "month");
    s.undo();
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "title");
}

TEST(OutputSheet, IsCancelledByEscapeAndSavedByCtrlReturn) {
    const AgentOutputKind output = objectOutput({property("title", stringKind())});
    Sheet s(output);
    type(s.sheet(), "output.properties.0.name", QStringLiteral("year"));
    pressKey(find<QWidget>(s.sheet(), "output.properties.0.name"), Qt::Key_Return);
    s.studio.settle();
    EXPECT_TRUE(s.isOpen());
    pressKey(find<QWidget>(s.sheet(), "output.properties.0.name"), Qt::Key_Escape);
    s.studio.settle();
    EXPECT_FALSE(s.isOpen());
    EXPECT_EQ(s.saved(), output);
    s.open();
    type(s.sheet(), "output.properties.0.name", {});
    QMetaObject::invokeMethod(&find<QObject>(s.sheet(), "output.saveByKey"), "activated");
    s.studio.settle();
    EXPECT_TRUE(s.isOpen());
    type(s.sheet(), "output.properties.0.name", QStringLiteral("month"));
    QMetaObject::invokeMethod(&find<QObject>(s.sheet(), "output.saveByKey"), "activated");
    s.studio.settle();
    EXPECT_FALSE(s.isOpen());
    EXPECT_EQ(std::get<AgentOutputKind::Object>(s.saved().value).properties[0].name, "month");
}

TEST(OutputSheet, WritesNowhereWhenItsAgentIsGone) {
    Sheet s(objectOutput({property("title", stringKind())}));
    const std::vector<Agent> none;
    s.state().agents = none;
    s.studio.settle();
    click(s.sheet(), "output.save");
    s.studio.settle();
    EXPECT_TRUE(s.state().agents->empty());
}

TEST(OutputSheet, IsReachedByTabFromTopToBottom) {
    Sheet s(objectOutput({property("title", stringKind())}));
    EXPECT_EQ(tabOrder(s.sheet(), "output.kind.object"),
              (std::vector<std::string>{
                  "output.kind.object", "output.import", "output.properties.0.name",
                  "output.properties.0.type", "output.properties.0.optional",
                  "output.properties.0.remove", "output.properties.0.description",
                  "output.properties.add", "output.example.text", "output.cancel", "output.save"}));
}

TEST(OutputSheet, ShowsAnExampleOfTheResult) {
    Sheet s(
        objectOutput({property("title", stringKind()), property("tags", arrayOf(stringKind()))}));
    EXPECT_EQ(textOf(s.sheet(), "output.example.heading"), "Example output (JSON)");
    EXPECT_EQ(textOf(s.sheet(), "output.example.note"),
              "Sample values are made up to show the shape of the result.");
    EXPECT_EQ(s.example(), "{\n  \"title\": \"Example title\",\n  \"tags\": [\n    \"example\"\n"
                           "  ]\n}");
    type(s.sheet(), "output.properties.0.name", QStringLiteral("createdAt"));
    EXPECT_EQ(s.example(), "{\n  \"createdAt\": \"2026-10-03\",\n  \"tags\": [\n    \"example\"\n"
                           "  ]\n}");
    click(s.sheet(), "output.kind.text");
    EXPECT_EQ(textOf(s.sheet(), "output.example.heading"), "Example output");
    EXPECT_EQ(s.example(), "Here is the agent's answer, as plain text.");
}

TEST(OutputSheet, ShowsTheFirstCaseAsTheExampleOfAnEnumeration) {
    Sheet s(enumerationOutput({"low", "high"}));
    EXPECT_EQ(s.example(), "\"low\"");
    click(s.sheet(), "output.cases.0.remove");
    click(s.sheet(), "output.cases.0.remove");
    EXPECT_FALSE(isShown(s.sheet(), "output.example"));
}

TEST(OutputSheet, TakesAnImportInPlaceOfTheDraft) {
    Sheet s(enumerationOutput({"low"}));
    click(s.sheet(), "output.import");
    s.studio.settle();
    auto& import = find<QDialog>(s.window, "importSheet");
    find<QPlainTextEdit>(import, "import.source")
        .setPlainText(QStringLiteral("@Generable struct Book { var title: String }"));
    ASSERT_TRUE(s.studio.until([&] { return find<QWidget>(import, "import.go").isEnabled(); }));
    click(import, "import.go");
    s.studio.settle();
    EXPECT_EQ(s.window.findChild<QDialog*>(QStringLiteral("importSheet")), nullptr);
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "title");
    click(s.sheet(), "output.kind.enum");
    EXPECT_EQ(textOf(s.sheet(), "output.cases.0.name"), "low");
    click(s.sheet(), "output.kind.object");
    EXPECT_EQ(textOf(s.sheet(), "output.properties.0.name"), "title");
    EXPECT_EQ(s.saved().kind(), AgentOutputKind::Kind::enumeration);
    click(s.sheet(), "output.save");
    s.studio.settle();
    EXPECT_EQ(s.saved().kind(), AgentOutputKind::Kind::object);
}

} // namespace
} // namespace ombrel
