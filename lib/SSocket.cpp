// SSocket: the buffered line connection with time-outs.
//
// Pending input is a list of complete lines (each with its end-of-line
// string) followed by at most one partial line.  A read hands out the first
// complete line; only when there is none does it receive more, joining the
// partial line with the new bytes before cutting, so that an end-of-line
// string split across two segments is still found.
//
// Pending output is a list of the texts written since the last send; it is
// joined and sent once it holds a full buffer, or by Flush.
#include "SSocket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

#include "Snetwork.h"

namespace {

const char CrLf[] = "\r\n";
const char Lf[] = "\n";
const int BufferSize = 4096;
const double DefaultTimeout = 1800.0;
const double MaxTimeout = 100000000.0;

// Clamps a time-out to 0 .. MaxTimeout and splits it into whole seconds and
// microseconds, both truncated.
void SplitTimeout(double value, int& seconds, int& microseconds)
{
    if (!(value > 0.0))  // NaN too
        value = 0.0;
    if (value > MaxTimeout)
        value = MaxTimeout;
    seconds = static_cast<int>(value);
    microseconds = static_cast<int>((value - seconds) * 1000000.0);
    if (microseconds >= 1000000) {
        ++seconds;
        microseconds = 0;
    }
}

int WouldBlock()
{
    return errno == EAGAIN || errno == EWOULDBLOCK;
}

void SetNonBlocking(int fd, int on)
{
    int flags = fcntl(fd, F_GETFL);
    if (flags == -1)
        return;
    fcntl(fd, F_SETFL, on ? flags | O_NONBLOCK : flags & ~O_NONBLOCK);
}

// Both descriptors, the same one only once.
void SetNonBlocking(int readFd, int writeFd, int on)
{
    SetNonBlocking(readFd, on);
    if (writeFd != readFd)
        SetNonBlocking(writeFd, on);
}

// A copy of data[0, n) whose buffer has room for at least room bytes:
// pending output grows by many small writes until a buffer's worth is sent,
// and room made once spares a reallocation on each of them.
SString WithRoom(const char* data, int n, int room)
{
    if (n >= room)
        return SString(data, n);
    SString text(nullptr, room);
    std::memcpy(text.Resize(n), data, n);  // shortening keeps the buffer
    return text;
}

void SetLinger(int fd, int onOff, int seconds)
{
    struct linger value;
    value.l_onoff = onOff;
    value.l_linger = seconds;
    setsockopt(fd, SOL_SOCKET, SO_LINGER, &value, sizeof value);
}

}  // namespace

SSocket::SSocket(int readFd, int writeFd) : _readBuffer(nullptr)
{
    Init(readFd, writeFd);
}

SSocket::SSocket() : _readBuffer(nullptr)
{
    Init(0, 1);
}

SSocket::~SSocket()
{
    delete[] _readBuffer;
}

void SSocket::Init(int readFd, int writeFd)
{
    _readFd = readFd;
    _writeFd = writeFd;
    _timedOut = 0;
    _closed = 0;
    _bufferSize = BufferSize;
    SetReadTimeout(DefaultTimeout);
    SetWriteTimeout(DefaultTimeout);
    SetEolCRLF();
    _pendingInput.Reset();
    _pendingOutput.Reset();
}

// ---- reading -------------------------------------------------------------

int SSocket::operator>>(SStringList& lines)
{
    lines.Reset();
    SString line;
    if (!(*this >> line))
        return 0;
    lines.Push(line);
    while (_pendingInput.Count() >= 2)
        lines.Push(_pendingInput.Shift());
    if (_pendingInput.Count() == 1 && _EndsWithEol(_pendingInput.Get(0)))
        lines.Push(_pendingInput.Shift());
    return 1;
}

int SSocket::operator>>(SString& line)
{
    // Lines already received come before the closed test, so they are still
    // handed out after end of input.
    if (_ShiftCompleteLine(line))
        return 1;
    if (!_closed && _ReceiveLine(line))
        return 1;
    line = SString();  // only now: an undefined string costs an allocation
    return 0;
}

