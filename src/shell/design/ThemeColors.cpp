#include "shell/design/ThemeColors.h"

namespace ombrel {

const ThemeColors& ThemeColors::light() {
    static const ThemeColors colors = {
        .window = QColor("#f6f6f8"),
        .sidebar = QColor("#eeeef2"),
        .surface = QColor("#ffffff"),
        .raised = QColor("#f5f5f8"),
        .hover = QColor(20, 20, 40, 14),
        .pressed = QColor(20, 20, 40, 28),
        .border = QColor("#e2e2e8"),
        .strongBorder = QColor("#c9c9d3"),
        .text = QColor("#1c1c22"),
        .secondary = QColor("#5d5d69"),
        .faint = QColor("#8d8d9a"),
        .accent = QColor("#3f57d0"),
        .onAccent = QColor("#ffffff"),
        .accentText = QColor("#3a50c4"),
        .accentSoft = QColor("#e5e9fb"),
        .success = QColor("#1b7247"),
        .successSoft = QColor("#e0f3e8"),
        .warning = QColor("#8a5500"),
        .warningSoft = QColor("#fbeed6"),
        .danger = QColor("#b3261e"),
        .dangerSoft = QColor("#fbe7e5"),
        .dangerFill = QColor("#c2332a"),
        .focus = QColor("#6f86f0"),
    };
    return colors;
}

const ThemeColors& ThemeColors::dark() {
    static const ThemeColors colors = {
        .window = QColor("#1a1a1e"),
        .sidebar = QColor("#212126"),
        .surface = QColor("#26262b"),
        .raised = QColor("#2f2f36"),
        .hover = QColor(255, 255, 255, 16),
        .pressed = QColor(255, 255, 255, 30),
        .border = QColor("#37373f"),
        .strongBorder = QColor("#4d4d58"),
        .text = QColor("#ededf1"),
        .secondary = QColor("#adadb9"),
        .faint = QColor("#7f7f8c"),
        .accent = QColor("#4f68dc"),
        .onAccent = QColor("#ffffff"),
        .accentText = QColor("#a0b0ff"),
        .accentSoft = QColor("#2c3357"),
        .success = QColor("#6ccb98"),
        .successSoft = QColor("#1c3328"),
        .warning = QColor("#e6b85c"),
        .warningSoft = QColor("#382d18"),
        .danger = QColor("#ff9188"),
        .dangerSoft = QColor("#3e2221"),
        .dangerFill = QColor("#b9382f"),
        .focus = QColor("#8799f5"),
    };
    return colors;
}

QColor ThemeColors::strong(Tone tone) const {
    switch (tone) {
    case Tone::neutral:
        return secondary;
    case Tone::accent:
        return accentText;
    case Tone::success:
        return success;
    case Tone::warning:
        return warning;
    case Tone::danger:
        return danger;
    }
    return text;
}

QColor ThemeColors::soft(Tone tone) const {
    switch (tone) {
    case Tone::neutral:
        return raised;
    case Tone::accent:
        return accentSoft;
    case Tone::success:
        return successSoft;
    case Tone::warning:
        return warningSoft;
    case Tone::danger:
        return dangerSoft;
    }
    return raised;
}

} // namespace ombrel
