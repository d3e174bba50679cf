#include "shell/ModelSetup.h"

#include "platform/LanguageRecognizer.h"
#include "platform/OnDeviceModel.h"
#include "platform/SentenceEmbedder.h"
#include "shell/Application.h"
#include "shell/DocumentWindow.h"
#include "shell/ModelInstallDialog.h"
#include "shell/ModelInstaller.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Named.h"

#include <QTimer>
#include <QVBoxLayout>

namespace ombrel {

namespace {

// The reasons of `ModelAvailability`.
constexpr std::string_view notInstalled = "modelNotInstalled";
constexpr std::string_view notReady = "modelNotReady";
constexpr std::string_view notOnThisMachine = "serverNotOnThisMachine";

} // namespace

ModelSetup::ModelSetup(StudioServices& services, Need need, QWidget* parent)
    : QWidget(parent), m_services(services), m_need(need), m_banner(new Banner(Tone::accent)),
      m_install(named(makeButton(tr("Install Models\u2026")), QStringLiteral("modelSetup.install"),
                      tr("Install Models\u2026"))),
      m_retry(
          named(makeButton(tr("Try Again")), QStringLiteral("modelSetup.retry"), tr("Try Again"))),
      m_preferences(named(makeButton(tr("Preferences\u2026"), ButtonKind::plain),
                          QStringLiteral("modelSetup.preferences"), tr("Preferences\u2026"))),
      m_clock(new QTimer(this)) {
    setObjectName(QStringLiteral("modelSetup"));
    m_banner->setObjectName(QStringLiteral("modelSetup.banner"));
    m_banner->addAction(m_install);
    m_banner->addAction(m_retry);
    m_banner->addAction(m_preferences);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_banner);
    connect(m_install, &QPushButton::clicked, this,
            [this] { ModelInstallDialog::show(m_services, window()); });
    connect(m_retry, &QPushButton::clicked, this, [this] { m_services.makeServicesAnew(); });
    connect(m_preferences, &QPushButton::clicked, this, [this] {
        if (const auto* document = qobject_cast<DocumentWindow*>(window())) {
            document->application().showPreferences();
        }
    });
    connect(&m_services, &StudioServices::servicesChanged, this, &ModelSetup::update);
    connect(&m_services.modelInstaller(), &ModelInstaller::changed, this, &ModelSetup::update);
    m_clock->setInterval(5000);
    connect(m_clock, &QTimer::timeout, this, [this] {
        if (parentWidget() && parentWidget()->isVisible()) {
            update();
        }
    });
    m_clock->start();
    update();
}

void ModelSetup::setNeed(Need need) {
    if (m_need != need) {
        m_need = need;
        update();
    }
}

void ModelSetup::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    update();
}

QString ModelSetup::missing() const {
    const auto reason = m_services.platform().model->availability().unavailableReason;
    if (needsLanguage() && reason) {
        if (*reason == notInstalled) {
            return tr("No language model is installed yet. It writes answers, notes and test "
                      "questions, on this machine.");
        }
        const QString server = toQt(m_services.serviceSettings().serverURL);
        if (*reason == notReady) {
            return tr("The model server at %1 doesn\u2019t answer. Start it, or choose another.")
                .arg(server);
        }
        if (*reason == notOnThisMachine) {
            return tr("The server %1 isn\u2019t on this machine. The studio talks to servers of "
                      "this machine only: choose another.")
                .arg(server);
        }
        return tr("The language model can\u2019t be asked now (%1).").arg(toQt(*reason));
    }
    if (needsEmbeddings() && !m_services.platform().embedder->supports(fallbackLanguage)) {
        const QString server = toQt(m_services.serviceSettings().embeddingServerURL);
        return server.isEmpty()
                   ? tr("No embedding model is installed yet. Vector and Hybrid indexes need one.")
                   : tr("The embedding server at %1 doesn\u2019t answer. Start it, or choose "
                        "another.")
                         .arg(server);
    }
    return {};
}

bool ModelSetup::needsInstallation() const {
    const auto reason = m_services.platform().model->availability().unavailableReason;
    if (needsLanguage() && reason) {
        return *reason == notInstalled;
    }
    return m_services.serviceSettings().embeddingServerURL.empty();
}

void ModelSetup::update() {
    const QString text = missing();
    if (parentWidget() || text.isEmpty()) { // it never becomes a window of its own
        setVisible(!text.isEmpty());
    }
    if (text.isEmpty()) {
        return;
    }
    const ModelInstaller& installer = m_services.modelInstaller();
    const bool installs = needsInstallation();
    if (installs && installer.isRunning()) {
        m_banner->setText(installer.percent()
                              ? tr("Installing models \u2014 %1, %2%")
                                    .arg(installer.step())
                                    .arg(*installer.percent())
                              : tr("Installing models \u2014 %1").arg(installer.step()));
        m_install->setText(tr("Show\u2026"));
    } else {
        m_banner->setText(text);
        m_install->setText(tr("Install Models\u2026"));
    }
    m_install->setAccessibleName(m_install->text());
    m_banner->setTone(installs ? Tone::accent : Tone::warning);
    m_install->setVisible(installs);
    m_retry->setVisible(!installs);
    m_preferences->setVisible(qobject_cast<DocumentWindow*>(window()) &&
                              !(installs && installer.isRunning()));
}

} // namespace ombrel
