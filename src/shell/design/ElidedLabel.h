#pragma once

#include "shell/design/TextLabel.h"

#include <QWidget>

namespace ombrel {

// One line of text that is cut with "…" where it has no room, and then tells the whole as tooltip.
class ElidedLabel final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)

  public:
    explicit ElidedLabel(const QString& text = {}, TextRole role = TextRole::body,
                         TextLabel::Ink ink = TextLabel::Ink::text, QWidget* parent = nullptr);

    QString text() const { return m_text; }
    void setText(const QString& text);
    void setInk(TextLabel::Ink ink);
    // Which end goes; the right one unless told. For paths, the middle.
    void setElideMode(Qt::TextElideMode mode);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void applyElision();

    QString m_text;
    Qt::TextElideMode m_mode = Qt::ElideRight;
    TextLabel* m_label;
};

} // namespace ombrel
