#pragma once

#include <QIcon>
#include <QPushButton>
#include <QToolButton>

// Push buttons of each kind, and a button that is an icon. They take the keyboard focus by Tab
// only, so that a click shows no ring.
namespace ombrel {

enum class ButtonKind {
    secondary,  // the ordinary one
    primary,    // what the screen is for; at most one on it
    danger,     // leads to taking something away
    dangerFill, // takes it away
    plain,      // a link among text
};

QPushButton* makeButton(const QString& text, ButtonKind kind = ButtonKind::secondary,
                        QWidget* parent = nullptr);
// `name` is the icon's; `what` is what it does, as tooltip and for screen readers.
QToolButton* makeIconButton(const QString& name, const QString& what, QWidget* parent = nullptr);

} // namespace ombrel
