// SSubString: an assignable view of a byte range of a parent SString.
//
// The view is three plain fields; it owns nothing.  Reading builds a new
// string from the parent's bytes, writing builds the whole new parent value
// and hands it to the parent's handle, so other handles that shared the old
// bytes keep them.  Start and length are clamped once, when the view is made;
// if the parent has shrunk since, reads and writes only touch the bytes that
// are still there.
#include <cstring>

#include "SString.h"

SSubString::SSubString(SString& parent, int start, int n)
    : _parent(&parent), _start(start), _length(n)
{
    const int len = parent.Length();
    if (_start < 0) {
        _length += _start;
        _start = 0;
    }
    if (_length < 0)
        _length = 0;
    if (_start > len)
        _start = len;
    if (_start + _length > len)
        _length = len - _start;
}

SSubString::SSubString(const SSubString& other)
    : _parent(other._parent), _start(other._start), _length(other._length)
{
}

SSubString SString::Segment(int start, int n) &
{
    return SSubString(*this, start, n);
}

SSubString::operator SString() const
{
    if (!_parent->Defined())
        return SString();
    const int len = _parent->Length();
    const int start = _start < len ? _start : len;
    const int n = _length < len - start ? _length : len - start;
    return SString(_parent->Data() + start, n);
}

SSubString& SSubString::operator=(const SString& s)
{
    if (!_parent->Defined()) {
        *_parent = s;
        return *this;
    }
    const char* old = _parent->Data();
    const int len = _parent->Length();
    const int before = _start < len ? _start : len;
    const int afterStart = _length < len - before ? before + _length : len;
    const int after = len - afterStart;

    // One buffer of the final size, filled in place.
    SString result;
    char* p = result.Resize(before + s.Length() + after);
    std::memcpy(p, old, before);
    if (s.Length() > 0)
        std::memcpy(p + before, s.Data(), s.Length());
    std::memcpy(p + before + s.Length(), old + afterStart, after);
    *_parent = result;
    return *this;
}

SSubString& SSubString::operator=(const SSubString& other)
{
    return *this = SString(other);
}
