#pragma once

#include "core/AppState.h"
#include "shell/Application.h"
#include "shell/ContentView.h"
#include "shell/DocumentWindow.h"
#include "shell/QtText.h"
#include "shell/StudioDocument.h"
#include "shell/StudioServices.h"
#include "tests/shell/Wait.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPlatform.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QWidget>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace ombrel::test {

// A studio without a display, with scripted services whose clock the test moves, and with folders
// of its own. Widgets are found by their object name, below a window or anywhere.
class Studio {
  public:
    Studio() { start(); }
    ~Studio() {
        stop();
        platform.executor->runAll();
    }

    // Ends the program as if it had been killed, and starts it again.
    void restart() {
        stop();
        start();
    }

    Application& application() { return *m_application; }
    StudioServices& services() { return *m_services; }

    // A window with a new project.
    DocumentWindow& newDocument() {
        DocumentWindow* window = m_application->newDocument();
        settle();
        return *window;
    }

    // Lets posted work run, and Qt's events, until nothing more is due at once.
    void settle() {
        for (int round = 0; round < 8; ++round) {
            platform.executor->runAll();
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }
    // The same until the condition holds: for work on other threads, and for views that are
    // refreshed at their own pace.
    bool until(const std::function<bool()>& condition) {
        return waitUntil([&] {
            platform.executor->runAll();
            return condition();
        });
    }
    // Moves the clock of the services, such as over the 400 ms until a checkpoint.
    void advance(std::chrono::milliseconds duration) {
        platform.executor->advance(duration);
        settle();
    }

    TestPlatform platform = makeTestPlatform();
    TemporaryFolder folder;

  private:
    void start() {
        m_services = std::make_unique<StudioServices>(
            StudioServices::Folders{folder / "config", folder / "recovery",
                                    folder / "install-models"},
            [this](const ServiceSettings&, const StudioServices::Progress&) {
                return platform.platform;
            });
        m_application = std::make_unique<Application>(*m_services);
    }
    void stop() {
        m_application.reset();
        m_services.reset();
    }

    std::unique_ptr<StudioServices> m_services;
    std::unique_ptr<Application> m_application;
};

// The widget or action of that name; the test fails by an exception when there is none.
template <class T>
T& find(QObject& below, const char* name) {
    auto* found = below.findChild<T*>(QString::fromUtf8(name));
    if (!found) {
        throw std::runtime_error(std::string("there is no ") + name);
    }
    return *found;
}
// Whether it is there and can be seen.
inline bool isShown(QWidget& below, const char* name) {
    const auto* found = below.findChild<QWidget*>(QString::fromUtf8(name));
    return found && found->isVisibleTo(&below);
}
// What a label, a badge or a field says.
inline std::string textOf(QWidget& below, const char* name) {
    return fromQt(find<QWidget>(below, name).property("text").toString());
}

inline void click(QWidget& below, const char* name) {
    auto& button = find<QAbstractButton>(below, name);
    if (!button.isEnabled()) {
        throw std::runtime_error(std::string("can't be clicked: ") + name);
    }
    button.click();
}
inline void trigger(QWidget& window, const char* command) {
    find<QAction>(window, command).trigger();
}
inline void pressKey(QWidget& widget, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
                     const QString& text = {}) {
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, modifiers, text);
        QCoreApplication::sendEvent(&widget, &event);
    }
}
// Types the text at the keyboard in place of what the field holds.
inline void type(QWidget& below, const char* field, const QString& text) {
    auto& widget = find<QWidget>(below, field);
    if (auto* line = qobject_cast<QLineEdit*>(&widget)) {
        line->selectAll();
    } else if (auto* area = qobject_cast<QPlainTextEdit*>(&widget)) {
        area->selectAll();
    }
    if (text.isEmpty()) {
        pressKey(widget, Qt::Key_Delete);
    }
    for (const QChar character : text) {
        pressKey(widget, 0, Qt::NoModifier, QString(character));
    }
}

} // namespace ombrel::test
