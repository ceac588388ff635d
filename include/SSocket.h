// SSocket: the buffered, line-oriented connection with time-outs through
// which the protocol modules read command lines and write replies.
//
// An SSocket wraps one or two descriptors that the caller has already opened
// (one read, one written; the same descriptor twice for a TCP connection).  It
// never opens, accepts or, except in Close, closes anything.  Input is cut
// into lines at the end-of-line string ("\r\n", or "\n" in LF mode); every
// line handed out keeps its end-of-line string.  Output is collected until
// 4096 bytes are pending, then sent; the rest goes out with a later write or
// with Flush.  Every wait for input or for room to write is bounded by a
// time-out and goes through Select (Snetwork.h), so a caught signal ends the
// wait too and counts as a time-out.
//
// Two flags tell the caller why an operation failed:
//   timed out  a wait ran out or was interrupted by a signal.  Every later
//              wait fails at once until ClearTimeOut (or Init).
//   closed     end of input, a failed wait, or Close.  Cleared only by Init.
//              Lines already received are still handed out after it is set.
//
// Every internal step goes through the virtual members (a line read calls
// SelectRead, a list write calls the string write), so a subclass can replace
// any one of them.  The order of the fields and of the virtual members is
// part of the interface: do not reorder.
//
// Failure policy: nothing is printed and nothing is thrown.  Results are 1/0
// as documented and the flags say why.  A failed read leaves every received
// byte pending; a failed write leaves every unsent byte pending.
//
// Choices of this implementation:
//   - Sockets are read with recv and written with send.  A descriptor that is
//     not a socket (a pipe, a terminal, a file) is read with read and written
//     with write instead, so SSocket() works on any standard input/output.
//   - send never blocks and never raises SIGPIPE (MSG_DONTWAIT|MSG_NOSIGNAL):
//     a peer that stops reading therefore makes a write time out instead of
//     hanging, and a vanished peer makes it fail with 0.  recv is done with
//     MSG_DONTWAIT as well.  On non-sockets only the wait is bounded, unless
//     the descriptor was made non-blocking with Unblock, and a pipe without
//     a reader raises SIGPIPE as any write to it does.
//   - A receive or send that finds no data or no room after all (EAGAIN)
//     counts as zero bytes and goes back to waiting.
//   - A descriptor outside 0 .. FD_SETSIZE - 1 cannot be waited on: the wait
//     fails as select would on a bad descriptor (closed flag).
//   - Objects cannot be copied: they own their read buffer.
//
// One object belongs to one thread of control.
#ifndef TARNWICK_SSOCKET_H
#define TARNWICK_SSOCKET_H

#include "SString.h"
#include "SStringList.h"

class SSocket {
public:
    // Both call Init: the descriptors given, or standard input and standard
    // output.
    SSocket(int readFd, int writeFd);
    SSocket();
    SSocket(const SSocket&) = delete;
    SSocket& operator=(const SSocket&) = delete;

    // Frees the read buffer and the pending lists.  Does NOT flush pending
    // output and does NOT close the descriptors.
    virtual ~SSocket();

    // Empties lines, then reads one line through the line-read slot and adds
    // every further complete line already received (no further wait).  A
    // trailing partial line stays pending.  1 with at least one line, 0 (and
    // lines empty) when not even one line could be had.
    virtual int operator>>(SStringList& lines);

    // The next line, with its end-of-line string, in line: 1.  When none can
    // be had (time-out, signal, end of input, closed flag, no memory for the
    // read buffer): 0 and line undefined.  Complete lines already received are
    // handed out without any wait, even after the closed flag is set.  On
    // failure a pending partial line is kept whole for a later read; at end of
    // input a last line without end-of-line string is never handed out by
    // this member (SSocketPlus::Read can still take it).
    virtual int operator>>(SString& line);

    // Writes each item through the string-write slot.  A failed item does not
    // stop the rest.  Returns the result of the last item; 1 for an empty (or
    // undefined) list.
    virtual int operator<<(const SStringList& lines);

    // Queues s.  When 4096 or more bytes are pending, waits for room and sends
    // them, for as long as 4096 or more remain.  1 when fewer than 4096 bytes
    // remain pending (possibly all of them, unsent: only a later write or
    // Flush sends them).  0 when a wait failed (time-out, signal, closed) or
    // send failed; the unsent bytes then stay pending.
    virtual int operator<<(const SString& s);
    // A null text writes nothing but still runs the string write.
    virtual int operator<<(const char* s);
    virtual int operator<<(char c);

    // The timed-out flag (1 or 0).
    virtual int TimedOut() const;

    // Clear (Block) or set (Unblock) O_NONBLOCK on the read descriptor and, if
    // different, the write descriptor.  Nothing when the closed flag is set;
    // a failing fcntl is skipped silently.
    virtual void Block() const;
    virtual void Unblock() const;

