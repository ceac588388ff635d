// SSocketPlus: counted reads on top of the line connection.
#include "SSocketPlus.h"

#include <new>

SString SSocketPlus::Read(int n)
{
    if (n <= 0)
        return SString("");
    int pending = Length(_pendingInput);
    if (n < pending)
        return _TakePending(n);
    SString text("");
    text += _pendingInput.Join();
    _pendingInput.Reset();
    if (n > pending)
        text += _ReceiveExactly(n - pending);
    return text;
}

// Takes n bytes (fewer than are pending) from the front of pending input.
SString SSocketPlus::_TakePending(int n)
{
    SStringList taken;
    taken.Reset();
    int missing = n;
    while (missing > 0) {
        SString item = _pendingInput.Shift();
        if (item.Length() <= missing) {
            taken.Push(item);
            missing -= item.Length();
            continue;
        }
        const SString& whole = item;
        taken.Push(whole.Segment(0, missing));
        SString tail = whole.Segment(missing, item.Length() - missing);
        // A lone "\n" of a split "\r\n" must not become a line of its own.
        if (tail.Length() < _EolLength() && _pendingInput.Count() > 0)
            tail += _pendingInput.Shift();
        _pendingInput.Insert(SStringList(tail), 0);
        break;
    }
    return taken.Join();
}

// Receives up to n bytes straight from the descriptor, waiting through
// SelectRead; fewer at end of input, on a failed wait or when no buffer can
// be had.
SString SSocketPlus::_ReceiveExactly(int n)
{
    char* buffer = new (std::nothrow) char[n];
    if (!buffer)
        return SString("");
    int got = 0;
    for (int r; got < n && (r = _Receive(buffer + got, n - got)) > 0;)
        got += r;
    SString result(buffer, got);
    delete[] buffer;
    return result;
}
