#pragma once

#include "shell/design/Card.h"

class QToolButton;

namespace ombrel {

class ElidedLabel;

// A card of which all but the head can be folded away. The head holds its title, and a summary
// that says the main thing while it is folded.
class FoldingCard final : public Card {
    Q_OBJECT

  public:
    // The object name is `name`, of the button that folds it `name`.toggle, of the summary
    // `name`.summary.
    FoldingCard(const QString& name, const QString& title, QWidget* parent = nullptr);
    // The column of what can be folded away.
    QVBoxLayout* body() const { return m_body; }
    void setTitle(const QString& title);
    void setSummary(const QString& summary);
    bool isExpanded() const { return m_isExpanded; }
    void setExpanded(bool expanded);
    // Puts a control at the end of the head.
    void addControl(QWidget* control);

  private:
    QHBoxLayout* m_head;
    QToolButton* m_toggle;
    ElidedLabel* m_summary;
    QWidget* m_folded;
    QVBoxLayout* m_body;
    bool m_isExpanded = true;
};

} // namespace ombrel
