#pragma once

#include <QFrame>

namespace ombrel {

class ElidedLabel;

// A short text that can be taken away.
class Chip final : public QFrame {
    Q_OBJECT

  public:
    // `name` is the object name; the button that removes it has ".remove" after it.
    Chip(const QString& name, const QString& text, bool isRemovable, QWidget* parent = nullptr);
    QString text() const;

  Q_SIGNALS:
    void removed();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    ElidedLabel* m_label;
};

} // namespace ombrel
