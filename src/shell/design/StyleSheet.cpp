#include "shell/design/StyleSheet.h"

#include "shell/design/MixedColor.h"

#include <array>
#include <utility>

namespace ombrel {

namespace {

// Names in @ are colours of the theme.
constexpr const char* sheet = R"(
QToolTip {
    background: @surface; color: @text; border: 1px solid @strongBorder;
    border-radius: 6px; padding: 6px 8px;
}

QPushButton {
    background: @surface; color: @text; border: 1px solid @strongBorder; border-radius: 6px;
    padding: 5px 14px; min-height: 20px;
}
QPushButton:hover { background: @raised; }
QPushButton:pressed { background: @border; }
QPushButton:focus { border: 2px solid @focus; padding: 4px 13px; }
QPushButton:disabled { color: @faint; background: @window; border-color: @border; }
QPushButton[kind="primary"] { background: @accent; color: @onAccent; border-color: @accent; }
QPushButton[kind="primary"]:hover { background: @accentHover; }
QPushButton[kind="primary"]:pressed { background: @accentPressed; }
QPushButton[kind="primary"]:focus { border: 2px solid @focus; }
QPushButton[kind="primary"]:disabled {
    background: @raised; color: @faint; border: 1px solid @border;
}
QPushButton[kind="danger"] { color: @danger; }
QPushButton[kind="danger"]:hover { background: @dangerSoft; }
QPushButton[kind="dangerFill"] { background: @dangerFill; color: #ffffff; border-color: @dangerFill; }
QPushButton[kind="plain"] { background: transparent; border-color: transparent; color: @accentText; }
QPushButton[kind="plain"]:hover { background: @hover; }
QPushButton[kind="plain"]:focus { border: 2px solid @focus; }
QPushButton[kind="action"] {
    background: transparent; border: 1px solid transparent; border-radius: 8px; text-align: left;
    padding: 0px; min-height: 58px;
}
QPushButton[kind="action"] QLabel[ink="secondary"] { color: @secondary; }
QPushButton[kind="action"]:hover { background: @hover; }
QPushButton[kind="action"]:focus { border: 2px solid @focus; padding: 0px; }

QToolButton {
    background: transparent; border: 1px solid transparent; border-radius: 6px; padding: 4px;
    color: @text;
}
QToolButton:hover { background: @hover; }
QToolButton:pressed, QToolButton:open { background: @pressed; }
QToolButton:focus { border: 2px solid @focus; padding: 3px; }
QToolButton:disabled { color: @faint; }
QToolButton::menu-indicator { image: none; }

QFrame[segmented="true"] { background: @pressed; border: none; border-radius: 8px; }
QLineEdit, QPlainTextEdit, QTextEdit, QSpinBox, QDoubleSpinBox, QComboBox {
    background: @surface; color: @text; border: 1px solid @strongBorder; border-radius: 6px;
    selection-background-color: @accent; selection-color: @onAccent;
}
QLineEdit { padding: 5px 8px; min-height: 20px; }
QPlainTextEdit, QTextEdit { padding: 4px; }
QTextEdit[kind="text"], QTextEdit[kind="text"]:focus {
    background: transparent; border: none; border-radius: 0px; padding: 0px;
}
QTextEdit[ink="secondary"] { color: @secondary; }
QTextEdit[ink="danger"] { color: @danger; }
QSpinBox, QDoubleSpinBox { padding: 4px 6px; min-height: 20px; padding-right: 22px; }
QSpinBox::up-button, QDoubleSpinBox::up-button {
    subcontrol-origin: border; subcontrol-position: top right; width: 20px; border: none;
    margin: 2px 2px 0 0; border-radius: 4px;
}
QSpinBox::down-button, QDoubleSpinBox::down-button {
    subcontrol-origin: border; subcontrol-position: bottom right; width: 20px; border: none;
    margin: 0 2px 2px 0; border-radius: 4px;
}
QSpinBox::up-button:hover, QSpinBox::down-button:hover, QDoubleSpinBox::up-button:hover,
QDoubleSpinBox::down-button:hover { background: @hover; }
QSpinBox::up-arrow, QDoubleSpinBox::up-arrow {
    image: url(:/icons/arrow-up-@variant.svg); width: 9px; height: 9px;
}
QSpinBox::down-arrow, QDoubleSpinBox::down-arrow {
    image: url(:/icons/arrow-@variant.svg); width: 9px; height: 9px;
}
QComboBox { padding: 4px 10px; min-height: 20px; }
QComboBox:hover { background: @raised; }
QLineEdit:focus, QPlainTextEdit:focus, QTextEdit:focus, QSpinBox:focus, QDoubleSpinBox:focus,
QComboBox:focus { border: 2px solid @focus; }
QLineEdit:focus { padding: 4px 7px; }
QPlainTextEdit:focus, QTextEdit:focus { padding: 3px; }
QSpinBox:focus, QDoubleSpinBox:focus { padding: 3px 21px 3px 5px; }
QComboBox:focus { padding: 3px 9px; }
QLineEdit:disabled, QPlainTextEdit:disabled, QTextEdit:disabled, QSpinBox:disabled,
QComboBox:disabled { background: @window; color: @faint; border-color: @border; }
QLineEdit:read-only { background: @window; }
QLineEdit[kind="name"] {
    background: transparent; border: 1px solid transparent; padding: 3px 6px; margin-left: -7px;
}
QLineEdit[kind="name"]:hover { border: 1px solid @strongBorder; }
QLineEdit[kind="name"]:focus { background: @surface; border: 2px solid @focus; padding: 2px 5px; }
QComboBox::drop-down { border: none; width: 24px; }
QComboBox::down-arrow { image: url(:/icons/arrow-@variant.svg); width: 12px; height: 12px; }
QComboBox QAbstractItemView {
    background: @surface; color: @text; border: 1px solid @strongBorder; border-radius: 6px;
    padding: 4px; selection-background-color: @accentSoft; selection-color: @accentText;
    outline: none;
}

QCheckBox, QRadioButton { color: @text; spacing: 8px; padding: 2px; border-radius: 4px; }
QCheckBox:disabled, QRadioButton:disabled { color: @faint; }
QCheckBox:focus, QRadioButton:focus { outline: none; border: 2px solid @focus; padding: 0px; }
QCheckBox::indicator, QRadioButton::indicator {
    width: 16px; height: 16px; border: 1px solid @strongBorder; background: @surface;
}
QCheckBox::indicator { border-radius: 4px; }
QRadioButton::indicator { border-radius: 8px; }
QCheckBox::indicator:hover, QRadioButton::indicator:hover { border-color: @accentText; }
QCheckBox::indicator:checked {
    background: @accent; border-color: @accent; image: url(:/icons/tick.svg);
}
QRadioButton::indicator:checked { background: @surface; border: 5px solid @accent; width: 8px; height: 8px; }
QCheckBox::indicator:disabled { background: @window; border-color: @border; }

QSlider { min-height: 22px; }
QSlider::groove:horizontal { height: 4px; border-radius: 2px; background: @strongBorder; }
QSlider::sub-page:horizontal { height: 4px; border-radius: 2px; background: @accent; }
QSlider::handle:horizontal {
    width: 16px; height: 16px; margin: -7px 0; border-radius: 9px; background: @handle;
    border: 1px solid @strongBorder;
}
QSlider::handle:horizontal:hover { border-color: @accentText; }
QSlider::handle:horizontal:focus { border: 2px solid @focus; width: 14px; height: 14px; }
QSlider::sub-page:horizontal:disabled { background: @strongBorder; }

QProgressBar { background: @pressed; border: none; border-radius: 3px; max-height: 6px; min-height: 6px; }
QProgressBar::chunk { background: @accent; border-radius: 3px; }

QScrollArea { border: none; }
QScrollArea { background: transparent; }
QScrollArea > QWidget > QWidget[page="true"] { background: transparent; }
QScrollBar:vertical { background: transparent; width: 12px; margin: 0; }
QScrollBar:horizontal { background: transparent; height: 12px; margin: 0; }
QScrollBar::handle { background: @scroll; border-radius: 4px; margin: 2px; }
QScrollBar::handle:vertical { min-height: 32px; }
QScrollBar::handle:horizontal { min-width: 32px; }
QScrollBar::handle:hover { background: @faint; }
QScrollBar::add-line, QScrollBar::sub-line, QScrollBar::add-page, QScrollBar::sub-page {
    background: none; border: none; width: 0; height: 0;
}
QAbstractScrollArea::corner { background: transparent; }

QMenuBar { background: @sidebar; color: @text; border-bottom: 1px solid @border; padding: 2px 6px; }
QMenuBar::item { background: transparent; padding: 4px 9px; border-radius: 5px; }
QMenuBar::item:selected { background: @pressed; }
QMenu {
    background: @surface; color: @text; border: 1px solid @strongBorder; border-radius: 8px;
    padding: 5px;
}
QMenu::item { padding: 5px 26px 5px 12px; border-radius: 5px; }
QMenu::item:selected { background: @accentSoft; color: @accentText; }
QMenu::item:disabled { color: @faint; background: transparent; }
QMenu::separator { height: 1px; background: @border; margin: 5px 8px; }
QMenu::icon { padding-left: 8px; }

QListView, QTreeView, QTableView {
    background: transparent; border: none; outline: none;
    selection-background-color: @accentSoft; selection-color: @text;
}
QTableView { gridline-color: @border; }
QHeaderView { background: transparent; border: none; }
QHeaderView::section {
    background: transparent; color: @secondary; border: none; border-bottom: 1px solid @border;
    padding: 6px 8px; font-weight: 600;
}
QTableView::item { padding: 5px 8px; border-bottom: 1px solid @border; }
QTableView::item:selected { background: @accentSoft; color: @text; }

QSplitter::handle { background: @border; }
QSplitter::handle:horizontal { width: 1px; }
QSplitter::handle:vertical { height: 1px; }

QFrame[card="true"] { background: @surface; border: 1px solid @border; border-radius: 10px; }
QFrame[card="flat"] { background: @raised; border: none; border-radius: 8px; }
QFrame[rule="true"] { background: @border; border: none; max-height: 1px; min-height: 1px; }
QFrame[rule="vertical"] { background: @border; border: none; max-width: 1px; min-width: 1px; }
QFrame[sidebar="true"] { background: @sidebar; border: none; }
QFrame[bar="true"] { background: @window; border: none; border-bottom: 1px solid @border; }
QStatusBar { background: @sidebar; border-top: 1px solid @border; color: @secondary; }
)";

} // namespace

QString styleSheet(const ThemeColors& c) {
    const bool isDark = c.window.lightnessF() < 0.5F;
    // The longer of two names that begin alike comes first.
    const std::array<std::pair<const char*, QColor>, 27> names = {{
        {"@accentHover", mixed(c.accent, Qt::white, 0.1)},
        {"@accentPressed", mixed(c.accent, Qt::black, 0.15)},
        {"@accentSoft", c.accentSoft},
        {"@accentText", c.accentText},
        {"@accent", c.accent},
        {"@onAccent", c.onAccent},
        {"@dangerFill", c.dangerFill},
        {"@dangerSoft", c.dangerSoft},
        {"@danger", c.danger},
        {"@successSoft", c.successSoft},
        {"@success", c.success},
        {"@warningSoft", c.warningSoft},
        {"@warning", c.warning},
        {"@handle", isDark ? QColor("#e6e6ec") : QColor("#ffffff")},
        {"@scroll", mixed(c.window, c.faint, 0.45)},
        {"@strongBorder", c.strongBorder},
        {"@border", c.border},
        {"@secondary", c.secondary},
        {"@sidebar", c.sidebar},
        {"@surface", c.surface},
        {"@raised", c.raised},
        {"@window", c.window},
        {"@pressed", c.pressed},
        {"@hover", c.hover},
        {"@focus", c.focus},
        {"@faint", c.faint},
        {"@text", c.text},
    }};
    QString result = QString::fromLatin1(sheet);
    result.replace(QLatin1String("@variant"), QLatin1String(isDark ? "light" : "dark"));
    for (const auto& [name, color] : names) {
        const QString value = QStringLiteral("rgba(%1,%2,%3,%4)")
                                  .arg(color.red())
                                  .arg(color.green())
                                  .arg(color.blue())
                                  .arg(color.alpha());
        result.replace(QLatin1String(name), value);
    }
    return result;
}

} // namespace ombrel
