#pragma once

#include <QWidget>

namespace ombrel {

// The upper edge of the debug area: dragging it, or the arrow keys while it has the keyboard,
// change the area's height.
class DebugAreaHandle final : public QWidget {
    Q_OBJECT

  public:
    explicit DebugAreaHandle(QWidget* parent = nullptr);

  Q_SIGNALS:
    // By how many pixels it went up since it was last told.
    void movedUp(int pixels);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    int m_grip = 0; // where it was taken
};

} // namespace ombrel
