#include "shell/design/MessageText.h"

#include "shell/design/LongTextView.h"
#include "shell/design/WrappedText.h"

#include <QVBoxLayout>

namespace ombrel {

namespace {
constexpr qsizetype mostInFull = 4000; // characters
constexpr qsizetype mostLines = 60;
constexpr int longHeight = 240;
} // namespace

MessageText::MessageText(TextRole role, TextLabel::Ink ink, QWidget* parentWidget)
    : QWidget(parentWidget), m_short(new WrappedText(role, ink)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    m_short->setObjectName(QStringLiteral("messageText"));
    column->addWidget(m_short);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Minimum);
}

void MessageText::setText(const QString& text) {
    if (m_text == text) {
        return;
    }
    m_text = text;
    setAccessibleName(text.left(mostInFull));
    const bool isLong = text.size() > mostInFull || text.count(QLatin1Char('\n')) > mostLines;
    if (isLong && !m_long) {
        m_long = new LongTextView;
        m_long->setFixedHeight(longHeight);
        layout()->addWidget(m_long);
    }
    if (m_long) {
        m_long->setText(isLong ? text : QString());
        m_long->setVisible(isLong);
    }
    m_short->setText(isLong ? QString() : text);
    m_short->setVisible(!isLong);
}

int MessageText::widestLine() const {
    if (m_short->isHidden()) {
        return QWIDGETSIZE_MAX / 2;
    }
    return m_short->fontMetrics().size(Qt::TextExpandTabs, m_text).width() + 2;
}

} // namespace ombrel
