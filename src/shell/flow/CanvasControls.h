#pragma once

#include <QFrame>
#include <QString>

class QLabel;

namespace ombrel {

// Zoom, fit, reset and tidy up, at the foot of the canvas.
class CanvasControls final : public QFrame {
    Q_OBJECT

  public:
    explicit CanvasControls(QWidget* parent = nullptr);
    void setReadout(const QString& text);

  Q_SIGNALS:
    void zoomOutAsked();
    void zoomInAsked();
    void fitAsked();
    void resetAsked();
    void tidyAsked();

  private:
    QLabel* m_readout;
};

} // namespace ombrel
