#pragma once

#include <QPlainTextEdit>

namespace ombrel {

// Lines of text that show a value of the workspace; see TextField. Tab leaves it.
class TextArea final : public QPlainTextEdit {
    Q_OBJECT

  public:
    explicit TextArea(const QString& placeholder = {}, QWidget* parent = nullptr);
    void showValue(const QString& text);

  Q_SIGNALS:
    void edited(const QString& text);

  protected:
    bool event(QEvent* event) override;

  private:
    bool m_isShowing = false;
};

} // namespace ombrel
