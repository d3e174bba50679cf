#pragma once

#include "flows/CanvasView.h"
#include "shell/flow/CanvasScene.h"

#include <QWidget>

namespace ombrel {

// The whole drawing in small, with a frame around what the canvas shows. A click or drag shows
// what lies there.
class FlowMinimap final : public QWidget {
    Q_OBJECT

  public:
    // How many nodes a flow has that is worth a map.
    static constexpr std::size_t fewestNodes = 30;

    explicit FlowMinimap(const CanvasScene& scene, QWidget* parent = nullptr);
    // What of the canvas is seen, in its own units.
    void setSeen(const QRectF& seen);
    void sceneChanged();

  Q_SIGNALS:
    void asked(const QPointF& centre);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

  private:
    QTransform transform() const;
    void ask(QPointF at);

    const CanvasScene& m_scene;
    QRectF m_bounds; // of the drawing
    QRectF m_seen;
    QPixmap m_picture; // of the drawing
};

} // namespace ombrel
