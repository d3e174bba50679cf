#include "shell/ModelInstallDialog.h"

#include "shell/ModelInstaller.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/FactList.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QUrl>
#include <QVBoxLayout>

namespace ombrel {

void ModelInstallDialog::show(StudioServices& services, QWidget* over) {
    auto* dialog = over->findChild<ModelInstallDialog*>(QStringLiteral("modelInstall"));
    if (!dialog) {
        dialog = new ModelInstallDialog(services, over);
        dialog->open();
    }
    dialog->raise();
    dialog->activateWindow();
}

ModelInstallDialog::ModelInstallDialog(StudioServices& services, QWidget* over)
    : QDialog(over), m_services(services), m_problem(new Banner(Tone::danger)),
      m_success(new Banner(Tone::success)),
      m_step((new TextLabel({}, TextRole::body, TextLabel::Ink::secondary))->wrapping()),
      m_bar(named(new QProgressBar, QStringLiteral("modelInstall.progress"), tr("Progress"))),
      m_log(named(new QPlainTextEdit, QStringLiteral("modelInstall.log"), tr("Details"))),
      m_details(named(makeButton(tr("Show Details"), ButtonKind::plain),
                      QStringLiteral("modelInstall.details"), tr("Show Details"))),
      m_folder(named(makeButton(tr("Open Models Folder")), QStringLiteral("modelInstall.folder"),
                     tr("Open Models Folder"))),
      m_close(named(makeButton(tr("Close")), QStringLiteral("modelInstall.close"), tr("Close"))),
      m_go(named(makeButton(tr("Install"), ButtonKind::primary), QStringLiteral("modelInstall.go"),
                 tr("Install"))) {
    setObjectName(QStringLiteral("modelInstall"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Install Models"));
    setAccessibleName(windowTitle());
    setMinimumWidth(520);
    m_problem->setObjectName(QStringLiteral("modelInstall.problem"));
    m_success->setObjectName(QStringLiteral("modelInstall.success"));
    m_step->setObjectName(QStringLiteral("modelInstall.step"));
    m_bar->setTextVisible(false);
    m_log->setReadOnly(true);
    m_log->setFont(Theme::current().font(TextRole::code));
    m_log->setMinimumHeight(160);
    m_log->setTabChangesFocus(true);
    m_log->hide();
    m_details->setCheckable(true);
    m_go->setDefault(true);

    auto* facts = new FactList;
    facts->setFact(QStringLiteral("language"), tr("Language model"),
                   tr("A small starter: it shows that everything works"));
    facts->setFact(QStringLiteral("embedding"), tr("Embedding model"),
                   tr("English sentences as vectors"));
    facts->setFact(QStringLiteral("server"), tr("Model server"),
                   tr("Built for this machine, which takes some minutes"));
    facts->setFact(QStringLiteral("download"), tr("Download"), tr("About 215 MB, once"));
    facts->setFact(QStringLiteral("folder"), tr("Models folder"),
                   toQt(services.serviceSettings().modelsPath()));

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::medium);
    column->addWidget(new TextLabel(tr("Install models on this machine"), TextRole::heading));
    column->addWidget(
        (new TextLabel(tr("Answers, contextual notes and test questions come from models that run "
                          "here. After the download nothing needs a network, and nothing that you "
                          "add leaves this machine."),
                       TextRole::body, TextLabel::Ink::secondary))
            ->wrapping());
    column->addWidget(facts);
    column->addWidget(m_problem);
    column->addWidget(m_success);
    column->addWidget(m_step);
    column->addWidget(m_bar);
    column->addWidget(m_log, 1);
    column->addStretch(0);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    buttons->addWidget(m_details);
    buttons->addStretch(1);
    buttons->addWidget(m_folder);
    buttons->addWidget(m_close);
    buttons->addWidget(m_go);
    column->addLayout(buttons);

    ModelInstaller& installer = services.modelInstaller();
    connect(&installer, &ModelInstaller::changed, this, &ModelInstallDialog::update);
    connect(m_details, &QPushButton::toggled, this, &ModelInstallDialog::update);
    connect(m_close, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_folder, &QPushButton::clicked, this, [this] {
        QDesktopServices::openUrl(
            QUrl::fromLocalFile(toQt(m_services.serviceSettings().modelsPath())));
    });
    connect(m_go, &QPushButton::clicked, this, [this, &installer] {
        switch (installer.state()) {
        case ModelInstaller::State::running:
            installer.stop();
            break;
        case ModelInstaller::State::succeeded:
            accept();
            break;
        case ModelInstaller::State::idle:
        case ModelInstaller::State::failed:
        case ModelInstaller::State::stopped:
            installer.start();
            break;
        }
    });
    update();
}

void ModelInstallDialog::update() {
    using State = ModelInstaller::State;
    const ModelInstaller& installer = m_services.modelInstaller();
    const State state = installer.state();
    const bool isRunning = state == State::running;
    m_problem->showOrHide(installer.problem());
    m_success->showOrHide(
        state == State::succeeded
            ? tr("The models are installed. For better answers, put the .gguf file of a larger "
                 "model into the models folder.")
            : QString());
    m_step->setText(state == State::stopped
                        ? tr("Stopped. It goes on where it was when you start it again.")
                        : installer.step());
    m_step->setVisible(isRunning || state == State::stopped);
    m_bar->setVisible(isRunning);
    m_bar->setRange(0, installer.percent() ? 100 : 0);
    m_bar->setValue(installer.percent().value_or(0));
    m_details->setVisible(!installer.log().isEmpty());
    m_details->setText(m_details->isChecked() ? tr("Hide Details") : tr("Show Details"));
    m_log->setVisible(m_details->isChecked() && !installer.log().isEmpty());
    if (m_log->toPlainText() != installer.log()) {
        m_log->setPlainText(installer.log());
        m_log->verticalScrollBar()->setValue(m_log->verticalScrollBar()->maximum());
    }
    m_folder->setVisible(state == State::succeeded);
    m_close->setVisible(state != State::succeeded);
    m_close->setText(isRunning ? tr("Run in Background") : tr("Close"));
    const QString go = [state] {
        switch (state) {
        case State::idle:
            break;
        case State::running:
            return tr("Stop");
        case State::succeeded:
            return tr("Done");
        case State::failed:
            return tr("Try Again");
        case State::stopped:
            return tr("Continue");
        }
        return tr("Install");
    }();
    m_go->setText(go);
    m_go->setAccessibleName(go);
    m_close->setAccessibleName(m_close->text());
}

} // namespace ombrel
