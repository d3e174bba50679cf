#pragma once

#include "shell/design/Tone.h"

#include <QColor>

namespace ombrel {

// Every colour of the studio, for a light and for a dark desktop. Text has a contrast of at least
// 4.5 to 1 on the surfaces that it stands on; `faint` is for decoration and placeholders only.
struct ThemeColors {
    QColor window;       // behind a page
    QColor sidebar;      // behind the navigator
    QColor surface;      // cards, fields, menus
    QColor raised;       // what stands on a card
    QColor hover;        // laid over what the pointer is on
    QColor pressed;      // laid over what is pressed
    QColor border;       // of cards
    QColor strongBorder; // of controls
    QColor text;
    QColor secondary; // text that explains
    QColor faint;
    QColor accent;     // fills
    QColor onAccent;   // text on them
    QColor accentText; // text and icons in the accent's colour
    QColor accentSoft; // behind what is selected
    QColor success;
    QColor successSoft;
    QColor warning;
    QColor warningSoft;
    QColor danger;
    QColor dangerSoft;
    QColor dangerFill; // of a button that takes something away
    QColor focus;      // the ring around what has the keyboard

    static const ThemeColors& light();
    static const ThemeColors& dark();

    // Text and icons of a tone, and what lies behind them.
    QColor strong(Tone tone) const;
    QColor soft(Tone tone) const;
};

} // namespace ombrel
