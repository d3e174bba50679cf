#pragma once

#include <QToolButton>

#include <functional>

namespace ombrel {

// A small "?" that explains what it stands beside. `show` is told the button, to place the
// explanation at it.
class HelpButton final : public QToolButton {
    Q_OBJECT

  public:
    HelpButton(const QString& what, std::function<void(QWidget* anchor)> show,
               QWidget* parent = nullptr);
};

} // namespace ombrel
