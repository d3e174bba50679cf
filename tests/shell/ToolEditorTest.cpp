#include "shell/agents/ToolEditorView.h"
#include "tests/shell/Choose.h"
#include "tests/shell/TabOrder.h"

#include <QDialog>

namespace ombrel {
namespace {

using namespace test;
using namespace std::chrono_literals;

struct Editor {
    Editor() : window(studio.newDocument()), id(state().addTool().id) {
        EXPECT_TRUE(studio.until([&] { return isShown(window, "tool"); }));
        studio.advance(500ms);
    }
    AppState& state() { return *window.document().state(); }
    const ToolDefinition& tool() { return *state().tool(id); }
    bool says(const char* name, const std::string& text) {
        return studio.until([&] { return textOf(window, name) == text; });
    }

    Studio studio;
    DocumentWindow& window;
    Uuid id;
};

TEST(ToolEditor, EditsTheHeaderUndoably) {
    Editor e;
    EXPECT_EQ(textOf(e.window, "tool.name"), "newTool1");
    EXPECT_EQ(find<QLineEdit>(e.window, "tool.name").placeholderText(), "toolName");
    EXPECT_EQ(find<QLineEdit>(e.window, "tool.description").placeholderText(),
              "What this tool does");
    type(e.window, "tool.name", QStringLiteral("lookUp"));
    type(e.window, "tool.description", QStringLiteral("Looks it up"));
    EXPECT_EQ(e.tool().name, "lookUp");
    EXPECT_EQ(e.tool().description, "Looks it up");
    e.studio.advance(500ms);
    trigger(e.window, "command.undo");
    EXPECT_TRUE(e.says("tool.name", "newTool1"));
}

TEST(ToolEditor, CountsTheAgentsThatHaveIt) {
    Editor e;
    EXPECT_EQ(textOf(e.window, "tool.usage"), "Not attached to any agent");
    {
        auto agents = e.state().agents.edit();
        agents->push_back(newAgent("A"));
        agents->back().toolIDs = {e.id};
    }
    EXPECT_TRUE(e.says("tool.usage", "Attached to 1 agent"));
    {
        auto agents = e.state().agents.edit();
        agents->push_back(newAgent("B"));
        agents->back().toolIDs = {e.id};
    }
    EXPECT_TRUE(e.says("tool.usage", "Attached to 2 agents"));
}

TEST(ToolEditor, EditsArgumentsAndOutput) {
    Editor e;
    EXPECT_EQ(textOf(e.window, "tool.output.summary.placeholder"),
              "No properties yet \u2014 click Edit to add some.");
    click(e.window, "tool.arguments.add");
    type(e.window, "tool.arguments.0.name", QStringLiteral("city"));
    choose(e.window, "tool.arguments.0.type", "Enum");
    EXPECT_EQ(e.tool().arguments[0].name, "city");
    EXPECT_EQ(e.tool().arguments[0].kind.baseKind(), PropertyKind::BaseKind::enumeration);
    click(e.window, "tool.output.edit");
    e.studio.settle();
    auto& sheet = find<QDialog>(e.window, "outputSheet");
    click(sheet, "output.kind.text");
    click(sheet, "output.save");
    e.studio.settle();
    EXPECT_EQ(e.tool().output.kind(), AgentOutputKind::Kind::text);
    EXPECT_TRUE(e.says("tool.output.summary.heading", "Plain text"));
}

TEST(ToolEditor, ChecksTheMockResponseAndKeepsAnInvalidOne) {
    Editor e;
    EXPECT_EQ(textOf(e.window, "tool.mock.verdict"), "Valid JSON");
    type(e.window, "tool.mock", QStringLiteral("[1, 2"));
    EXPECT_TRUE(e.says("tool.mock.verdict", "Invalid JSON"));
    EXPECT_EQ(e.tool().mockResponseJSON, "[1, 2");
    type(e.window, "tool.mock", QStringLiteral("[1, 2]"));
    EXPECT_TRUE(e.says("tool.mock.verdict", "Valid JSON"));
    type(e.window, "tool.mock", QStringLiteral("\"text\""));
    EXPECT_TRUE(e.says("tool.mock.verdict", "Invalid JSON"));
    EXPECT_EQ(textOf(e.window, "tool.mock.note"),
              "Returned in Studio runs \u2014 the exported package generates a Swift protocol you "
              "implement for real (T4).");
}

TEST(ToolEditor, MakesEveryEditOneUndoStep) {
    Editor e;
    const ToolDefinition before = e.tool();
    const std::vector<std::pair<std::string, std::function<void()>>> edits{
        {"name", [&] { type(e.window, "tool.name", QStringLiteral("lookUp")); }},
        {"description", [&] { type(e.window, "tool.description", QStringLiteral("Looks")); }},
        {"arguments", [&] { click(e.window, "tool.arguments.add"); }},
        {"mock response", [&] { type(e.window, "tool.mock", QStringLiteral("[]")); }},
    };
    for (const auto& [name, edit] : edits) {
        edit();
        EXPECT_NE(e.tool(), before) << name;
        e.studio.advance(500ms);
        trigger(e.window, "command.undo");
        e.studio.settle();
        EXPECT_EQ(e.tool(), before) << name;
    }
}

TEST(ToolEditor, IsReachedByTabFromTopToBottom) {
    Editor e;
    click(e.window, "tool.arguments.add");
    e.studio.settle();
    EXPECT_EQ(tabOrder(find<QWidget>(e.window, "tool"), "tool.name"),
              (std::vector<std::string>{"tool.name", "tool.description", "tool.arguments.0.name",
                                        "tool.arguments.0.type", "tool.arguments.0.optional",
                                        "tool.arguments.0.remove", "tool.arguments.0.description",
                                        "tool.arguments.add", "tool.output.edit", "tool.mock"}));
}

TEST(ToolEditor, SaysThatADeletedToolIsNotFound) {
    Editor e;
    {
        auto tools = e.state().tools.edit();
        tools->clear();
    }
    ASSERT_TRUE(e.studio.until([&] { return isShown(e.window, "notFound"); }));
    auto& notFound = find<QWidget>(e.window, "notFound");
    EXPECT_EQ(textOf(notFound, "empty.title"), "Tool Not Found");
    EXPECT_EQ(textOf(notFound, "empty.text"), "This tool may have been deleted.");
}

} // namespace
} // namespace ombrel
