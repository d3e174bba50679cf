#pragma once

#include "shell/design/TextLabel.h"

#include <QTextEdit>

namespace ombrel {

// Plain text to be read, selected and copied, as high as it is. Words that are longer than a line
// are broken, which a label can't do.
class WrappedText final : public QTextEdit {
    Q_OBJECT

  public:
    // `ink` is one of text, secondary and danger.
    explicit WrappedText(TextRole role, TextLabel::Ink ink, QWidget* parent = nullptr);
    void setText(const QString& text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

  protected:
    void wheelEvent(QWheelEvent* event) override;
};

} // namespace ombrel
