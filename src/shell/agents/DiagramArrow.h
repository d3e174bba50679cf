#pragma once

#include <QWidget>

namespace ombrel {

// A connector of a diagram: downwards with a head, or a dashed line to the side.
class DiagramArrow final : public QWidget {
    Q_OBJECT

  public:
    explicit DiagramArrow(Qt::Orientation orientation, QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Qt::Orientation m_orientation;
};

} // namespace ombrel
