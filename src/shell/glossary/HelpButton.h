#pragma once

#include "shell/glossary/GlossaryTopic.h"

#include <QToolButton>

namespace ombrel {

// A small "?" that explains what it stands beside. The object name is "help." and the topic's name
// in the code.
class HelpButton final : public QToolButton {
    Q_OBJECT

  public:
    explicit HelpButton(GlossaryTopic topic, QWidget* parent = nullptr);
    GlossaryTopic topic() const { return m_topic; }
    // Whether the explanation is open.
    bool isPresented() const { return m_isPresented; }

  private:
    void present();

    GlossaryTopic m_topic;
    bool m_isPresented = false;
};

} // namespace ombrel
