#pragma once

#include <QAbstractButton>

namespace ombrel {

// One of several choices, or one that is on or off, with a line that explains it. Checkable; tiles
// of which one is chosen go into a ChoiceTileGroup. A tile that can't be chosen says why in place
// of its subtitle.
class ChoiceTile final : public QAbstractButton {
    Q_OBJECT

  public:
    enum class Mark {
        radio, // one of several
        check, // on or off
    };

    ChoiceTile(const QString& title, const QString& subtitle, QWidget* parent = nullptr);
    void setMark(Mark mark);
    QString subtitle() const { return m_disabledReason.isEmpty() ? m_subtitle : m_disabledReason; }
    // Empty: it can be chosen.
    void setDisabledReason(const QString& reason);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

  private:
    void paintMark(QPainter& painter, const QRectF& place) const;

    QString m_subtitle;
    QString m_disabledReason;
    Mark m_mark = Mark::radio;
};

} // namespace ombrel
