#pragma once

#include "tests/shell/Studio.h"

#include <QComboBox>

#include <string>

namespace ombrel::test {

// Picks the entry of that text from a menu, as the user does.
inline void choose(QWidget& below, const char* menu, const std::string& entry) {
    auto& box = find<QComboBox>(below, menu);
    const int index = box.findText(toQt(entry));
    if (index < 0 || !box.isEnabled()) {
        throw std::runtime_error(std::string(menu) + " does not offer " + entry);
    }
    box.setCurrentIndex(index);
    Q_EMIT box.activated(index);
}

} // namespace ombrel::test
