#include "shell/TerminationSignals.h"

#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

namespace ombrel {

namespace {

// Signal handlers have no other way to find it.
int wakeDescriptor = -1;

void wake(int) {
    const int savedErrno = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wakeDescriptor, &one, sizeof one);
    errno = savedErrno;
}

void handle(void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> asked) {
    wakeDescriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(wakeDescriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [told = std::move(asked)] {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto bytes = read(wakeDescriptor, &count, sizeof count);
        told();
    });
    handle(wake);
}

TerminationSignals::~TerminationSignals() {
    handle(SIG_DFL);
    m_notifier.reset();
    close(wakeDescriptor);
}

} // namespace ombrel
