#include "shell/design/StatTile.h"

#include "shell/design/Spacing.h"

namespace ombrel {

StatTile::StatTile(const QString& title, QWidget* parent)
    : Card(parent),
      m_title(new TextLabel(title.toUpper(), TextRole::overline, TextLabel::Ink::secondary)),
      m_value(new ElidedLabel({}, TextRole::figure)),
      m_words(new ElidedLabel({}, TextRole::heading, TextLabel::Ink::secondary)),
      m_subtitle((new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary))->wrapping()) {
    setMinimumWidth(140);
    content()->setSpacing(spacing::tight);
    content()->addWidget(m_title);
    content()->addWidget(m_value);
    content()->addWidget(m_words);
    m_words->setMinimumHeight(m_value->sizeHint().height());
    m_words->hide();
    content()->addWidget(m_subtitle);
    content()->addStretch(1);
    m_title->setObjectName(QStringLiteral("title"));
    m_value->setObjectName(QStringLiteral("value"));
    m_words->setObjectName(QStringLiteral("words"));
    m_subtitle->setObjectName(QStringLiteral("subtitle"));
}

void StatTile::setFigure(const QString& value, const QString& subtitle, TextLabel::Ink ink) {
    m_value->setText(value);
    m_value->show();
    m_words->hide();
    m_subtitle->setText(subtitle);
    m_subtitle->setInk(ink);
    setAccessibleName(QStringLiteral("%1: %2, %3").arg(m_title->text(), value, subtitle));
}

void StatTile::setWords(const QString& words, const QString& subtitle) {
    setFigure(words, subtitle);
    m_words->setText(words);
    m_words->show();
    m_value->hide();
}

} // namespace ombrel
