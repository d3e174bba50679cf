#include "shell/glossary/GlossaryPopoverView.h"

#include "shell/design/Card.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"
#include "shell/glossary/TopicDiagram.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace ombrel {

namespace {

constexpr int popoverWidth = 480;

TextLabel* part(const char* name, const QString& text, TextRole role,
                TextLabel::Ink ink = TextLabel::Ink::text) {
    auto* label = (new TextLabel(text, role, ink))->wrapping();
    label->setObjectName(QStringLiteral("glossary.") + QLatin1String(name));
    return label;
}

} // namespace

GlossaryPopoverView::GlossaryPopoverView(GlossaryTopic topic, QWidget* parent)
    : QFrame(parent, Qt::Popup), m_topic(topic), m_area(new QScrollArea) {
    setObjectName(QStringLiteral("glossary"));
    setAttribute(Qt::WA_DeleteOnClose);
    // The click that closes it must not press the button below, which would open it again.
    setAttribute(Qt::WA_NoMouseReplay);
    const QString heading = tr("What is %1?").arg(title(topic));
    setAccessibleName(heading);
    setAccessibleDescription(definition(topic));
    setFocusPolicy(Qt::StrongFocus);

    auto* page = new QWidget;
    page->setProperty("page", "true");
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(spacing::wide, spacing::large, spacing::wide, spacing::wide);
    column->setSpacing(spacing::small);
    column->addWidget(part("title", heading, TextRole::heading));
    column->addWidget(part("definition", definition(topic), TextRole::strong));
    column->addSpacing(spacing::tight);
    column->addWidget(
        part("explanation", explanation(topic), TextRole::body, TextLabel::Ink::secondary));
    column->addSpacing(spacing::small);
    column->addWidget(
        part("exampleTitle", tr("EXAMPLE"), TextRole::overline, TextLabel::Ink::secondary));
    column->addWidget(part("example", example(topic), TextRole::body));
    column->addSpacing(spacing::small);
    auto* frame = new Card;
    frame->setProperty("card", "flat");
    frame->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred); // higher when narrower
    auto* diagram = new TopicDiagram(topic);
    diagram->setObjectName(QStringLiteral("glossary.diagram"));
    frame->content()->addWidget(diagram);
    column->addWidget(frame);

    m_area->setObjectName(QStringLiteral("glossary.scroll"));
    m_area->setWidgetResizable(true);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setWidget(page);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(1, 1, 1, 1);
    whole->addWidget(m_area);
}

void GlossaryPopoverView::showAt(const QWidget* anchor) {
    constexpr int margin = spacing::small; // to the edges of the screen
    const QRect screen =
        anchor->screen()->availableGeometry().adjusted(margin, margin, -margin, -margin);
    const int wide = std::min(popoverWidth, screen.width());
    const int content = m_area->widget()->layout()->totalHeightForWidth(wide - 2) + 2;
    const int high = std::min(content, screen.height());
    setFixedSize(wide, high);
    m_area->setVerticalScrollBarPolicy(high < content ? Qt::ScrollBarAlwaysOn
                                                      : Qt::ScrollBarAlwaysOff);

    const QPoint top = anchor->mapToGlobal(QPoint(0, 0));
    const int below = top.y() + anchor->height() + spacing::tight;
    const int above = top.y() - spacing::tight - high;
    int y = below;
    if (below + high > screen.bottom() + 1 && above >= screen.top()) {
        y = above;
    }
    const int x = top.x() + anchor->width() / 2 - wide / 4;
    move(std::clamp(x, screen.left(), screen.right() + 1 - wide),
         std::clamp(y, screen.top(), screen.bottom() + 1 - high));
    show();
    setFocus(Qt::PopupFocusReason);
}

void GlossaryPopoverView::keyPressEvent(QKeyEvent* event) {
    QScrollBar* bar = m_area->verticalScrollBar();
    switch (event->key()) {
    case Qt::Key_Escape:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
        close();
        break;
    case Qt::Key_Down:
        bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
        break;
    case Qt::Key_Up:
        bar->triggerAction(QAbstractSlider::SliderSingleStepSub);
        break;
    case Qt::Key_PageDown:
        bar->triggerAction(QAbstractSlider::SliderPageStepAdd);
        break;
    case Qt::Key_PageUp:
        bar->triggerAction(QAbstractSlider::SliderPageStepSub);
        break;
    default:
        QFrame::keyPressEvent(event);
    }
}

void GlossaryPopoverView::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = Theme::current().colors();
    QPainter painter(this);
    painter.setPen(colors.strongBorder);
    painter.setBrush(colors.surface);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

} // namespace ombrel
