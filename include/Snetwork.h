// Snetwork: the network functions that sit beside the socket classes.
//
// Select is the interruptible wait that every SSocket wait goes through.
// GetHostByName and GetHostByAddr resolve names and addresses through the C
// library's resolver, so /etc/hosts, DNS and whatever else the system's
// name-service configuration lists are asked, in its order; the account
// directory and the access lists use them.
//
// Failure policy: Select returns what select returned, with errno as it left
// it.  The resolver functions answer a defined empty list when the lookup
// fails, whatever the reason; nothing is printed.
//
// Process-wide effect: Select rewrites the SA_RESTART flag of seven signal
// dispositions around every wait (see below).  Like every other module, it is
// meant for one thread of control.
#ifndef TARNWICK_SNETWORK_H
#define TARNWICK_SNETWORK_H

#include <sys/select.h>

#include "SString.h"
#include "SStringList.h"

// The IPv4 addresses of a host, as dotted quads, in the resolver's order and
// without repeats.  A dotted quad, also in brackets ("[10.1.2.3]"), is its own
// answer without a lookup.  A defined empty list when the name does not
// resolve (an undefined or empty name, a name holding a NUL byte included),
// and for the numeric shorthands that the C library would read as an address
// ("127.1", "0x7f.0.0.1"): no host is named so, and an access list must not
// take such a text for one.
SStringList GetHostByName(const SString& name);

// The host names of an address: the canonical name first, then its aliases,
// without repeats.  Takes an IPv4 dotted quad or an IPv6 address, bare or in
// brackets, and the SMTP literal form "[IPv6:...]".  A defined empty list when
// the text is no address or the address has no name.
SStringList GetHostByAddr(const SString& address);

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
