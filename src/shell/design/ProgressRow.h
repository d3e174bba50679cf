#pragma once

#include <QFrame>

#include <cstdint>

class QHBoxLayout;
class QProgressBar;

namespace ombrel {

class ElidedLabel;

// How far a piece of long work is: what it does, and a bar.
class ProgressRow final : public QFrame {
    Q_OBJECT

  public:
    explicit ProgressRow(QWidget* parent = nullptr);
    QString text() const;
    // A total of 0: nobody knows how much there is.
    void setProgress(const QString& text, std::int64_t completed, std::int64_t total);
    // Puts a control, such as a button that ends the work, at its end.
    void addAction(QWidget* control);

  private:
    QHBoxLayout* m_row;
    ElidedLabel* m_text;
    QProgressBar* m_bar;
};

} // namespace ombrel
