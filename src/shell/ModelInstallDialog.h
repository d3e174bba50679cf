#pragma once

#include <QDialog>

class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace ombrel {

class Banner;
class StudioServices;
class TextLabel;

// Says what an installation of the default models does, starts it, and follows it. Closing it lets
// the installation go on.
class ModelInstallDialog final : public QDialog {
    Q_OBJECT

  public:
    // Opens it over the window, or brings the one that is open there to the front.
    static void show(StudioServices& services, QWidget* over);

  private:
    ModelInstallDialog(StudioServices& services, QWidget* over);
    void update();

    StudioServices& m_services;
    Banner* m_problem;
    Banner* m_success;
    TextLabel* m_step;
    QProgressBar* m_bar;
    QPlainTextEdit* m_log;
    QPushButton* m_details;
    QPushButton* m_folder;
    QPushButton* m_close;
    QPushButton* m_go;
};

} // namespace ombrel
