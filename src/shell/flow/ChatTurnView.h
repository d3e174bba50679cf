#pragma once

#include "flows/Conversation.h"

#include <QWidget>

#include <optional>

class QProgressBar;
class QPushButton;

namespace ombrel {

class ChatBubble;
class LongTextView;

// A message of a chat with its reply below it, and the prompt that was sent for it.
class ChatTurnView final : public QWidget {
    Q_OBJECT

  public:
    // The object names of what is in it begin with "debug.chat." and the turn's number from 0.
    explicit ChatTurnView(int number, QWidget* parent = nullptr);
    void show(const ChatTurn& turn, bool isContextOpen);
    // Where the prompt begins, with the button that opens it.
    int contextTop() const;

  Q_SIGNALS:
    // The user opened or closed the prompt.
    void contextToggled(bool open);

  private:
    std::optional<ChatTurn> m_shown;
    bool m_isContextOpen = false;
    ChatBubble* m_message;
    ChatBubble* m_reply;
    QWidget* m_running;
    QPushButton* m_context;
    LongTextView* m_prompt = nullptr; // as long as it is open
};

} // namespace ombrel
