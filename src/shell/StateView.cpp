#include "shell/StateView.h"

namespace ombrel {

StateView::StateView(std::shared_ptr<AppState> state, QWidget* parent)
    : QWidget(parent), m_state(std::move(state)), m_refresher(new Refresher(
                                                      [this] {
                                                          if (isVisible()) {
                                                              m_isStale = false;
                                                              refresh();
                                                          }
                                                      },
                                                      this)) {}

void StateView::watchIndex() {
    watch(m_state->ragIndexes);
    watch(m_state->selectedRAGIndexID);
}

void StateView::watchSelectedTab() {
    m_subscriptions.push_back(m_state->observeSelectedTab([this] { refreshLater(); }));
}

void StateView::watchNavigatorItem() {
    m_subscriptions.push_back(m_state->observeSelectedNavigatorItem([this] { refreshLater(); }));
}

void StateView::refreshLater() {
    m_isStale = true;
    m_refresher->later();
}

void StateView::spawn(Task<void> task) const {
    m_state->platform().executor->spawn(std::move(task));
}

void StateView::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (m_isStale) {
        m_refresher->now();
    }
}

} // namespace ombrel
