#pragma once

#include <QAbstractButton>

namespace ombrel {

// A dashed frame that says what can be dropped here; pressing it chooses files instead.
class DropHint final : public QAbstractButton {
    Q_OBJECT

  public:
    explicit DropHint(const QString& text, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
};

} // namespace ombrel
