#pragma once

#include "shell/glossary/GlossaryTopic.h"

#include <QWidget>

#include <memory>

namespace ombrel {

class Diagram;

// The drawing of a topic.
class TopicDiagram final : public QWidget {
    Q_OBJECT

  public:
    explicit TopicDiagram(GlossaryTopic topic, QWidget* parent = nullptr);
    ~TopicDiagram() override;
    GlossaryTopic topic() const { return m_topic; }

    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    GlossaryTopic m_topic;
    std::unique_ptr<Diagram> m_diagram;
};

} // namespace ombrel
