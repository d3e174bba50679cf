#include "core/UndoManager.h"

#include <utility>

namespace ombrel {

void UndoManager::registerUndo(std::function<void()> action) {
    m_actions.push_back(std::move(action));
    if (m_changed) {
        m_changed();
    }
}

void UndoManager::undo() {
    if (m_actions.empty()) {
        return;
    }
    const auto action = std::move(m_actions.back());
    m_actions.pop_back();
    action();
    if (m_changed) {
        m_changed();
    }
}

void UndoManager::removeAllActions() {
    m_actions.clear();
    if (m_changed) {
        m_changed();
    }
}

} // namespace ombrel
