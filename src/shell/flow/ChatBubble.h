#pragma once

#include <QWidget>

namespace ombrel {

class MessageText;

// What one side of a chat says, in a shape that is no wider than the text.
class ChatBubble final : public QWidget {
    Q_OBJECT

  public:
    enum class Side { user, flow };

    ChatBubble(Side side, const QString& textName, QWidget* parent = nullptr);
    void setText(const QString& text);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    MessageText* m_text;
    Side m_side;
};

} // namespace ombrel
