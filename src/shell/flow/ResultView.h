#pragma once

#include <QFrame>

namespace ombrel {

class MessageText;

// The result of a run.
class ResultView final : public QFrame {
    Q_OBJECT

  public:
    explicit ResultView(QWidget* parent = nullptr);
    void setResult(const QString& text);

  private:
    MessageText* m_text;
};

} // namespace ombrel
