#pragma once

#include <QWidget>

namespace ombrel {

class SwiftSourceEditor;

// The numbers beside the lines of an editor, which draws them.
class LineNumbers final : public QWidget {
    Q_OBJECT

  public:
    explicit LineNumbers(SwiftSourceEditor* editor);

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    SwiftSourceEditor* m_editor;
};

} // namespace ombrel
