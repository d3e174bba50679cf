#include "shell/design/Theme.h"

#include "shell/design/DesktopAppearance.h"
#include "shell/design/StyleSheet.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

#include <algorithm>

namespace ombrel {

namespace {

// The desktop's font; where it names none, a face that reads well in small.
QFont baseFont() {
    QFont font = QApplication::font();
    const QString family = font.family();
    const bool isNamed = family != QLatin1String("Sans Serif") && family != QLatin1String("Sans") &&
                         family != QLatin1String("sans-serif") &&
                         family != QLatin1String("DejaVu Sans") && !family.isEmpty();
    if (!isNamed && QFontDatabase::families().contains(QLatin1String("Inter"))) {
        font.setFamilies({QStringLiteral("Inter"), QStringLiteral("DejaVu Sans")});
    }
    constexpr double smallest = 10;
    const double size = font.pointSizeF() > 0 ? font.pointSizeF() : smallest;
    font.setPointSizeF(std::max(size, smallest));
    return font;
}

QPalette paletteOf(const ThemeColors& c) {
    QPalette palette;
    palette.setColor(QPalette::Window, c.window);
    palette.setColor(QPalette::WindowText, c.text);
    palette.setColor(QPalette::Base, c.surface);
    palette.setColor(QPalette::AlternateBase, c.raised);
    palette.setColor(QPalette::Text, c.text);
    palette.setColor(QPalette::PlaceholderText, c.faint);
    palette.setColor(QPalette::Button, c.surface);
    palette.setColor(QPalette::ButtonText, c.text);
    palette.setColor(QPalette::BrightText, c.danger);
    palette.setColor(QPalette::Highlight, c.accent);
    palette.setColor(QPalette::HighlightedText, c.onAccent);
    palette.setColor(QPalette::Link, c.accentText);
    palette.setColor(QPalette::LinkVisited, c.accentText);
    palette.setColor(QPalette::ToolTipBase, c.surface);
    palette.setColor(QPalette::ToolTipText, c.text);
    palette.setColor(QPalette::Light, c.raised);
    palette.setColor(QPalette::Midlight, c.raised);
    palette.setColor(QPalette::Mid, c.border);
    palette.setColor(QPalette::Dark, c.strongBorder);
    palette.setColor(QPalette::Shadow, QColor(0, 0, 0, 120));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, c.faint);
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, c.strongBorder);
    return palette;
}

} // namespace

Theme& Theme::current() {
    static auto* theme = new Theme; // goes with the application
    return *theme;
}

Theme::Theme() : QObject(qApp), m_base(baseFont()) {
    m_desktopIsDark = QApplication::palette().color(QPalette::Window).lightnessF() < 0.5F;
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    apply();
}

void Theme::setAppearance(Appearance appearance) {
    const bool wasDark = isDark();
    m_appearance = appearance;
    if (isDark() != wasDark) {
        apply();
    }
}

void Theme::setDesktopIsDark(bool isDarkNow) {
    const bool wasDark = isDark();
    m_desktopIsDark = isDarkNow;
    if (isDark() != wasDark) {
        apply();
    }
}

void Theme::followDesktop() {
    new DesktopAppearance([this](bool isDarkNow) { setDesktopIsDark(isDarkNow); }, this);
}

bool Theme::isDark() const {
    return m_appearance == Appearance::dark ||
           (m_appearance == Appearance::system && m_desktopIsDark);
}

const ThemeColors& Theme::colors() const {
    return isDark() ? ThemeColors::dark() : ThemeColors::light();
}

QFont Theme::font(TextRole role) const {
    QFont font = m_base;
    const double size = m_base.pointSizeF();
    switch (role) {
    case TextRole::title:
        font.setPointSizeF(size * 1.6);
        font.setWeight(QFont::DemiBold);
        break;
    case TextRole::heading:
        font.setPointSizeF(size * 1.15);
        font.setWeight(QFont::DemiBold);
        break;
    case TextRole::strong:
        font.setWeight(QFont::DemiBold);
        break;
    case TextRole::body:
        break;
    case TextRole::caption:
        font.setPointSizeF(size * 0.88);
        break;
    case TextRole::overline:
        font.setPointSizeF(size * 0.8);
        font.setWeight(QFont::DemiBold);
        font.setLetterSpacing(QFont::PercentageSpacing, 106);
        break;
    case TextRole::figure:
        font.setPointSizeF(size * 1.7);
        font.setWeight(QFont::DemiBold);
        break;
    case TextRole::code:
        font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
        font.setPointSizeF(size * 0.92);
        break;
    }
    return font;
}

void Theme::apply() {
    QApplication::setFont(m_base);
    QApplication::setPalette(paletteOf(colors()));
    qApp->setStyleSheet(styleSheet(colors()));
    Q_EMIT changed();
}

} // namespace ombrel
