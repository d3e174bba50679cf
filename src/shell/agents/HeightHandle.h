#pragma once

#include <QWidget>

namespace ombrel {

// Changes the height of the widget above it: dragged, or with the arrow keys.
class HeightHandle final : public QWidget {
    Q_OBJECT

  public:
    HeightHandle(QWidget* target, int height, int least, int most, QWidget* parent = nullptr);

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void setTargetHeight(int height);

    QWidget* m_target;
    int m_least;
    int m_most;
    int m_dragStartHeight = 0;
    int m_dragStartY = 0;
};

} // namespace ombrel
