#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace ombrel {

// A window's stack of undo actions. There is no redo: performing an action leaves none behind.
// Main thread only.
class UndoManager {
  public:
    void registerUndo(std::function<void()> action);
    bool canUndo() const { return !m_actions.empty(); }
    bool canRedo() const { return false; }
    // Takes the newest action off the stack and performs it; does nothing on an empty stack.
    void undo();
    std::size_t count() const { return m_actions.size(); }
    void removeAllActions();
    // Called after each change of the stack.
    void setChanged(std::function<void()> changed) { m_changed = std::move(changed); }

  private:
    std::vector<std::function<void()>> m_actions;
    std::function<void()> m_changed;
};

} // namespace ombrel
