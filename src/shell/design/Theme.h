#pragma once

#include "shell/design/Appearance.h"
#include "shell/design/TextRole.h"
#include "shell/design/ThemeColors.h"

#include <QFont>
#include <QObject>

namespace ombrel {

// How the studio looks now: colours, type and the style of all controls. One a process, made on
// first use after the QApplication. Light or dark as the desktop says, unless the user chose.
class Theme final : public QObject {
    Q_OBJECT

  public:
    static Theme& current();

    Appearance appearance() const { return m_appearance; }
    void setAppearance(Appearance appearance);
    // What the desktop prefers; asked for as long as the appearance is `system`.
    void setDesktopIsDark(bool isDark);
    // Asks the desktop now and listens to it from now on.
    void followDesktop();

    bool isDark() const;
    const ThemeColors& colors() const;
    QFont font(TextRole role) const;

  Q_SIGNALS:
    void changed();

  private:
    Theme();
    void apply();

    Appearance m_appearance = Appearance::system;
    bool m_desktopIsDark = false;
    QFont m_base;
};

} // namespace ombrel
