#pragma once

#include <QSlider>

namespace ombrel {

// A slider over real numbers. The pointer gives it any number of the range, without steps; the keys
// go to the multiples of a step: arrows to the next, page keys ten further, Home and End to the
// ends. A press beside the handle takes it there. The wheel is left to the page.
class ValueSlider final : public QSlider {
    Q_OBJECT

  public:
    ValueSlider(double least, double most, double keyStep, QWidget* parent = nullptr);
    double shownValue() const { return m_value; }
    // Tells nobody. A value outside of the range shows at its end.
    void showValue(double value);
    // The value as words, for screen readers.
    void setValueText(const QString& text);

  Q_SIGNALS:
    // The user moved it.
    void moved(double value);

  protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    void moveTo(double value);

    double m_least;
    double m_most;
    double m_keyStep;
    double m_value;
};

} // namespace ombrel
