#include "shell/PreferencesWindow.h"

#include "platform/InstalledModels.h"
#include "shell/ModelSetup.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/SegmentedControl.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QScrollArea>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace ombrel {

namespace {

QFormLayout* makeForm() {
    auto* form = new QFormLayout;
    form->setHorizontalSpacing(spacing::large);
    form->setVerticalSpacing(spacing::small);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    return form;
}

TextLabel* makeLabel(const QString& text) {
    auto* label = new TextLabel(text, TextRole::body, TextLabel::Ink::secondary);
    label->setMinimumWidth(120);
    return label;
}

void fill(QComboBox* box, const std::vector<InstalledModel>& models, const std::string& chosen) {
    box->clear();
    box->addItem(PreferencesWindow::tr("Choose automatically"), QString());
    for (const InstalledModel& model : models) {
        const QString name = toQt(model.file.filename());
        box->addItem(name, name);
    }
    const QString wanted = toQt(chosen);
    if (box->findData(wanted) < 0) {
        box->addItem(PreferencesWindow::tr("%1 (not found)").arg(wanted), wanted);
    }
    box->setCurrentIndex(box->findData(wanted));
}

} // namespace

PreferencesWindow::PreferencesWindow(StudioServices& services) : m_services(services) {
    setObjectName(QStringLiteral("preferences"));
    setWindowTitle(tr("Preferences"));
    m_status = new Banner(Tone::accent);
    m_status->setObjectName(QStringLiteral("preferences.status"));
    m_setup = new ModelSetup(m_services, ModelSetup::Need::both);
    m_problem = new Banner(Tone::danger);
    m_problem->setObjectName(QStringLiteral("preferences.problem"));
    m_save = named(makeButton(tr("Save"), ButtonKind::primary), QStringLiteral("preferences.save"),
                   tr("Save"));
    m_revert = named(makeButton(tr("Revert")), QStringLiteral("preferences.revert"), tr("Revert"));

    auto* page = new QWidget;
    page->setProperty("page", "true");
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::wide);
    column->setSpacing(spacing::large);
    column->addWidget(makeAppearance());
    column->addWidget(m_status);
    column->addWidget(m_setup);
    column->addWidget(makeModel());
    column->addWidget(makeEmbeddings());
    column->addStretch(1);
    auto* area = new QScrollArea;
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setWidget(page);
    auto* buttons = new QHBoxLayout;
    buttons->setContentsMargins(spacing::wide, spacing::medium, spacing::wide, spacing::medium);
    buttons->setSpacing(spacing::small);
    buttons->addWidget(m_problem, 1);
    buttons->addStretch(1);
    buttons->addWidget(m_revert);
    buttons->addWidget(m_save);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    whole->addWidget(area, 1);
    whole->addWidget(makeRule());
    whole->addLayout(buttons);
    resize(640, 760);

    connect(m_save, &QPushButton::clicked, this, &PreferencesWindow::save);
    connect(m_revert, &QPushButton::clicked, this, &PreferencesWindow::showSettings);
    connect(&m_services, &StudioServices::modelStatusChanged, this, &PreferencesWindow::update);
    connect(&m_services, &StudioServices::servicesChanged, this, &PreferencesWindow::update);
    showSettings();
}

QWidget* PreferencesWindow::makeAppearance() {
    auto* card = new Card;
    card->content()->addWidget(new SectionTitle(tr("Appearance")));
    m_appearance =
        named(new SegmentedControl, QStringLiteral("preferences.appearance"), tr("Appearance"));
    m_appearance->add(QStringLiteral("system"), tr("As the desktop"));
    m_appearance->add(QStringLiteral("light"), tr("Light"));
    m_appearance->add(QStringLiteral("dark"), tr("Dark"));
    card->content()->addWidget(m_appearance);
    connect(m_appearance, &SegmentedControl::chosen, this, [this](int index) {
        const auto appearance = rawValues(Appearance{})[static_cast<std::size_t>(index)].value;
        m_services.settings().setAppearance(appearance);
        Theme::current().setAppearance(appearance);
    });
    return card;
}

