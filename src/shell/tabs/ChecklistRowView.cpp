#include "shell/tabs/ChecklistRowView.h"

#include "shell/QtText.h"
#include "shell/design/IconView.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ombrel {

namespace {

struct Mark {
    const char* icon;
    Tone tone;
    QString word; // for those who don't see the icon
};

Mark markOf(ChecklistRowState state) {
    switch (state) {
    case ChecklistRowState::ok:
        return {"check-circle", Tone::success, ChecklistRowView::tr("in order")};
    case ChecklistRowState::warning:
        return {"alert", Tone::warning, ChecklistRowView::tr("warning")};
    case ChecklistRowState::info:
        break;
    }
    return {"info", Tone::neutral, ChecklistRowView::tr("information")};
}

} // namespace

ChecklistRowView::ChecklistRowView(QWidget* parentWidget)
    : QWidget(parentWidget), m_icon(new IconView(QStringLiteral("info"), Tone::neutral, 18)),
      m_title(new TextLabel({}, TextRole::strong)),
      m_detail((new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary))->wrapping()) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, spacing::tight, 0, spacing::tight);
    row->setSpacing(spacing::medium);
    row->addWidget(m_icon, 0, Qt::AlignTop);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(spacing::hair);
    texts->addWidget(m_title);
    texts->addWidget(m_detail);
    row->addLayout(texts, 1);
    m_title->setObjectName(QStringLiteral("title"));
    m_detail->setObjectName(QStringLiteral("detail"));
}

void ChecklistRowView::setRow(const ChecklistRow& shown) {
    if (m_row == shown) {
        return;
    }
    m_row = shown;
    const Mark mark = markOf(shown.state);
    m_icon->setIcon(QString::fromUtf8(mark.icon), mark.tone);
    m_title->setText(toQt(shown.title));
    m_detail->setText(toQt(shown.detail));
    setProperty("state", toQt(rawValue(shown.state)));
    setAccessibleName(
        QStringLiteral("%1: %2. %3").arg(toQt(shown.title), mark.word, toQt(shown.detail)));
}

} // namespace ombrel
