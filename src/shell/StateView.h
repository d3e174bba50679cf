#pragma once

#include "core/AppState.h"
#include "platform/MainExecutor.h"
#include "platform/Task.h"
#include "shell/Refresher.h"

#include <QWidget>

#include <memory>
#include <utility>
#include <vector>

namespace ombrel {

// A part of a window that shows the workspace. It says in its constructor which fields it reads
// (`watch…`); `refresh` then brings it up to date before it is first seen and soon after changes,
// while it can be seen.
class StateView : public QWidget {
    Q_OBJECT

  public:
    explicit StateView(std::shared_ptr<AppState> state, QWidget* parent = nullptr);

    AppState& state() const { return *m_state; }
    const std::shared_ptr<AppState>& sharedState() const { return m_state; }

  protected:
    // Shows the state as it is now. It may be called at any time; it must change only what is
    // different, so that it costs little and leaves the keyboard focus where it is.
    virtual void refresh() = 0;

    template <class T>
    void watch(Observed<T>& field) {
        m_subscriptions.push_back(field.observe([this] { refreshLater(); }));
    }
    // The current RAG index with all that it holds.
    void watchIndex();
    void watchSelectedTab();
    void watchNavigatorItem();

    void refreshLater();
    // Starts long work of the engine, which outlives the view.
    void spawn(Task<void> task) const;

    void showEvent(QShowEvent* event) override;

  private:
    std::shared_ptr<AppState> m_state;
    std::vector<Subscription> m_subscriptions;
    Refresher* m_refresher;
    bool m_isStale = true;
};

} // namespace ombrel