int SSocket::_ReceiveLine(SString& line)
{
    if (!_readBuffer) {
        _readBuffer = new (std::nothrow) char[_bufferSize];
        if (!_readBuffer)
            return 0;
    }
    for (int n; (n = _Receive(_readBuffer, _bufferSize)) > 0;)
        if (_CutLines(_readBuffer, n, line))
            return 1;
    // Each receive joined the partial line with the new bytes, so what is
    // pending now is at most one partial line, already whole.
    return 0;
}

int SSocket::_ShiftCompleteLine(SString& line)
{
    int count = _pendingInput.Count();
    if (count == 0)
        return 0;
    SString first = _pendingInput.Shift();
    if (count >= 2 || _EndsWithEol(first)) {
        line = first;
        return 1;
    }
    _pendingInput.Push(first);  // the list is empty: this is its front
    return 0;
}

int SSocket::_CutLines(const char* data, int n, SString& line)
{
    int start = 0;
    if (_pendingInput.Count() > 0) {
        // The partial line before is joined with the new bytes up to the
        // first end-of-line string (all of them if there is none), so that
        // one split between two segments is still found.  The rest is cut
        // straight from data: occurrences of the end-of-line string cannot
        // overlap, so cutting there gives the same lines as cutting the
        // whole joined text.
        start = _FindEolEnd(data, 0, n);
        if (start == 0)
            start = n;
        SString text = _pendingInput.Shift();
        text += SString(data, start);
        _PushPieces(text.Data(), text.Length());
    }
    _PushPieces(data + start, n - start);
    return _ShiftCompleteLine(line);
}

void SSocket::_PushPieces(const char* data, int length)
{
    int start = 0;
    for (int end; (end = _FindEolEnd(data, start, length)) > 0; start = end)
        _pendingInput.Push(SString(data + start, end - start));
    if (start < length)
        _pendingInput.Push(SString(data + start, length - start));
}

// The end-of-line string is found by its last byte, with memchr, which is
// much quicker than a general substring search on this short needle.
int SSocket::_FindEolEnd(const char* data, int from, int length) const
{
    int eolLength = _EolLength();
    char last = _eol[eolLength - 1];
    for (int at = from + eolLength - 1; at < length; at++) {
        const void* hit = memchr(data + at, last, length - at);
        if (!hit)
            return 0;
        at = static_cast<const char*>(hit) - data;
        if (memcmp(data + at + 1 - eolLength, _eol, eolLength - 1) == 0)
            return at + 1;
    }
    return 0;
}

// ---- writing -------------------------------------------------------------

int SSocket::operator<<(const SStringList& lines)
{
    int result = 1;
    SStringList rest(lines);  // shifting unshares once: linear, not quadratic
    while (rest.Count() > 0)
        result = (*this << rest.Shift());
    return result;
}

int SSocket::operator<<(const SString& s)
{
    // Pending output is kept as one text, so that its length is known
    // without walking a list of small writes.
    if (_pendingOutput.Count() == 0)
        _pendingOutput.Push(s.Defined() ? WithRoom(s.Data(), s.Length(), 2 * _bufferSize) : s);
    else
        _pendingOutput[-1] += s;
    while (Length(_pendingOutput) >= _bufferSize) {
        if (!_AwaitOutput())
            return 0;
        SString text = _pendingOutput.Join();
        _pendingOutput = text;
        int sent = _SendSome(text.Data(), text.Length());
        if (sent < 0)
            return 0;
        _KeepUnsent(text, sent);
    }
    return 1;
}

int SSocket::operator<<(const char* s)
{
    return *this << SString(s);
}

int SSocket::operator<<(char c)
{
    return *this << SString(c, 1);
}

int SSocket::Flush()
{
    if (_timedOut || _closed)
        return Length(_pendingOutput) == 0;
    SString text = _pendingOutput.Join();
    int length = text.Length();
    int sent = 0;
    while (sent < length && _AwaitOutput()) {
        int n = _SendSome(text.Data() + sent, length - sent);
        if (n < 0)
            break;
        sent += n;
    }
    _KeepUnsent(text, sent);
    return sent == length;
}

void SSocket::_KeepUnsent(const SString& text, int sent)
{
    _pendingOutput.Reset();
    if (sent < text.Length())
        _pendingOutput.Push(WithRoom(text.Data() + sent, text.Length() - sent, 2 * _bufferSize));
}

// ---- waiting -------------------------------------------------------------

int SSocket::SelectRead()
{
    return _Wait(_readFd, 0, _readTimeoutSec, _readTimeoutUsec);
}

