#include "tests/shell/end_to_end/Hands.h"

#include "tests/shell/Wait.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QMenu>
#include <QScrollArea>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QWindow>

namespace ombrel::test {

namespace {

QWidget* windowNamed(const char* name) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->objectName() == QLatin1String(name)) {
            return widget;
        }
    }
    return nullptr;
}

// Where it lies in its window; the test fails where another widget would be hit.
QPoint placeOf(QWidget& widget, QPoint where) {
    const QPoint place = widget.mapTo(widget.window(), where);
    const QWidget* hit = widget.window()->childAt(place);
    if (hit && hit != &widget && !widget.isAncestorOf(hit)) {
        throw std::runtime_error(widget.objectName().toStdString() + " is covered by " +
                                 hit->metaObject()->className() + " " +
                                 hit->objectName().toStdString());
    }
    return place;
}

void activate(QWidget& window) {
    waitFor("the focus of " + window.objectName().toStdString(), [&] {
        window.activateWindow();
        return QGuiApplication::focusWindow() == window.windowHandle();
    });
}

} // namespace

void waitFor(const std::string& what, const std::function<bool()>& condition,
             std::chrono::milliseconds limit) {
    if (!waitUntil(condition, limit)) {
        throw std::runtime_error("it never came: " + what);
    }
}

QWidget& reach(QWidget& below, const char* name) {
    QWidget* found = nullptr;
    waitFor(name, [&] {
        found = below.findChild<QWidget*>(QLatin1String(name));
        return found && found->isVisible() && found->isEnabled();
    });
    for (QWidget* outer = found->parentWidget(); outer; outer = outer->parentWidget()) {
        if (auto* area = qobject_cast<QScrollArea*>(outer)) {
            area->ensureWidgetVisible(found);
        }
    }
    QCoreApplication::processEvents();
    return *found;
}

void clickAt(QWidget& widget, QPoint where) {
    QTest::mouseClick(widget.window()->windowHandle(), Qt::LeftButton, {}, placeOf(widget, where));
}

void doubleClickAt(QWidget& widget, QPoint where) {
    QTest::mouseDClick(widget.window()->windowHandle(), Qt::LeftButton, {}, placeOf(widget, where));
}

void clickOn(QWidget& below, const char* name) {
    QWidget& widget = reach(below, name);
    clickAt(widget, widget.rect().center());
}

void dragOver(QWidget& widget, QPointF from, QPointF to) {
    QWindow* window = widget.window()->windowHandle();
    const QPoint start = placeOf(widget, from.toPoint());
    const QPoint end = placeOf(widget, to.toPoint());
    QTest::mouseMove(window, start);
    QTest::mousePress(window, Qt::LeftButton, {}, start);
    constexpr int steps = 8;
    for (int i = 1; i <= steps; ++i) {
        QTest::mouseMove(window, start + (end - start) * i / steps);
    }
    QTest::mouseRelease(window, Qt::LeftButton, {}, end);
}

void pressKeys(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers) {
    activate(*widget.window());
    QTest::keyClick(widget.window()->windowHandle(), key, modifiers);
}

void fillIn(QWidget& below, const char* field, const QString& text) {
    QWidget& widget = reach(below, field);
    clickAt(widget, widget.rect().center());
    pressKeys(widget, Qt::Key_A, Qt::ControlModifier);
    for (const QChar character : text) {
        QTest::keyClick(widget.window()->windowHandle(), character.toLatin1());
    }
}

void pickFromMenu(QWidget& below, const char* button, const QString& entry) {
    auto& opener = dynamic_cast<QToolButton&>(reach(below, button));
    QMenu* menu = opener.menu();
    // The button waits until its menu is closed.
    QTimer::singleShot(0, menu, [menu, entry] {
        for (QAction* action : menu->actions()) {
            if (action->text() == entry && action->isEnabled()) {
                return clickAt(*menu, menu->actionGeometry(action).center());
            }
        }
        menu->close();
    });
    bool isPicked = false;
    const auto watched = QObject::connect(menu, &QMenu::triggered, menu, [&](QAction* action) {
        isPicked = action->text() == entry;
    });
    clickAt(opener, opener.rect().center());
    waitFor(entry.toStdString() + " in the menu", [&] { return isPicked; });
    QObject::disconnect(watched);
}

void pickFromList(QWidget& below, const char* choice, const QString& entry) {
    auto& box = dynamic_cast<QComboBox&>(reach(below, choice));
    clickAt(box, box.rect().center());
    QAbstractItemView* list = box.view();
    waitFor("the list of choices", [&] { return list->isVisible(); });
    const QModelIndex index = list->model()->index(box.findText(entry), box.modelColumn());
    if (!index.isValid()) {
        throw std::runtime_error(std::string(choice) + " does not offer " + entry.toStdString());
    }
    list->scrollTo(index);
    QTest::qWait(QApplication::doubleClickInterval()); // a list that has just opened takes no click
    clickAt(*list->viewport(), list->visualRect(index).center());
    waitFor("the choice", [&] { return box.currentText() == entry && !list->isVisible(); });
}

void choosePath(const char* panel, const QString& path) {
    waitFor(panel, [&] { return windowNamed(panel) != nullptr; });
    QWidget& dialog = *windowNamed(panel);
    clickOn(dialog, "fileNameEdit");
    QGuiApplication::clipboard()->setText(path);
    pressKeys(dialog, Qt::Key_A, Qt::ControlModifier);
    pressKeys(dialog, Qt::Key_V, Qt::ControlModifier);
    pressKeys(dialog, Qt::Key_Return);
    waitFor("the end of the panel", [&] { return windowNamed(panel) == nullptr; });
}

} // namespace ombrel::test