QLineEdit* PreferencesWindow::addField(QFormLayout* form, const char* name, const QString& label,
                                       const QString& placeholder) {
    auto* field = named(new QLineEdit, QStringLiteral("preferences.") + QLatin1String(name), label);
    field->setPlaceholderText(placeholder);
    form->addRow(makeLabel(label), field);
    connect(field, &QLineEdit::textChanged, this, &PreferencesWindow::update);
    return field;
}

QWidget* PreferencesWindow::makeModel() {
    auto* card = new Card;
    card->content()->addWidget(new SectionTitle(
        tr("Language model"),
        tr("By default the studio starts a model from the models folder on this machine. With the "
           "address of a server of yours, also on this machine, it asks that one.")));
    auto* form = makeForm();
    auto* folderRow = new QWidget;
    auto* row = new QHBoxLayout(folderRow);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing::small);
    m_modelsFolder =
        named(new QLineEdit, QStringLiteral("preferences.modelsFolder"), tr("Models folder"));
    m_modelsFolder->setPlaceholderText(toQt(ServiceSettings{}.modelsPath()));
    auto* choose = named(makeButton(tr("Choose\u2026")), QStringLiteral("preferences.chooseFolder"),
                         tr("Choose models folder"));
    row->addWidget(m_modelsFolder, 1);
    row->addWidget(choose);
    form->addRow(makeLabel(tr("Models folder")), folderRow);
    m_languageModel =
        named(new QComboBox, QStringLiteral("preferences.languageModel"), tr("Language model"));
    form->addRow(makeLabel(tr("Model")), m_languageModel);
    m_contextTokens =
        named(new QSpinBox, QStringLiteral("preferences.contextTokens"), tr("Context tokens"));
    m_contextTokens->setRange(512, 1'048'576);
    m_contextTokens->setSingleStep(1024);
    m_contextTokens->setGroupSeparatorShown(true);
    form->addRow(makeLabel(tr("Context tokens")), m_contextTokens);
    m_serverURL =
        addField(form, "serverURL", tr("Server"), QStringLiteral("http://localhost:11434"));
    m_serverKey = addField(form, "serverKey", tr("Server key"), tr("If it wants one"));
    m_serverKey->setEchoMode(QLineEdit::PasswordEchoOnEdit);
    m_serverModel =
        addField(form, "serverModel", tr("Server model"), tr("The first that it lists"));
    card->content()->addLayout(form);
    connect(m_modelsFolder, &QLineEdit::textChanged, this, &PreferencesWindow::update);
    connect(m_modelsFolder, &QLineEdit::editingFinished, this, &PreferencesWindow::listModels);
    connect(m_languageModel, &QComboBox::currentIndexChanged, this, &PreferencesWindow::update);
    connect(m_contextTokens, &QSpinBox::valueChanged, this, &PreferencesWindow::update);
    connect(choose, &QPushButton::clicked, this, [this] {
        auto* panel =
            new QFileDialog(this, tr("Models folder"), toQt(settingsShown().modelsPath()));
        panel->setObjectName(QStringLiteral("modelsFolderPanel"));
        panel->setAttribute(Qt::WA_DeleteOnClose);
        panel->setFileMode(QFileDialog::Directory);
        connect(panel, &QFileDialog::fileSelected, this, [this](const QString& folder) {
            m_modelsFolder->setText(folder);
            listModels();
        });
        panel->open();
    });
    return card;
}

QWidget* PreferencesWindow::makeEmbeddings() {
    auto* card = new Card;
    card->content()->addWidget(
        new SectionTitle(tr("Embeddings"), tr("What turns chunks and questions into vectors.")));
    auto* form = makeForm();
    m_embeddingModel =
        named(new QComboBox, QStringLiteral("preferences.embeddingModel"), tr("Embedding model"));
    form->addRow(makeLabel(tr("Model")), m_embeddingModel);
    m_embeddingServerURL = addField(form, "embeddingServerURL", tr("Server"),
                                    QStringLiteral("http://localhost:11434"));
    m_embeddingServerKey =
        addField(form, "embeddingServerKey", tr("Server key"), tr("If it wants one"));
    m_embeddingServerKey->setEchoMode(QLineEdit::PasswordEchoOnEdit);
    m_embeddingServerModel =
        addField(form, "embeddingServerModel", tr("Server model"), tr("The first that it lists"));
    card->content()->addLayout(form);
    connect(m_embeddingModel, &QComboBox::currentIndexChanged, this, &PreferencesWindow::update);
    return card;
}

