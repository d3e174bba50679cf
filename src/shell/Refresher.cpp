#include "shell/Refresher.h"

#include <utility>

namespace ombrel {

Refresher::Refresher(std::function<void()> refresh, QObject* parent)
    : QObject(parent), m_refresh(std::move(refresh)) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Refresher::now);
}

void Refresher::later() {
    if (!m_timer.isActive()) {
        const qint64 passed = m_sinceLast.isValid() ? m_sinceLast.elapsed() : m_pause;
        m_timer.start(static_cast<int>(qBound(qint64{0}, m_pause - passed, qint64{1000})));
    }
}

void Refresher::now() {
    m_timer.stop();
    QElapsedTimer watch;
    watch.start();
    m_refresh();
    m_pause = 4 * watch.elapsed();
    m_sinceLast.start();
}

} // namespace ombrel
