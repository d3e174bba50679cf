#include "shell/design/WrappedText.h"

#include "shell/design/Theme.h"

#include <QTextDocument>
#include <QWheelEvent>

#include <memory>

namespace ombrel {

namespace {

constexpr int leastWidth = 40;

QString nameOf(TextLabel::Ink ink) {
    switch (ink) {
    case TextLabel::Ink::secondary:
        return QStringLiteral("secondary");
    case TextLabel::Ink::danger:
        return QStringLiteral("danger");
    default:
        return {};
    }
}

} // namespace

WrappedText::WrappedText(TextRole role, TextLabel::Ink ink, QWidget* parentWidget)
    : QTextEdit(parentWidget) {
    setProperty("kind", "text");
    setProperty("ink", nameOf(ink));
    setFont(Theme::current().font(role));
    setReadOnly(true);
    setAcceptDrops(false);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setFocusPolicy(Qt::ClickFocus);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setFrameShape(QFrame::NoFrame);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    document()->setDocumentMargin(0);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void WrappedText::setText(const QString& text) {
    setPlainText(text);
    updateGeometry();
}

QSize WrappedText::sizeHint() const {
    constexpr int usualWidth = 320;
    return {usualWidth, heightForWidth(usualWidth)};
}

QSize WrappedText::minimumSizeHint() const {
    return {leastWidth, fontMetrics().height()};
}

int WrappedText::heightForWidth(int width) const {
    if (document()->textWidth() == width) {
        return qCeil(document()->size().height());
    }
    const std::unique_ptr<QTextDocument> other(document()->clone());
    other->setTextWidth(width);
    return qCeil(other->size().height());
}

void WrappedText::wheelEvent(QWheelEvent* event) {
    event->ignore(); // the page scrolls
}

} // namespace ombrel
