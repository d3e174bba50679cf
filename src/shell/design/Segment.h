#pragma once

#include <QAbstractButton>

namespace ombrel {

// One of the choices of a SegmentedControl, which makes them.
class Segment final : public QAbstractButton {
    Q_OBJECT

  public:
    Segment(const QString& text, const QString& iconName, bool isTab, QWidget* parent);
    void setIconShown(bool shown);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

  private:
    int contentWidth() const;

    bool m_isTab;
    bool m_showsIcon;
};

} // namespace ombrel
