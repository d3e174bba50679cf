#include "shell/flow/RunBanner.h"

#include "flows/FlowEditorTexts.h"
#include "flows/RunHighlight.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>

namespace ombrel {

RunBanner::RunBanner(QWidget* parent)
    : QFrame(parent), m_icon(new IconView(QStringLiteral("play"), Tone::accent, spacing::icon)),
      m_text(new TextLabel({}, TextRole::strong)) {
    named(this, QStringLiteral("canvas.banner"), tr("Run path"));
    setProperty("card", "true");
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(spacing::medium, spacing::hair, spacing::tight, spacing::hair);
    row->setSpacing(spacing::small);
    row->addWidget(m_icon);
    m_text->setObjectName(QStringLiteral("canvas.banner.text"));
    row->addWidget(m_text);
    auto* clear = named(makeButton(tr("Clear"), ButtonKind::plain),
                        QStringLiteral("canvas.banner.clear"), tr("Clear"));
    clear->setToolTip(toQt(clearRunPathHelp));
    connect(clear, &QPushButton::clicked, this, &RunBanner::clearAsked);
    row->addWidget(clear);
    hide();
}

void RunBanner::showHighlight(const FlowRunHighlight& highlight) {
    m_text->setText(toQt(bannerText(highlight)));
    if (highlight.isLive) {
        m_icon->setIcon(QStringLiteral("play"), Tone::accent);
    } else if (highlight.succeeded.value_or(false)) {
        m_icon->setIcon(QStringLiteral("check-circle"), Tone::success);
    } else {
        m_icon->setIcon(QStringLiteral("x-circle"), Tone::danger);
    }
}

} // namespace ombrel
