#pragma once

#include <QAbstractButton>

namespace ombrel {

// One of several choices, with a line that explains it. Checkable; put the tiles of one choice into
// a QButtonGroup. A tile that can't be chosen says why in place of its subtitle.
class ChoiceTile final : public QAbstractButton {
    Q_OBJECT

  public:
    ChoiceTile(const QString& title, const QString& subtitle, QWidget* parent = nullptr);
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
    QString m_subtitle;
    QString m_disabledReason;
};

} // namespace ombrel
