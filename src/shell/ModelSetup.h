#pragma once

#include <QWidget>

class QPushButton;
class QTimer;

namespace ombrel {

class Banner;
class StudioServices;

// Says what is missing before the models can be asked, with the buttons that mend it: installing
// the default models, the preferences, or trying a server again. Hidden while nothing is missing.
// Put one on every page whose work needs a model.
class ModelSetup final : public QWidget {
    Q_OBJECT

  public:
    enum class Need {
        language,   // a page that asks the language model
        embeddings, // one that computes vectors
        both,
    };

    ModelSetup(StudioServices& services, Need need, QWidget* parent = nullptr);
    void setNeed(Need need);

    // What is missing, as a sentence; empty when nothing is.
    QString missing() const;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    bool needsInstallation() const;
    bool needsLanguage() const { return m_need != Need::embeddings; }
    bool needsEmbeddings() const { return m_need != Need::language; }
    void update();

    StudioServices& m_services;
    Need m_need;
    Banner* m_banner;
    QPushButton* m_install;
    QPushButton* m_retry;
    QPushButton* m_preferences;
    QTimer* m_clock; // a server of the user's comes and goes
};

} // namespace ombrel
