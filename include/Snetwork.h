// Snetwork: the network functions that sit beside the socket classes.
//
// For now this module holds only Select, the interruptible wait that every
// SSocket wait goes through.  Name resolution (host names, MX lookups) and
// the access lists that admit peers by address, network or domain will join
// it here.
//
// Failure policy: functions return what the system call they wrap returned,
// with errno as that call left it; nothing is printed.
//
// Process-wide effect: Select rewrites the SA_RESTART flag of seven signal
// dispositions around every wait (see below).  Like every other module, it is
// meant for one thread of control.
#ifndef TARNWICK_SNETWORK_H
#define TARNWICK_SNETWORK_H

#include <sys/select.h>

// select(2), made interruptible: before waiting it clears SA_RESTART in the
// dispositions of SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM and
// SIGCHLD, so that a caught signal ends the wait with -1 and errno EINTR;
// afterwards it sets SA_RESTART on all seven, whatever they had before
// (intended: the rest of the program then sees restarting system calls).
// Handlers, masks and the other flags are left as they were.  Clearing skips
// SIG_DFL and SIG_IGN, which end no wait whatever their flags say, and a
// disposition whose flag is already as wanted is not written again: each
// wait costs seven to fourteen sigaction calls on either side.
// Returns what select returned; errno is the one select left.  Linux updates
// *timeout to the time not slept, as select does.
// Known weakness: a signal caught after the flags are cleared but before
// select starts does not end the wait; closing that gap needs pselect and a
// blocked signal mask, which callers of a plain select do not set up.
int Select(int nfds, fd_set* readfds, fd_set* writefds, fd_set* exceptfds,
    struct timeval* timeout);

#endif
