#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <chrono>
#include <functional>

namespace ombrel::test {

// Runs Qt's event loop until the condition holds. False when that takes suspiciously long.
inline bool waitUntil(const std::function<bool()>& condition,
                      std::chrono::milliseconds suspicious = std::chrono::minutes(1)) {
    QElapsedTimer watch;
    watch.start();
    while (!condition()) {
        if (watch.hasExpired(suspicious.count())) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

} // namespace ombrel::test
