#pragma once

#include <QFrame>

class QLabel;

namespace ombrel {

// A short piece of Swift in colours, to be read, selected and copied.
class SwiftCodeView final : public QFrame {
    Q_OBJECT
    Q_PROPERTY(QString text READ text WRITE setText)

  public:
    explicit SwiftCodeView(QWidget* parent = nullptr);
    QString text() const { return m_text; }
    void setText(const QString& text);

  private:
    void showColored();

    QString m_text;
    QLabel* m_label;
};

} // namespace ombrel
