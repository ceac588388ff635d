// SSocketPlus: an SSocket that can also read an exact number of bytes, for
// protocol steps that announce a length instead of ending in a line end.
//
// It adds no fields and no virtual members; Read shares the pending input of
// the line reads, so line reads and counted reads can be mixed freely.
//
// Failure policy: that of SSocket.  Read returns what it got; the flags say
// why it got less.
#ifndef TARNWICK_SSOCKETPLUS_H
#define TARNWICK_SSOCKETPLUS_H

#include "SSocket.h"

class SSocketPlus : public SSocket {
public:
    SSocketPlus(int readFd, int writeFd) : SSocket(readFd, writeFd) { }
    SSocketPlus() : SSocket() { }

    // The next n bytes of input, taken first from pending input, then
    // received, waiting through SelectRead.  Fewer bytes (possibly none, as
    // a defined empty string) at end of input, on a time-out or a signal.  n
    // of 0 or less gives the empty string at once.
    //
    // When the n-th byte falls inside a pending line, the rest of that line
    // goes back to the front of pending input; if that rest is shorter than
    // the end-of-line string it is first joined with the next pending line,
    // so that a split "\r\n" does not come out as a line of its own: with
    // "ab\r\n", "cd\r\n" pending, Read(3) gives "ab\r" and the next line read
    // gives "\ncd\r\n" (intended).
    SString Read(int n);

protected:
    SString _TakePending(int n);
    SString _ReceiveExactly(int n);
};

static_assert(sizeof(SSocketPlus) == sizeof(SSocket), "SSocketPlus adds no fields");

#endif
