#pragma once

#include <QPointF>
#include <QString>
#include <QWidget>
#include <Qt>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

class QComboBox;
class QMenu;

// What a user does with mouse and keyboard. The events come in where those of the window system do:
// they reach what lies under the pointer, or has the focus, and nothing that is hidden, covered or
// off. What can't be done is an exception, which fails the test.
namespace ombrel::test {

// Waits for it.
void waitFor(const std::string& what, const std::function<bool()>& condition,
             std::chrono::milliseconds limit = std::chrono::minutes(1));

// The widget of that name once it can be seen and used; scrolled to where it needs that.
QWidget& reach(QWidget& below, const char* name);

void clickAt(QWidget& widget, QPoint where);
void doubleClickAt(QWidget& widget, QPoint where);
void clickOn(QWidget& below, const char* name);
void dragOver(QWidget& widget, QPointF from, QPointF to);

// Brings the window of the widget to the front, and presses the key there.
void pressKeys(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
// Puts the text into a field in place of what it holds.
void fillIn(QWidget& below, const char* field, const QString& text);

// Opens the menu of a button, and clicks the entry.
void pickFromMenu(QWidget& below, const char* button, const QString& entry);
// Opens the list of a choice, and clicks the entry.
void pickFromList(QWidget& below, const char* choice, const QString& entry);
// Chooses a file or folder in the file panel of that name.
void choosePath(const char* panel, const QString& path);

} // namespace ombrel::test
