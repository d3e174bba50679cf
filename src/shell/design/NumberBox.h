#pragma once

#include <QSpinBox>

#include <cstdint>

namespace ombrel {

// A whole number that is typed or stepped. The wheel is left to the page.
class NumberBox final : public QSpinBox {
    Q_OBJECT

  public:
    NumberBox(int least, int most, QWidget* parent = nullptr);
    // Shows the value, also one outside of the range; tells nobody.
    void showValue(std::int64_t value);

  Q_SIGNALS:
    // The user changed it. In the range, whatever was shown before.
    void edited(int value);

  protected:
    void wheelEvent(QWheelEvent* event) override;

  private:
    int m_least;
    int m_most;
};

} // namespace ombrel
