// Snetwork: network functions beside the socket classes.
#include "Snetwork.h"

#include <cerrno>
#include <csignal>
#include <sys/select.h>

namespace {

// The signals that must be able to end a wait: those a server is told to
// stop, reload or reap children with, and the alarm and broken pipe it may
// use as watchdogs.
const int InterruptingSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD};

// Sets or clears SA_RESTART in each disposition, leaving everything else of
// it as it is.  A disposition is only written when the flag changes, and
// clearing skips SIG_DFL and SIG_IGN, which end no wait whatever their flags
// say: every wait costs system calls, and these are the ones it can spare.
void SetRestart(int on)
{
    for (int sig : InterruptingSignals) {
        struct sigaction action;
        if (sigaction(sig, nullptr, &action) != 0)
            continue;
        int restarts = (action.sa_flags & SA_RESTART) != 0;
        if (restarts == on)
            continue;
        if (on) {
            action.sa_flags |= SA_RESTART;
        } else {
            if (!(action.sa_flags & SA_SIGINFO) && (action.sa_handler == SIG_DFL || action.sa_handler == SIG_IGN))
                continue;
            action.sa_flags &= ~SA_RESTART;
        }
        sigaction(sig, &action, nullptr);
    }
}

}  // namespace

int Select(int nfds, fd_set* readfds, fd_set* writefds, fd_set* exceptfds,
    struct timeval* timeout)
{
    SetRestart(0);
    int result = select(nfds, readfds, writefds, exceptfds, timeout);
    int selectErrno = errno;
    SetRestart(1);
    errno = selectErrno;
    return result;
}
