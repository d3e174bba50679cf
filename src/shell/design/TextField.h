#pragma once

#include <QLineEdit>

namespace ombrel {

// A line of text that shows a value of the workspace. Undo in it is the project's undo; a change
// from outside keeps the cursor where it is. Connect to `edited`, which only the user's typing
// emits.
class TextField final : public QLineEdit {
    Q_OBJECT

  public:
    explicit TextField(const QString& placeholder = {}, QWidget* parent = nullptr);
    // Shows the value of the workspace; does nothing when it is what is shown.
    void showValue(const QString& text);

  Q_SIGNALS:
    void edited(const QString& text);

  protected:
    bool event(QEvent* event) override;
};

} // namespace ombrel
