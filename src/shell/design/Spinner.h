#pragma once

#include <QTimer>
#include <QWidget>

namespace ombrel {

// Turns while something goes on of which nobody knows how long it takes.
class Spinner final : public QWidget {
    Q_OBJECT

  public:
    explicit Spinner(int side, QWidget* parent = nullptr);

  protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QTimer m_timer;
    int m_step = 0;
};

} // namespace ombrel
