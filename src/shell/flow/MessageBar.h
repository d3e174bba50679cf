#pragma once

#include "shell/StateView.h"

#include <memory>

class QPushButton;

namespace ombrel {

class TextField;
class TextLabel;

// Where the user writes the next message of a conversational flow.
class MessageBar final : public StateView {
    Q_OBJECT

  public:
    MessageBar(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);

  Q_SIGNALS:
    void sent(const QString& draft);

  protected:
    void refresh() override;

  private:
    void send();

    Uuid m_flowID;
    TextField* m_draft;
    TextLabel* m_promptSize;
    QPushButton* m_send;
};

} // namespace ombrel
