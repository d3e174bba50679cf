#pragma once

#include <QFrame>
#include <QVBoxLayout>

namespace ombrel {

// A surface that holds what belongs together.
class Card : public QFrame {
    Q_OBJECT

  public:
    explicit Card(QWidget* parent = nullptr);
    // The column of what it holds.
    QVBoxLayout* content() const { return m_content; }

    // No less than what is in it needs in the width that it has.
    QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    QVBoxLayout* m_content;
};

// A thin line between two parts of a card.
QFrame* makeRule(QWidget* parent = nullptr);

} // namespace ombrel