void PreferencesWindow::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    showSettings();
}

void PreferencesWindow::showSettings() {
    const ServiceSettings& settings = m_services.serviceSettings();
    m_appearance->setCurrentIndex(static_cast<int>(Theme::current().appearance()));
    m_modelsFolder->setText(toQt(settings.modelsFolder));
    m_contextTokens->setValue(
        static_cast<int>(std::clamp<std::int64_t>(settings.contextTokens, 512, 1'048'576)));
    m_serverURL->setText(toQt(settings.serverURL));
    m_serverKey->setText(toQt(settings.serverKey));
    m_serverModel->setText(toQt(settings.serverModel));
    m_embeddingServerURL->setText(toQt(settings.embeddingServerURL));
    m_embeddingServerKey->setText(toQt(settings.embeddingServerKey));
    m_embeddingServerModel->setText(toQt(settings.embeddingServerModel));
    const auto models = installedModels(settings.modelsPath());
    fill(m_languageModel, models, settings.languageModel);
    fill(m_embeddingModel, models, settings.embeddingModel);
    const auto& problem = m_services.settingsProblem();
    m_problem->showOrHide(problem ? toQt(problem->message) : QString());
    update();
}

void PreferencesWindow::listModels() {
    const ServiceSettings shown = settingsShown();
    const auto models = installedModels(shown.modelsPath());
    fill(m_languageModel, models, shown.languageModel);
    fill(m_embeddingModel, models, shown.embeddingModel);
}

ServiceSettings PreferencesWindow::settingsShown() const {
    ServiceSettings settings = m_services.serviceSettings();
    settings.modelsFolder = fromQt(m_modelsFolder->text().trimmed());
    settings.languageModel = fromQt(m_languageModel->currentData().toString());
    settings.embeddingModel = fromQt(m_embeddingModel->currentData().toString());
    if (m_contextTokens->value() !=
        std::clamp<std::int64_t>(settings.contextTokens, 512, 1'048'576)) {
        settings.contextTokens = m_contextTokens->value();
    }
    settings.serverURL = fromQt(m_serverURL->text().trimmed());
    settings.serverKey = fromQt(m_serverKey->text());
    settings.serverModel = fromQt(m_serverModel->text().trimmed());
    settings.embeddingServerURL = fromQt(m_embeddingServerURL->text().trimmed());
    settings.embeddingServerKey = fromQt(m_embeddingServerKey->text());
    settings.embeddingServerModel = fromQt(m_embeddingServerModel->text().trimmed());
    return settings;
}

void PreferencesWindow::update() {
    const bool differs = !(settingsShown() == m_services.serviceSettings());
    m_save->setEnabled(differs);
    m_revert->setEnabled(differs);
    const QString& status = m_services.modelStatus();
    m_status->setText(status.isEmpty() ? tr("The language model is ready.") : status);
    m_status->setVisible(!status.isEmpty() || m_setup->missing().isEmpty());
    const bool usesServer = !m_serverURL->text().trimmed().isEmpty();
    m_languageModel->setEnabled(!usesServer);
    m_serverKey->setEnabled(usesServer);
    m_serverModel->setEnabled(usesServer);
    const bool usesEmbeddingServer = !m_embeddingServerURL->text().trimmed().isEmpty();
    m_embeddingModel->setEnabled(!usesEmbeddingServer);
    m_embeddingServerKey->setEnabled(usesEmbeddingServer);
    m_embeddingServerModel->setEnabled(usesEmbeddingServer);
}

void PreferencesWindow::save() {
    const auto saved = m_services.setServiceSettings(settingsShown());
    m_problem->showOrHide(saved ? QString() : toQt(saved.error().message));
    if (saved) {
        showSettings();
    }
}

} // namespace ombrel
