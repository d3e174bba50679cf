#pragma once

#include "shell/glossary/GlossaryTopic.h"

#include <QFrame>

class QScrollArea;

namespace ombrel {

// Explains a topic beside what it is about. A popup: a click elsewhere or Escape closes it, which
// deletes it. The arrow and page keys scroll where it is higher than the screen.
class GlossaryPopoverView final : public QFrame {
    Q_OBJECT

  public:
    explicit GlossaryPopoverView(GlossaryTopic topic, QWidget* parent = nullptr);
    GlossaryTopic topic() const { return m_topic; }
    // Shows it below the anchor, or above where there is more room, all of it on the screen.
    void showAt(const QWidget* anchor);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    GlossaryTopic m_topic;
    QScrollArea* m_area;
};

} // namespace ombrel
