#pragma once

#include "shell/StateView.h"

#include <memory>
#include <optional>
#include <vector>

class QScrollArea;
class QStackedLayout;
class QVBoxLayout;

namespace ombrel {

class ChatTurnView;

// The chat with a conversational flow, turn by turn. It follows the end, unless the user reads
// further up.
class ChatPage final : public StateView {
    Q_OBJECT

  public:
    ChatPage(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    // Scrolls to the prompt that was opened.
    void showPrompt(const ChatTurnView& turn);

    Uuid m_flowID;
    std::optional<std::size_t> m_expandedContextTurn; // whose prompt is open
    QScrollArea* m_area;
    QVBoxLayout* m_column;
    QStackedLayout* m_stack;
    std::vector<ChatTurnView*> m_turns;
    bool m_follows = true;
};

} // namespace ombrel