int SSocket::SelectWrite()
{
    return _Wait(_writeFd, 1, _writeTimeoutSec, _writeTimeoutUsec);
}

int SSocket::_Wait(int fd, int forWriting, int seconds, int microseconds)
{
    if (_timedOut)
        return 0;
    if (fd < 0 || fd >= FD_SETSIZE) {  // select would fail with EBADF
        _closed = 1;
        return 0;
    }
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    struct timeval limit;
    limit.tv_sec = seconds;
    limit.tv_usec = microseconds;
    errno = 0;
    int ready = Select(fd + 1, forWriting ? nullptr : &set, forWriting ? &set : nullptr,
        nullptr, &limit);
    if (ready > 0)
        return 1;
    // A signal shows as a time-out: that is how the caller's handlers end a
    // blocked read or write.
    if (ready == 0 || errno == EINTR)
        _timedOut = 1;
    else
        _closed = 1;
    return 0;
}

int SSocket::_AwaitInput()
{
    int ready;
    do
        ready = SelectRead();
    while (ready != 1 && !_closed && !_timedOut);
    return !_closed && !_timedOut;
}

int SSocket::_AwaitOutput()
{
    int ready;
    do
        ready = SelectWrite();
    while (ready != 1 && !_closed && !_timedOut);
    return !_closed && !_timedOut;
}

// ---- descriptors ---------------------------------------------------------

int SSocket::_Receive(char* buf, int n)
{
    while (_AwaitInput()) {
        int got = _ReceiveSome(buf, n);
        if (got == NothingYet)
            continue;
        if (got == 0)
            _closed = 1;
        return got > 0 ? got : 0;
    }
    return 0;
}

int SSocket::_ReceiveSome(char* buf, int n)
{
    ssize_t got = recv(_readFd, buf, n, MSG_DONTWAIT);
    if (got < 0 && errno == ENOTSOCK)
        got = read(_readFd, buf, n);
    if (got < 0)
        return WouldBlock() ? NothingYet : -1;
    return static_cast<int>(got);
}

int SSocket::_SendSome(const char* data, int n)
{
    ssize_t sent = send(_writeFd, data, n, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (sent < 0 && errno == ENOTSOCK)
        sent = write(_writeFd, data, n);
    if (sent < 0)
        return WouldBlock() ? 0 : -1;
    return static_cast<int>(sent);
}

int SSocket::Close()
{
    _closed = 1;
    if (_readFd == _writeFd)
        return close(_readFd) == 0;
    int readClosed = close(_readFd) == 0;
    int writeClosed = close(_writeFd) == 0;
    return readClosed && writeClosed;
}

void SSocket::Block() const
{
    if (!_closed)
        SetNonBlocking(_readFd, _writeFd, 0);
}

void SSocket::Unblock() const
{
    if (!_closed)
        SetNonBlocking(_readFd, _writeFd, 1);
}

void SSocket::SetLingerOption(int onOff, int seconds) const
{
    SetLinger(_readFd, onOff, seconds);
    if (_writeFd != _readFd)
        SetLinger(_writeFd, onOff, seconds);
}

// ---- settings ------------------------------------------------------------

int SSocket::TimedOut() const
{
    return _timedOut;
}

void SSocket::ClearTimeOut()
{
    _timedOut = 0;
}

void SSocket::SetEolCRLF()
{
    _eol = CrLf;
}

void SSocket::SetEolLF()
{
    _eol = Lf;
}

void SSocket::SetReadTimeout(double seconds)
{
    SplitTimeout(seconds, _readTimeoutSec, _readTimeoutUsec);
}

void SSocket::SetWriteTimeout(double seconds)
{
    SplitTimeout(seconds, _writeTimeoutSec, _writeTimeoutUsec);
}

// Asked once per line cut: the two texts of this class are answered without
// a call; a subclass that sets its own end-of-line text still gets strlen.
int SSocket::_EolLength() const
{
    if (_eol == CrLf)
        return 2;
    if (_eol == Lf)
        return 1;
    return static_cast<int>(strlen(_eol));
}

int SSocket::_EndsWithEol(const SString& s) const
{
    int n = _EolLength();
    return s.Length() >= n && memcmp(s.Data() + s.Length() - n, _eol, n) == 0;
}