    // SO_LINGER with the pair (onOff, seconds) on the read descriptor and, if
    // different, the write descriptor.  Results are ignored.
    virtual void SetLingerOption(int onOff, int seconds) const;

    // Clears the timed-out flag; the closed flag stays.
    virtual void ClearTimeOut();

    // Select "\r\n" (the default) or "\n" as the end-of-line string, both for
    // cutting input into lines and for SSocketPlus::Read's split rule.  In LF
    // mode "A\r\n" is one line, "A\r\n".  Lines already pending are not cut
    // again.
    virtual void SetEolCRLF();
    virtual void SetEolLF();

    // Limit of each wait for input / for room to write.  The value is clamped
    // to 0 .. 100000000 seconds (NaN counts as 0), then split into whole
    // seconds (truncated) and microseconds (truncated); a rounding to 1000000
    // microseconds carries into the seconds.  -5 gives 0 s; 2.5 gives 2 s and
    // 500000 us; 1e9 gives 100000000 s.  A limit of 0 polls.
    virtual void SetReadTimeout(double seconds);
    virtual void SetWriteTimeout(double seconds);

    // One wait for the descriptor to become readable / writable.  1 when it
    // did within the limit.  0 at once when the timed-out flag is set; 0 with
    // the timed-out flag set when the limit ran out or a signal interrupted
    // the wait; 0 with the closed flag set when the wait failed otherwise.
    virtual int SelectRead();
    virtual int SelectWrite();

    // Brings the object to its working state: the descriptors, both flags
    // clear, buffer size 4096, 1800-second time-outs, CRLF mode, both pending
    // lists empty (pending output is dropped, not sent).  Keeps an already
    // allocated read buffer.
    virtual void Init(int readFd, int writeFd);

    // Sends all pending output, waiting for room as often as needed.  1 when
    // nothing remains pending.  With either flag already set nothing is tried
    // and the result is 1 only when nothing was pending.  On failure the
    // unsent bytes stay pending as one item.
    virtual int Flush();

    // Sets the closed flag, then closes the descriptors: once when they are
    // equal, both otherwise.  1 when every close succeeded.  Pending output is
    // NOT flushed: flush first.
    virtual int Close();

protected:
    int _readFd;
    int _writeFd;
    int _readTimeoutSec;
    int _readTimeoutUsec;
    int _writeTimeoutSec;
    int _writeTimeoutUsec;
    const char* _eol;  // "\r\n" or "\n"; static text, not owned
    int _bufferSize;   // read buffer size and output threshold;
                       // fixed once the buffer exists
    int _timedOut;
    int _closed;
    char* _readBuffer;           // allocated on the first read, owned
    SStringList _pendingInput;   // complete lines, then at most one partial line
    SStringList _pendingOutput;  // kept as one text: writes append to it

    // Repeats SelectRead / SelectWrite until it reports ready or a flag is
    // set; 1 when ready with neither flag set.
    int _AwaitInput();
    int _AwaitOutput();
    // One select on fd with the given limit, setting the flags as the
    // Select members document.
    int _Wait(int fd, int forWriting, int seconds, int microseconds);

    // Hands out the first pending line if it is complete: 1 and the line.
    int _ShiftCompleteLine(SString& line);
    // Receives until a line is complete: 1 and the line; 0 when the wait or
    // the receive failed, or at end of input.
    int _ReceiveLine(SString& line);
    // Adds n received bytes to pending input, cut into lines after the
    // partial line before them: 1 and the first line when one is complete.
    int _CutLines(const char* data, int n, SString& line);
    // Pushes each line of data, then the rest as a partial line.
    void _PushPieces(const char* data, int length);
    // The position just behind the first end-of-line string in
    // data[from .. length), or 0 when there is none.
    int _FindEolEnd(const char* data, int from, int length) const;

    // Makes the unsent tail of text (from byte sent on) the only pending
    // output.
    void _KeepUnsent(const SString& text, int sent);

    int _EolLength() const;
    // 1 when s ends with the end-of-line string.
    int _EndsWithEol(const SString& s) const;

    // Receives up to n bytes into buf: the byte count, 0 at end of input, -1
    // on error, NothingYet when nothing was there after all (the caller waits
    // again).
    int _ReceiveSome(char* buf, int n);
    static const int NothingYet = -2;
    // Waits for input and receives up to n bytes into buf: the byte count,
    // or 0 when nothing more can be had (a failed wait, an error, or the end
    // of input, which also sets the closed flag).
    int _Receive(char* buf, int n);
    // Sends as much of data as the descriptor takes now: the byte count, 0
    // when there was no room after all, -1 on error.
    int _SendSome(const char* data, int n);
};

#endif
