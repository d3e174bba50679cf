#include "shell/agents/AttachmentRow.h"

#include "shell/QtText.h"
#include "shell/design/ElidedCheckBox.h"
#include "shell/design/Named.h"
#include "shell/design/NumberBox.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QLocale>
#include <QVBoxLayout>

#include <cmath>

namespace ombrel {

namespace {

// The number, if the text is one; also with a comma for the point.
bool isNumber(QString text, double& number) {
    bool isValid = false;
    number = text.trimmed().replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&isValid);
    return isValid && std::isfinite(number);
}

} // namespace

AttachmentRow::AttachmentRow(const QString& name, QWidget* parentWidget)
    : QWidget(parentWidget), m_attached(new ElidedCheckBox),
      m_size(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_settings(new QWidget),
      m_topK(named(new NumberBox(1, 20), name + QStringLiteral(".topK"), tr("Top-k"))),
      m_threshold(named(new TextField, name + QStringLiteral(".threshold"), tr("Threshold"))) {
    setObjectName(name);
    m_attached->setObjectName(name + QStringLiteral(".attached"));
    m_settings->setObjectName(name + QStringLiteral(".settings"));
    m_topK->setToolTip(tr("How many chunks are fetched for each run"));
    m_threshold->setToolTip(tr("The least score that a chunk must reach"));
    m_topK->setFixedWidth(88);
    m_threshold->setFixedWidth(96);
    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::small);
    head->addWidget(m_attached);
    head->addStretch(1);
    head->addWidget(m_size);
    auto* settings = new QHBoxLayout(m_settings);
    settings->setContentsMargins(spacing::wide + spacing::tight, 0, 0, spacing::tight);
    settings->setSpacing(spacing::small);
    settings->addWidget(new TextLabel(tr("Top-k"), TextRole::body, TextLabel::Ink::secondary));
    settings->addWidget(m_topK);
    settings->addSpacing(spacing::medium);
    settings->addWidget(new TextLabel(tr("Threshold"), TextRole::body, TextLabel::Ink::secondary));
    settings->addWidget(m_threshold);
    settings->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::tight);
    column->addLayout(head);
    column->addWidget(m_settings);

    connect(m_attached, &QCheckBox::clicked, this, &AttachmentRow::attachedChanged);
    connect(m_topK, &NumberBox::edited, this, &AttachmentRow::topKChanged);
    connect(m_threshold, &TextField::edited, this, [this](const QString& text) {
        double number = 0;
        if (isNumber(text, number)) {
            Q_EMIT thresholdChanged(number);
        }
    });
    connect(m_threshold, &QLineEdit::editingFinished, this,
            [this] { m_threshold->showValue(m_thresholdText); });
}

void AttachmentRow::showIndex(const RAGIndex& index, const AgentRAGAttachment* attachment) {
    m_attached->setName(toQt(index.name));
    m_attached->setChecked(attachment);
    std::int64_t chunks = 0;
    for (const SourceDocument& source : index.sources) {
        chunks += source.chunkCount;
    }
    m_size->setText(chunks == 1 ? tr("1 chunk") : tr("%1 chunks").arg(numberText(chunks)));
    m_settings->setVisible(attachment);
    if (!attachment) {
        return;
    }
    m_topK->showValue(attachment->topK);
    m_thresholdText = QString::number(attachment->threshold, 'g', QLocale::FloatingPointShortest);
    double typed = 0;
    const bool isWhatIsTyped =
        isNumber(m_threshold->text(), typed) && typed == attachment->threshold;
    if (!m_threshold->hasFocus() || !isWhatIsTyped) {
        m_threshold->showValue(m_thresholdText);
    }
}

} // namespace ombrel
