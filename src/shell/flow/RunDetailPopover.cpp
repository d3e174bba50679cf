#include "shell/flow/RunDetailPopover.h"

#include "shell/QtText.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/LongTextView.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace ombrel {

namespace {

constexpr int popoverWidth = 380;

QWidget* valueView(const QString& text, const QString& label) {
    auto* view = new LongTextView;
    view->setFont(Theme::current().font(TextRole::body));
    view->setAccessibleName(label);
    view->setText(text);
    view->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    const QFontMetrics metrics(view->font());
    // As high as the text, up to a few lines, and less where the screen is low; the rest scrolls.
    constexpr qsizetype measured = 2000;
    constexpr int mostLines = 7;
    constexpr int fewestLines = 2;
    const QRect bounds =
        metrics.boundingRect(QRect(0, 0, popoverWidth - 2 * spacing::large - 24, 10'000),
                             Qt::TextWrapAnywhere | Qt::TextWordWrap, text.left(measured));
    const int frame = 2 * spacing::small + 4;
    const int height =
        std::clamp(bounds.height(), metrics.lineSpacing(), mostLines * metrics.lineSpacing());
    view->setMinimumHeight(std::min(height, fewestLines * metrics.lineSpacing()) + frame);
    view->setMaximumHeight(height + frame);
    return view;
}

} // namespace

RunDetailPopover::RunDetailPopover(const RunBubble& bubble, const QString& nodeTitle,
                                   QWidget* parent)
    : QFrame(parent, Qt::Popup | Qt::FramelessWindowHint) {
    named(this, QStringLiteral("runDetail"), toQt(bubble.title));
    setAttribute(Qt::WA_DeleteOnClose);
    setProperty("card", "true");
    setFixedWidth(popoverWidth);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::large, spacing::medium, spacing::large, spacing::large);
    column->setSpacing(spacing::tight);
    auto* head = new QHBoxLayout;
    auto* title = new TextLabel(toQt(bubble.title), TextRole::heading);
    title->setObjectName(QStringLiteral("runDetail.title"));
    head->addWidget(title);
    auto* node = new ElidedLabel(nodeTitle, TextRole::body, TextLabel::Ink::secondary);
    node->setObjectName(QStringLiteral("runDetail.node"));
    head->addWidget(node, 1);
    column->addLayout(head);
    for (std::size_t i = 0; i < bubble.rows.size(); ++i) {
        const QString label = toQt(bubble.rows[i].label);
        column->addSpacing(spacing::tight);
        auto* overline = new TextLabel(label, TextRole::overline,
                                       label == QLatin1String("Error") ? TextLabel::Ink::danger
                                                                       : TextLabel::Ink::secondary);
        overline->setObjectName(QStringLiteral("runDetail.label.%1").arg(i));
        column->addWidget(overline);
        QWidget* value = valueView(toQt(bubble.rows[i].text), label);
        value->setObjectName(QStringLiteral("runDetail.value.%1").arg(i));
        column->addWidget(value);
    }
}

void RunDetailPopover::openBeside(const QRect& anchor) {
    const QScreen* screen = QGuiApplication::screenAt(anchor.center());
    const QRect room = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
    resize(width(), std::min(sizeHint().height(), room.height()));
    const bool isBelow = anchor.bottom() + spacing::small + height() <= room.bottom();
    const int y = isBelow ? anchor.bottom() + spacing::tight
                          : std::max(room.top(), anchor.top() - spacing::tight - height());
    const int x =
        std::clamp(anchor.left(), room.left(), std::max(room.left(), room.right() - width()));
    move(x, y);
    show();
}

} // namespace ombrel
