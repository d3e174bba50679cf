#pragma once

#include "shell/design/TextLabel.h"
#include "shell/design/Tone.h"

#include <QFrame>

class QHBoxLayout;

namespace ombrel {

class IconView;

// A sentence across a page that says how things stand.
class Banner final : public QFrame {
    Q_OBJECT

  public:
    explicit Banner(Tone tone, const QString& text = {}, QWidget* parent = nullptr);
    QString text() const { return m_text->text(); }
    void setText(const QString& text);
    void setTone(Tone tone);
    // Shows the text, or hides the banner when there is none.
    void showOrHide(const QString& text);
    // Puts a control, such as a button, at its end.
    void addAction(QWidget* control);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Tone m_tone;
    QHBoxLayout* m_row;
    IconView* m_icon;
    TextLabel* m_text;
};

} // namespace ombrel
