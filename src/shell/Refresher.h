#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

namespace ombrel {

// Calls a function soon after changes, once for however many there were, and seldom enough that
// the function takes a small part of the time even when changes never stop.
class Refresher final : public QObject {
    Q_OBJECT

  public:
    Refresher(std::function<void()> refresh, QObject* parent);
    void later();
    void now();

  private:
    std::function<void()> m_refresh;
    QTimer m_timer;
    QElapsedTimer m_sinceLast;
    qint64 m_pause = 0; // ms after the last call
};

} // namespace ombrel
