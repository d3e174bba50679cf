#include "shell/flow/CanvasControls.h"

#include "shell/design/Button.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>

namespace ombrel {

CanvasControls::CanvasControls(QWidget* parent)
    : QFrame(parent), m_readout(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)) {
    named(this, QStringLiteral("canvas.controls"), tr("View"));
    setProperty("card", "true");
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(spacing::tight, spacing::tight, spacing::tight, spacing::tight);
    row->setSpacing(spacing::hair);
    const auto add = [&](const char* icon, const char* name, const QString& what, auto signal) {
        auto* button = makeIconButton(QLatin1String(icon), what);
        button->setObjectName(QStringLiteral("canvas.") + QLatin1String(name));
        connect(button, &QToolButton::clicked, this, signal);
        row->addWidget(button);
    };
    add("minus", "zoomOut", tr("Zoom out"), &CanvasControls::zoomOutAsked);
    named(m_readout, QStringLiteral("canvas.readout"), tr("Zoom"));
    m_readout->setAlignment(Qt::AlignCenter);
    m_readout->setMinimumWidth(44);
    row->addWidget(m_readout);
    add("plus", "zoomIn", tr("Zoom in"), &CanvasControls::zoomInAsked);
    add("fit", "fit", tr("Show the whole flow (F)"), &CanvasControls::fitAsked);
    add("reset-view", "reset", tr("Reset zoom and pan"), &CanvasControls::resetAsked);
    add("tidy", "tidy", tr("Tidy up: arrange the nodes in columns from Start"),
        &CanvasControls::tidyAsked);
}

void CanvasControls::setReadout(const QString& text) {
    m_readout->setText(text);
}

} // namespace ombrel
