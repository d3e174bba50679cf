#pragma once

#include "shell/design/TextLabel.h"

#include <QWidget>

namespace ombrel {

class LongTextView;
class WrappedText;

// A text that was said: as high as it is, to be selected and copied. Words that are longer than a
// line are broken; a text that is very long scrolls inside.
class MessageText final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)

  public:
    explicit MessageText(TextRole role = TextRole::body, TextLabel::Ink ink = TextLabel::Ink::text,
                         QWidget* parent = nullptr);
    QString text() const { return m_text; }
    void setText(const QString& text);
    // How wide it is where nothing makes it wrap.
    int widestLine() const;

  private:
    QString m_text;
    WrappedText* m_short;
    LongTextView* m_long = nullptr; // made when it is needed
};

} // namespace ombrel
