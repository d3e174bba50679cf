#include "shell/design/LongText.h"

#include <QTextDocument>

namespace ombrel {

QString breakable(const QString& text) {
    constexpr int longestWord = 24;
    QString broken;
    int word = 0;
    for (const QChar character : text) {
        word = character.isSpace() ? 0 : word + 1;
        if (word > longestWord && !character.isLowSurrogate() && !character.isMark()) {
            broken += QChar(0x200B); // a space of no width
            word = 1;
        }
        broken += character;
    }
    return broken;
}

QString toolTipText(const QString& text) {
    constexpr qsizetype most = 1000;
    constexpr qsizetype longestLine = 120;
    const QString shown = text.size() > most ? text.left(most) + QChar(0x2026) : text;
    bool isLong = false;
    for (const QString& line : shown.split(QLatin1Char('\n'))) {
        isLong = isLong || line.size() > longestLine;
    }
    if (!isLong && !Qt::mightBeRichText(shown)) {
        return shown;
    }
    return QStringLiteral("<p style=\"white-space:pre-wrap\">%1</p>")
        .arg(breakable(shown).toHtmlEscaped());
}

QString actionText(const QString& text) {
    constexpr qsizetype most = 60;
    QString line = text.left(4 * most).simplified();
    if (line.size() > most) {
        line = line.left(most - 1) + QChar(0x2026);
    }
    return line.replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace ombrel
