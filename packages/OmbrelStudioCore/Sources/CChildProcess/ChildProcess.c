#include "ChildProcess.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

static volatile sig_atomic_t childGroup;
static volatile sig_atomic_t childSignal;

static const int endingSignals[] = {SIGTERM, SIGINT, SIGHUP};
enum { endingSignalCount = sizeof endingSignals / sizeof *endingSignals };

// Takes the child along, and then does what the signal would have done.
static void endWithChild(int number) {
    const pid_t group = childGroup;
    if (group > 0) {
        kill(-group, childSignal);
    }
    signal(number, SIG_DFL);
    raise(number);
}

static void becomeProgram(const char *path, char *const arguments[], int outputToError,
                          int endSignal, pid_t parent, const sigset_t *mask, int failure) {
    setpgid(0, 0);
#ifdef __linux__
    prctl(PR_SET_PDEATHSIG, endSignal);
    if (getppid() != parent) {
        _exit(127);
    }
#else
    (void)parent;
    (void)endSignal;
#endif
    for (int i = 0; i < endingSignalCount; ++i) {
        signal(endingSignals[i], SIG_DFL);
    }
    sigprocmask(SIG_SETMASK, mask, NULL);
    if (!outputToError || dup2(STDERR_FILENO, STDOUT_FILENO) >= 0) {
        execv(path, arguments);
    }
    const int error = errno;
    (void)!write(failure, &error, sizeof error);
    _exit(127);
}

int childProcessRun(const char *path, char *const arguments[], int outputToError, int endSignal) {
    int failure[2];
    if (pipe(failure) != 0) {
        return -1;
    }
    fcntl(failure[0], F_SETFD, FD_CLOEXEC);
    fcntl(failure[1], F_SETFD, FD_CLOEXEC);

    // No signal may come between the start of the child and our knowing it.
    sigset_t ending, before;
    sigemptyset(&ending);
    for (int i = 0; i < endingSignalCount; ++i) {
        sigaddset(&ending, endingSignals[i]);
    }
    sigprocmask(SIG_BLOCK, &ending, &before);
    // Whoever started us may have held them back, and then they would never come.
    for (int i = 0; i < endingSignalCount; ++i) {
        sigdelset(&before, endingSignals[i]);
    }
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        becomeProgram(path, arguments, outputToError, endSignal, parent, &before, failure[1]);
    }
    int startError = child < 0 ? errno : 0;
    if (child > 0) {
        setpgid(child, child);
        childSignal = endSignal;
        childGroup = child;
        for (int i = 0; i < endingSignalCount; ++i) {
            signal(endingSignals[i], endWithChild);
        }
    }
    sigprocmask(SIG_SETMASK, &before, NULL);
    close(failure[1]);

    int status = -1;
    if (child > 0) {
        // Ends at the exec, or brings the reason why there was none.
        ssize_t count;
        do {
            count = read(failure[0], &startError, sizeof startError);
        } while (count < 0 && errno == EINTR);
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        childGroup = 0;
        if (startError != 0) {
            status = -1;
        }
    }
    close(failure[0]);
    errno = startError;
    return status;
}
