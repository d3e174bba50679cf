#include "shell/design/TextLabel.h"

#include "shell/design/Theme.h"

namespace ombrel {

namespace {

QColor colorOf(TextLabel::Ink ink) {
    const ThemeColors& colors = Theme::current().colors();
    switch (ink) {
    case TextLabel::Ink::text:
        return colors.text;
    case TextLabel::Ink::secondary:
        return colors.secondary;
    case TextLabel::Ink::faint:
        return colors.faint;
    case TextLabel::Ink::accent:
        return colors.accentText;
    case TextLabel::Ink::success:
        return colors.success;
    case TextLabel::Ink::warning:
        return colors.warning;
    case TextLabel::Ink::danger:
        return colors.danger;
    }
    return colors.text;
}

} // namespace

TextLabel::TextLabel(const QString& text, TextRole role, Ink ink, QWidget* parent)
    : QLabel(text, parent), m_role(role), m_ink(ink) {
    setTextFormat(Qt::PlainText);
    if (ink == Ink::secondary) {
        setProperty("ink", "secondary"); // for labels inside of styled buttons
    }
    setFont(Theme::current().font(role));
    connect(&Theme::current(), &Theme::changed, this, &TextLabel::applyTheme);
    applyTheme();
}

TextLabel* TextLabel::wrapping() {
    setWordWrap(true);
    QSizePolicy policy = sizePolicy();
    policy.setHorizontalPolicy(QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    return this;
}

TextLabel* TextLabel::selectable() {
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    return this;
}

void TextLabel::setInk(Ink ink) {
    if (m_ink != ink) {
        m_ink = ink;
        applyTheme();
    }
}

void TextLabel::setTone(Tone tone) {
    switch (tone) {
    case Tone::neutral:
        return setInk(Ink::secondary);
    case Tone::accent:
        return setInk(Ink::accent);
    case Tone::success:
        return setInk(Ink::success);
    case Tone::warning:
        return setInk(Ink::warning);
    case Tone::danger:
        return setInk(Ink::danger);
    }
}

QSize TextLabel::minimumSizeHint() const {
    constexpr int longestWord = 160;
    const QSize least = QLabel::minimumSizeHint();
    return wordWrap() ? QSize(qMin(least.width(), longestWord), least.height()) : least;
}

void TextLabel::applyTheme() {
    QPalette changed = palette();
    changed.setColor(QPalette::WindowText, colorOf(m_ink));
    setPalette(changed);
}

} // namespace ombrel
