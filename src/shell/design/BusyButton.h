#pragma once

#include "shell/design/Button.h"

namespace ombrel {

class Spinner;

// A push button that starts work, and shows a spinner in place of its label while that goes on.
class BusyButton final : public QPushButton {
    Q_OBJECT

  public:
    BusyButton(const QString& text, ButtonKind kind, QWidget* parent = nullptr);
    void setBusy(bool busy);
    bool isBusy() const { return m_isBusy; }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    QString m_label;
    QIcon m_icon;
    Spinner* m_spinner;
    bool m_isBusy = false;
};

} // namespace ombrel
