#pragma once

#include "agents/AgentEvaluation.h"
#include "shell/agents/AgentBuilderView.h"
#include "shell/design/Banner.h"
#include "shell/design/BusyButton.h"
#include "shell/design/Chip.h"
#include "shell/design/SectionTitle.h"
#include "tests/agents/Knowledge.h"
#include "tests/agents/Properties.h"
#include "tests/shell/Choose.h"
#include "tests/shell/TabOrder.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>
#include <QScrollArea>
#include <QSpinBox>

namespace ombrel::test {

using namespace std::chrono_literals;

// The builder of a new agent in a window.
struct AgentBuilderFixture {
    AgentBuilderFixture() : window(studio.newDocument()), id(state().addAgent().id) { show(); }

    AppState& state() { return *window.document().state(); }
    const Agent& agent() { return *state().agent(id); }
    void show() {
        const bool isThere = studio.until([&] {
            const auto* view = window.findChild<AgentBuilderView*>(QStringLiteral("agent"));
            return view && view->id() == id && view->isVisible();
        });
        EXPECT_TRUE(isThere);
        studio.settle();
    }
    template <class Change>
    void edit(Change change) {
        Agent edited = agent();
        change(edited);
        state().updateAgent(edited);
    }
    bool says(const char* name, const std::string& text) {
        return studio.until([&] {
            const auto* found = window.findChild<QWidget*>(QLatin1String(name));
            return found && fromQt(found->property("text").toString()) == text;
        });
    }
    bool becomesEnabled(const char* name, bool isEnabled = true) {
        return studio.until([&] { return find<QWidget>(window, name).isEnabled() == isEnabled; });
    }
    bool shows(const char* name, bool isThere = true) {
        return studio.until([&] { return isShown(window, name) == isThere; });
    }
    QStringList insertMenu() {
        QStringList entries;
        for (const QAction* action : find<QMenu>(window, "agent.insert.menu").actions()) {
            entries.append(action->text());
        }
        return entries;
    }
    void undo() {
        studio.advance(500ms);
        trigger(window, "command.undo");
        studio.settle();
    }
    void tryOn(const QString& input) {
        click(window, "agent.tab.playground");
        type(window, "agent.try.input", input);
        click(window, "agent.try.run");
    }

    Studio studio;
    DocumentWindow& window;
    Uuid id;
};

// Whether nothing of it is cut off.
inline bool isSeen(const QWidget& widget) {
    return widget.visibleRegion().boundingRect() == widget.rect();
}

} // namespace ombrel::test
