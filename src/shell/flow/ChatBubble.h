#pragma once

#include <QWidget>

namespace ombrel {

// The shape around what one side of a chat says.
class ChatBubble final : public QWidget {
    Q_OBJECT

  public:
    enum class Side { user, flow };

    ChatBubble(QWidget* text, Side side, QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Side m_side;
};

} // namespace ombrel
