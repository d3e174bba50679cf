#include "shell/flow/ResultView.h"

#include "shell/design/IconView.h"
#include "shell/design/MessageText.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QHBoxLayout>
#include <QScrollArea>

#include <algorithm>

namespace ombrel {

namespace {

// Grows with the text up to a few lines, and then scrolls.
class GrowingArea final : public QScrollArea {
  public:
    QSize sizeHint() const override {
        const int wanted = widget()->hasHeightForWidth() || widget()->layout()
                               ? widget()->layout()->heightForWidth(viewport()->width())
                               : widget()->sizeHint().height();
        return {QScrollArea::sizeHint().width(), std::clamp(wanted, 20, 120)};
    }
    QSize minimumSizeHint() const override { return {0, 20}; }

  protected:
    void resizeEvent(QResizeEvent* event) override {
        QScrollArea::resizeEvent(event);
        updateGeometry();
    }
};

} // namespace

ResultView::ResultView(QWidget* parentWidget) : QFrame(parentWidget), m_text(new MessageText) {
    setProperty("card", "flat");
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(spacing::medium, spacing::small, spacing::medium, spacing::small);
    row->setSpacing(spacing::small);
    row->addWidget(new IconView(QStringLiteral("check-circle"), Tone::success, spacing::icon), 0,
                   Qt::AlignTop);
    row->addWidget(new TextLabel(tr("Result"), TextRole::strong), 0, Qt::AlignTop);
    auto* area = new GrowingArea;
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* page = new QWidget;
    page->setProperty("page", "true");
    page->setMinimumHeight(1); // it is as high as the text at the width that there is
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_text);
    column->addStretch(1);
    area->setWidget(page);
    area->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    row->addWidget(area, 1);
    m_text->setObjectName(QStringLiteral("debug.trace.result"));
}

void ResultView::setResult(const QString& text) {
    m_text->setText(text);
    updateGeometry();
}

} // namespace ombrel
