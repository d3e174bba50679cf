#pragma once

#include <QPlainTextEdit>

namespace ombrel {

// A text of any length to be read, selected and copied, in a fixed pitch unless told otherwise. It
// scrolls inside.
class LongTextView final : public QPlainTextEdit {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)

  public:
    explicit LongTextView(QWidget* parent = nullptr);
    QString text() const { return m_text; }
    // Does nothing when it is what is shown.
    void setText(const QString& text);

  private:
    void applyTheme();

    QString m_text;
};

} // namespace ombrel
