#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace ombrel {

// Tells, in the event loop, that the program was asked to end (SIGTERM, SIGINT, SIGHUP). One a
// process.
class TerminationSignals final : public QObject {
    Q_OBJECT

  public:
    explicit TerminationSignals(std::function<void()> asked);
    ~TerminationSignals() override;

  private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace ombrel
