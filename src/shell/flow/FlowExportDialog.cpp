#include "shell/flow/FlowExportDialog.h"

#include "flows/FlowExport.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/LongTextView.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QProgressBar>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

FlowExportDialog::FlowExportDialog(const QString& packageName, std::filesystem::path destination,
                                   QWidget* over)
    : QDialog(over), m_destination(std::move(destination)),
      m_title((new TextLabel(tr("Exporting the flows\u2026"), TextRole::heading))->wrapping()),
      m_message((new TextLabel(tr("The package \u201c%1\u201d is written to %2. The tool that "
                                  "writes it is built first, which can take a minute.")
                                   .arg(packageName, toQt(m_destination)),
                               TextRole::body, TextLabel::Ink::secondary))
                    ->wrapping()
                    ->selectable()),
      m_bar(named(new QProgressBar, QStringLiteral("flowExport.progress"), tr("Progress"))),
      m_output(
          named(new LongTextView, QStringLiteral("flowExport.output"), tr("What the tool wrote"))),
      m_copy(named(makeButton(tr("Copy Output")), QStringLiteral("flowExport.copy"),
                   tr("Copy Output"))),
      m_folder(named(makeButton(tr("Open Folder")), QStringLiteral("flowExport.folder"),
                     tr("Open Folder"))),
      m_background(named(makeButton(tr("Run in Background")),
                         QStringLiteral("flowExport.background"), tr("Run in Background"))),
      m_ok(named(makeButton(tr("OK"), ButtonKind::primary), QStringLiteral("flowExport.ok"),
                 tr("OK"))) {
    setObjectName(QStringLiteral("flowExport"));
    setWindowTitle(tr("Export Package"));
    setAccessibleName(windowTitle());
    m_title->setObjectName(QStringLiteral("flowExport.title"));
    m_message->setObjectName(QStringLiteral("flowExport.message"));
    m_bar->setRange(0, 0);
    m_bar->setTextVisible(false);
    m_output->setMinimumSize(600, 220);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::small);
    column->addWidget(m_title);
    column->addWidget(m_message);
    column->addSpacing(spacing::tight);
    column->addWidget(m_bar);
    column->addWidget(m_output, 1);
    column->addStretch(0);
    column->addSpacing(spacing::small);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    buttons->addWidget(m_copy);
    buttons->addStretch(1);
    buttons->addWidget(m_folder);
    buttons->addWidget(m_background);
    buttons->addWidget(m_ok);
    column->addLayout(buttons);
    for (QWidget* later : {static_cast<QWidget*>(m_output), static_cast<QWidget*>(m_copy),
                           static_cast<QWidget*>(m_folder), static_cast<QWidget*>(m_ok)}) {
        later->hide();
    }
    setMinimumWidth(460);

    connect(m_background, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_copy, &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(m_output->text()); });
    connect(m_folder, &QPushButton::clicked, this,
            [this] { QDesktopServices::openUrl(QUrl::fromLocalFile(toQt(m_destination))); });
}

void FlowExportDialog::showOutcome(const ExportOutcome& outcome) {
    m_isExporting = false;
    setWindowTitle(toQt(outcome.isSuccess ? exportSucceededTitle : exportFailedTitle));
    setAccessibleName(windowTitle());
    m_title->setText(windowTitle());
    m_message->setText(toQt(outcome.message));
    m_bar->hide();
    const bool hasOutput = !outcome.isSuccess && !outcome.rawOutput.empty();
    m_output->setText(hasOutput ? toQt(outcome.rawOutput) : QString());
    m_output->setVisible(hasOutput);
    m_copy->setVisible(hasOutput);
    m_folder->setVisible(outcome.isSuccess);
    m_background->hide();
    m_ok->show();
    m_ok->setDefault(true);
    layout()->activate();
    adjustSize();
    open();
    raise();
    m_ok->setFocus();
    Q_EMIT exportEnded();
}

void FlowExportDialog::done(int result) {
    QDialog::done(result);
    if (!m_isExporting) {
        deleteLater();
    }
}

} // namespace ombrel
