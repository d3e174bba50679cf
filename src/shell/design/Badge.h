#pragma once

#include "shell/design/Tone.h"

#include <QWidget>

class QPainter;

namespace ombrel {

// A word in a rounded shape of its tone.
class Badge final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)

  public:
    explicit Badge(const QString& text = {}, Tone tone = Tone::neutral, QWidget* parent = nullptr);
    QString text() const { return m_text; }
    Tone tone() const { return m_tone; }
    void setText(const QString& text);
    void setTone(Tone tone);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    // The same for a row of a list, which is drawn.
    static QSize sizeOf(const QString& text);
    static void paint(QPainter& painter, const QRect& place, const QString& text, Tone tone);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString m_text;
    Tone m_tone;
};

} // namespace ombrel
