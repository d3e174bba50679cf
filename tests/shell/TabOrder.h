#pragma once

#include "tests/shell/Studio.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ombrel::test {

// The names of the controls that the Tab key comes to from the one with this name on, until it
// leaves the widget or begins anew.
inline std::vector<std::string> tabOrder(QWidget& below, const char* first) {
    below.window()->show();
    below.window()->activateWindow();
    waitUntil([&] { return below.window()->isActiveWindow(); });
    find<QWidget>(below, first).setFocus(Qt::TabFocusReason);
    std::vector<std::string> names;
    while (QWidget* focused = QApplication::focusWidget()) {
        const std::string name = fromQt(focused->objectName());
        if (!below.isAncestorOf(focused) || std::ranges::find(names, name) != names.end()) {
            break;
        }
        names.push_back(name);
        pressKey(*focused, Qt::Key_Tab);
    }
    return names;
}

} // namespace ombrel::test
