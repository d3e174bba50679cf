#pragma once

#include <QWidget>

namespace ombrel {

class AppState;
class ProgressRow;

// How far the build of the current index is. Hidden while nothing is built.
class BuildProgress final : public QWidget {
    Q_OBJECT

  public:
    explicit BuildProgress(QWidget* parent = nullptr);
    // Shows the current index of the state as it is now.
    void show(const AppState& state);

  private:
    ProgressRow* m_row;
};

} // namespace ombrel
