#pragma once

#include "platform/ServiceSettings.h"

#include <QWidget>

class QComboBox;
class QFormLayout;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace ombrel {

class Banner;
class ModelSetup;
class SegmentedControl;
class StudioServices;

// What the user chooses for all projects: which model answers, where models lie, light or dark.
class PreferencesWindow final : public QWidget {
    Q_OBJECT

  public:
    explicit PreferencesWindow(StudioServices& services);

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    QWidget* makeAppearance();
    QWidget* makeModel();
    QWidget* makeEmbeddings();
    void showSettings();
    ServiceSettings settingsShown() const;
    void listModels();
    void update();
    void save();
    QLineEdit* addField(QFormLayout* form, const char* name, const QString& label,
                        const QString& placeholder);

    StudioServices& m_services;
    SegmentedControl* m_appearance = nullptr;
    Banner* m_status = nullptr;
    ModelSetup* m_setup = nullptr; // in its place while something is missing
    Banner* m_problem = nullptr;
    QLineEdit* m_modelsFolder = nullptr;
    QComboBox* m_languageModel = nullptr;
    QSpinBox* m_contextTokens = nullptr;
    QLineEdit* m_serverURL = nullptr;
    QLineEdit* m_serverKey = nullptr;
    QLineEdit* m_serverModel = nullptr;
    QComboBox* m_embeddingModel = nullptr;
    QLineEdit* m_embeddingServerURL = nullptr;
    QLineEdit* m_embeddingServerKey = nullptr;
    QLineEdit* m_embeddingServerModel = nullptr;
    QPushButton* m_save = nullptr;
    QPushButton* m_revert = nullptr;
};

} // namespace ombrel
