#pragma once

#include "core/AppState.h"
#include "tests/support/TestPlatform.h"

#include <chrono>
#include <memory>

namespace ombrel::test {

// A workspace on scripted services.
struct Workspace {
    TestPlatform platform = makeTestPlatform();
    std::shared_ptr<AppState> state = AppState::make(platform.platform);

    AppState* operator->() const { return state.get(); }

    void advance(int milliseconds) const {
        platform.executor->advance(std::chrono::milliseconds(milliseconds));
    }
    // Lets a pending checkpoint happen.
    void settle() const { advance(400); }
    // Whether the change schedules a checkpoint.
    template <class Change>
    bool schedules(Change change) const {
        settle();
        change();
        return state->hasPendingCheckpoint();
    }
};

inline NavigatorSelection showsIndex(Uuid id) {
    return {NavigatorSelection::Rag{id}};
}
inline NavigatorSelection showsAgent(Uuid id) {
    return {NavigatorSelection::Agent{id}};
}
inline NavigatorSelection showsTool(Uuid id) {
    return {NavigatorSelection::Tool{id}};
}
inline NavigatorSelection showsFlow(Uuid id) {
    return {NavigatorSelection::Flow{id}};
}

} // namespace ombrel::test
