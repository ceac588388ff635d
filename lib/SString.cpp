// SString: representation management (sizing, copy-on-write, the 108 limit),
// construction, appending, searching, comparison, editing and stream I/O.
// The assignable view (SSubString) lives in SSubString.cpp and the pattern
// members in RegexFuncs.cpp.

#include "SString.h"
#include "SStringList.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <malloc.h>
#include <new>

namespace {

// Strings of about 20 MB are refused by design.
const long long SizeLimit = SString::AllocLimit;

// Bytes allocated for a string of n bytes: the next multiple of AllocIncrem
// above n, which always leaves room for the terminating NUL.
int BufferSize(long long n)
{
    if (n < 0)
        n = 0;
    long long size = (n / SString::AllocIncrem) * SString::AllocIncrem + SString::AllocIncrem;
    if (size >= SizeLimit)
        std::exit(108);
    return static_cast<int>(size);
}

// realloc with the failure behaviour of operator new: the process's new
// handler gets its chance (the library's own ends the process with 106).
char* GrowBuffer(char* old, int size)
{
    for (;;) {
        if (void* p = std::realloc(old, size))
            return static_cast<char*>(p);
        std::new_handler handler = std::get_new_handler();
        if (!handler)
            throw std::bad_alloc();
        handler();
    }
}

// A representation and a fresh buffer share one block, so that making a
// string costs one allocation; a buffer that outgrows the block moves to a
// block of its own.  size 0 makes an undefined representation.
char* InlineBuffer(SStringRep* rep) { return reinterpret_cast<char*>(rep + 1); }

SStringRep* NewRep(int size = 0)
{
    void* block = GrowBuffer(nullptr, static_cast<int>(sizeof(SStringRep)) + size);
    SStringRep* rep = new (block) SStringRep{nullptr, 0, 1, size};
    if (size > 0)
        rep->_buf = InlineBuffer(rep);
    return rep;
}

void FreeBuffer(SStringRep* rep)
{
    if (rep->_buf != InlineBuffer(rep))
        std::free(rep->_buf);
}

// Room for size bytes in a unique representation, the bytes kept.  The
// allocator often has slack behind a block already: it is used without a
// call, keeping the recorded size exact.
void GrowRep(SStringRep* rep, int size)
{
    char* inlined = InlineBuffer(rep);
    if (!rep->_buf || rep->_buf == inlined) {
        if (malloc_usable_size(rep) >= sizeof(SStringRep) + size) {
            rep->_buf = inlined;
        } else {
            char* buf = GrowBuffer(nullptr, size);
            if (rep->_buf)
                std::memcpy(buf, rep->_buf, rep->_len);
            rep->_buf = buf;
        }
    } else if (malloc_usable_size(rep->_buf) < static_cast<size_t>(size)) {
        rep->_buf = GrowBuffer(rep->_buf, size);
    }
}

int ToLower(int c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }
int ToUpper(int c) { return c >= 'a' && c <= 'z' ? c - ('a' - 'A') : c; }

// -1, 0, 1 as memcmp, the shorter first on a common prefix.
int CompareBytes(const char* a, int an, const char* b, int bn)
{
    int n = std::min(an, bn);
    int c = n > 0 ? std::memcmp(a, b, n) : 0;
    if (c != 0)
        return c;
    return (an > bn) - (an < bn);
}

int TextLength(const char* s) { return s ? static_cast<int>(std::strlen(s)) : 0; }

const std::ios_base::iostate StreamFailed = std::ios_base::failbit | std::ios_base::badbit;

}  // namespace

// ---- representation ----------------------------------------------------

// A fresh representation owning a buffer sized for n bytes, NUL at n; the
// caller sets the length and fills the bytes.
void SString::_Malloc(int n)
{
    _rep = NewRep(BufferSize(n));
    _rep->_buf[n < 0 ? 0 : n] = 0;
}

// Makes room for a result of n bytes and makes the representation unique.
// The length is left to the caller except when a shared representation is
// replaced, where it becomes min(old length, n).
void SString::_Realloc(int n)
{
    SStringRep* old = _rep;
    if (old->_links != 1) {
        int keep = std::min(old->_len, n);
        _Malloc(n);
        if (keep > 0)
            std::memcpy(_rep->_buf, old->_buf, keep);
        _rep->_len = keep;
        _rep->_buf[keep] = 0;
        old->_links--;
    } else if (old->_alloc <= n) {
        int size = BufferSize(n);
        GrowRep(old, size);
        old->_alloc = size;
        old->_buf[old->_len] = 0;
        old->_buf[n] = 0;
    } else {
        old->_buf[n] = 0;
    }
}

void SString::_Undef()
{
    if (_rep->_links != 1) {
        _rep->_links--;
        _rep = NewRep();
        return;
    }
    FreeBuffer(_rep);
    _rep->_buf = nullptr;
    _rep->_len = 0;
    _rep->_alloc = 0;
}

void SString::_Free()
{
    if (--_rep->_links == 0) {
        FreeBuffer(_rep);
        std::free(_rep);
    }
}

// Appends n bytes from p, which may point into this string's own buffer.
void SString::_Append(const char* p, int n)
{
    if (n < 1)
        return;
    if (p >= Data() && p < Data() + _rep->_alloc) {
        SString copy(p, n);
        _Append(copy.Data(), n);
        return;
    }
    long long total = static_cast<long long>(_rep->_len) + n;
    if (total >= SizeLimit)
        std::exit(108);
    _Realloc(static_cast<int>(total));
    std::memcpy(_rep->_buf + _rep->_len, p, n);
    _rep->_len = static_cast<int>(total);
    _rep->_buf[total] = 0;
}

// ---- construction and assignment -----------------------------------------

SString::SString() : _rep(NewRep()) { }

SString::SString(const SString& s) : _rep(s._rep) { _rep->_links++; }

SString::SString(const char* s) : SString(s, TextLength(s)) { }

SString::SString(const char* s, int n)
{
    if (n < 0)
        n = 0;
    _Malloc(n);
    if (s)
        std::memcpy(_rep->_buf, s, n);
    else
        std::memset(_rep->_buf, 0, n);
    _rep->_len = n;
}

SString::SString(char c, int n)
{
    if (n < 0)
        n = 0;
    _Malloc(n);
    std::memset(_rep->_buf, static_cast<unsigned char>(c), n);
    _rep->_len = n;
}

static SString Formatted(const char* format, ...) __attribute__((format(printf, 1, 2)));
static SString Formatted(const char* format, ...)
{
    char text[64];
    va_list ap;
    va_start(ap, format);
    int n = std::vsnprintf(text, sizeof text, format, ap);
    va_end(ap);
    return SString(text, std::min<int>(n, sizeof text - 1));
}

SString::SString(int i) : SString(Formatted("%d", i)) { }
SString::SString(long l) : SString(Formatted("%ld", l)) { }
SString::SString(double d) : SString(Formatted("%.16g", d)) { }
SString::SString(float f) : SString(static_cast<double>(f)) { }

SString::~SString() { _Free(); }

SString& SString::operator=(const SString& s)
{
    if (_rep != s._rep) {
        s._rep->_links++;
        _Free();
        _rep = s._rep;
    }
    return *this;
}

SString& SString::operator=(const char* s)
{
    int n = TextLength(s);
    if (s >= Data() && s < Data() + _rep->_alloc)
        return *this = SString(s, n);
    _Realloc(n);
    if (n > 0)
        std::memcpy(_rep->_buf, s, n);
    _rep->_len = n;
    return *this;
}

SString& SString::operator=(char c)
{
    _Realloc(1);
    _rep->_buf[0] = c;
    _rep->_len = 1;
    return *this;
}

SString& SString::operator=(int i) { return *this = SString(i); }
SString& SString::operator=(long l) { return *this = SString(l); }
SString& SString::operator=(double d) { return *this = SString(d); }
SString& SString::operator=(float f) { return *this = SString(f); }

// ---- concatenation -------------------------------------------------------

SString& SString::operator+=(const SString& s)
{
    if (s.Length() < 1)
        return *this;
    SString keep(s);  // s may be this very string: hold its bytes while we grow
    _Append(keep.Data(), keep.Length());
    return *this;
}

SString& SString::operator+=(const char* s)
{
    _Append(s, TextLength(s));
    return *this;
}

SString& SString::operator+=(char c)
{
    int n = _rep->_len + 1;
    if (n >= SizeLimit)
        std::exit(108);
    if (_rep->_links != 1 || _rep->_alloc <= n)  // byte loops mostly skip the call
        _Realloc(n);
    _rep->_buf[n - 1] = c;
    _rep->_buf[n] = 0;
    _rep->_len = n;
    return *this;
}

SString SString::operator+(const SString& s) const { return SString(*this) += s; }
SString SString::operator+(const char* s) const { return SString(*this) += s; }
SString SString::operator+(char c) const { return SString(*this) += c; }

SString operator+(const char* s, const SString& t) { return SString(s) += t; }
SString operator+(char c, const SString& t) { return SString(c, 1) += t; }

// ---- access ----------------------------------------------------------------

char SString::operator[](int i) const
{
    if (i < 0)
        i += Length();
    if (i < 0 || i >= Length())
        return 0;
    return _rep->_buf[i];
}

SString::operator double() const { return Defined() ? std::strtod(Data(), nullptr) : 0.0; }
SString::operator float() const { return static_cast<float>(static_cast<double>(*this)); }

char* SString::GetBuf() const
{
    char* copy = new (std::nothrow) char[Length() + 1];
    if (!copy)
        return nullptr;
    if (Length() > 0)
        std::memcpy(copy, Data(), Length());
    copy[Length()] = 0;
    return copy;
}

char* SString::Resize(int n)
{
    if (n < 0)
        n = 0;
    _Realloc(n);
    if (n > _rep->_len)
        std::memset(_rep->_buf + _rep->_len, 0, n - _rep->_len);
    _rep->_len = n;
    return _rep->_buf;
}

SString SString::Segment(int start, int n) const&
{
    if (start < 0) {
        n += start;
        start = 0;
    }
    if (n > 0 && start < Length()) {
        n = std::min(n, Length() - start);
        return SString(Data() + start, n);
    }
    return SString("");
}

// ---- searching -------------------------------------------------------------

int SString::Index(const SString& s, int start) const
{
    int n = s.Length();
    if (start < 0 || n < 1 || Length() - start < n)
        return -1;
    const void* hit = memmem(Data() + start, Length() - start, s.Data(), n);
    return hit ? static_cast<int>(static_cast<const char*>(hit) - Data()) : -1;
}

int SString::Index(const char* s, int start) const { return Index(SString(s), start); }

int SString::Index(char c, int start) const
{
    if (start < 0 || start >= Length())
        return -1;
    const void* hit = std::memchr(Data() + start, static_cast<unsigned char>(c), Length() - start);
    return hit ? static_cast<int>(static_cast<const char*>(hit) - Data()) : -1;
}

int SString::RIndex(const SString& s, int start) const
{
    int last = Length() - s.Length();
    if (last + 1 < 1)
        return -1;
    int p = start != 0 ? start : Length() - 1;
    if (p < 0)
        p += Length();
    if (p < 0)
        return -1;
    if (s.Length() < 1)
        return p;
    for (int q = std::min(p, last); q >= 0; q--)
        if (std::strncmp(s.Data(), Data() + q, s.Length()) == 0)
            return q;
    return -1;
}

int SString::RIndex(const char* s, int start) const { return RIndex(SString(s), start); }

int SString::RIndex(char c, int start) const
{
    int p = start > 0 ? std::min(start, Length()) : Length();
    if (p < 1)
        return -1;
    const void* hit = memrchr(Data(), static_cast<unsigned char>(c), p);
    return hit ? static_cast<int>(static_cast<const char*>(hit) - Data()) : -1;
}

int SString::Count(const SString& s) const
{
    int n = s.Length();
    if (n < 1 || n > Length())
        return 0;
    int count = 0;
    const char* end = Data() + Length();
    for (const char* p = Data(); end - p >= n; p++) {
        p = static_cast<const char*>(memmem(p, end - p, s.Data(), n));
        if (!p)
            break;
        count++;
    }
    return count;
}

int SString::Count(const char* s) const { return Count(SString(s)); }

int SString::Count(char c) const
{
    return static_cast<int>(std::count(Data(), Data() + Length(), c));
}

// ---- comparison ------------------------------------------------------------

int SString::operator==(const SString& s) const
{
    return Length() == s.Length() && (Length() == 0 || std::memcmp(Data(), s.Data(), Length()) == 0);
}

int SString::operator<(const SString& s) const
{
    return CompareBytes(Data(), Length(), s.Data(), s.Length()) < 0;
}

int SString::operator>(const SString& s) const
{
    return CompareBytes(Data(), Length(), s.Data(), s.Length()) > 0;
}

int SString::operator==(const char* s) const
{
    if (!s)
        return Length() == 0;
    int n = TextLength(s);
    return Length() == n && (n == 0 || std::memcmp(Data(), s, n) == 0);
}

int SString::operator<(const char* s) const
{
    return s && CompareBytes(Data(), Length(), s, TextLength(s)) < 0;
}

int SString::operator>(const char* s) const
{
    if (Length() == 0)
        return 0;
    if (!s || !*s)
        return 1;
    return CompareBytes(Data(), Length(), s, TextLength(s)) > 0;
}

int SString::operator==(char c) const { return Length() == 1 && Data()[0] == c; }

int SString::operator<(char c) const
{
    return Length() == 0 || static_cast<unsigned char>(Data()[0]) < static_cast<unsigned char>(c);
}

int SString::operator>(char c) const
{
    return Length() > 0 && static_cast<unsigned char>(Data()[0]) > static_cast<unsigned char>(c);
}

// ---- editing -----------------------------------------------------------

char SString::Chop()
{
    if (Length() < 1)
        return 0;
    _Realloc(Length());
    char last = _rep->_buf[--_rep->_len];
    _rep->_buf[_rep->_len] = 0;
    return last;
}

SString& SString::LowerCase()
{
    _Realloc(Length());
    std::transform(_rep->_buf, _rep->_buf + Length(), _rep->_buf, ToLower);
    return *this;
}

SString& SString::UpperCase()
{
    _Realloc(Length());
    std::transform(_rep->_buf, _rep->_buf + Length(), _rep->_buf, ToUpper);
    return *this;
}

SStringList SString::SplitExact(const SString& separator, int limit) const
{
    if (!Defined())
        return SStringList();
    if (limit == 1)
        return SStringList(*this);
    if (separator.Length() < 1)
        return _SplitChars(limit);
    SStringList fields;
    fields.Reset();
    int pos = 0;
    while (limit < 1 || fields.Count() < limit - 1) {
        int hit = Index(separator, pos);
        if (hit < 0)
            break;
        fields.Push(SString(Data() + pos, hit - pos));
        pos = hit + separator.Length();
    }
    if (pos <= Length())
        fields.Push(SString(Data() + pos, Length() - pos));
    return fields;
}

// The split at the empty pattern: one item per character, except that with a
// limit the last item holds the rest.  A negative limit therefore gives the
// whole string as one item.
SStringList SString::_SplitChars(int limit) const
{
    SStringList chars;
    if (Defined())
        chars.Reset();
    int n = (limit != 0 && Length() >= limit) ? limit : Length();
    for (int i = 0; i < n - 1; i++)
        chars.Push(SString(Data() + i, 1));
    if (Length() > 0)
        chars.Push(Segment(n - 1, Length() - (n - 1)));
    return chars;
}

// ---- streams -----------------------------------------------------------

int SString::ReadLine(std::istream& is)
{
    *this = "";
    if (is.rdstate() & StreamFailed)
        return 0;
    std::streambuf* in = is.rdbuf();
    if (!in) {
        is.setstate(std::ios_base::badbit);
        return 0;
    }
    // Read through the stream buffer: istream::get would set failbit at the
    // end of input, and the end of input must set only eofbit.
    char chunk[1024];
    int n = 0;
    for (;;) {
        int c = in->sbumpc();
        if (c == std::char_traits<char>::eof()) {
            is.setstate(std::ios_base::eofbit);
            break;
        }
        chunk[n++] = static_cast<char>(c);
        if (n == sizeof chunk) {
            _Append(chunk, n);
            n = 0;
        }
        if (c == '\n')
            break;
    }
    _Append(chunk, n);
    return Length() > 0 && !(is.rdstate() & StreamFailed);
}

int SString::Write(std::ostream& os) const
{
    if (os.rdstate() == std::ios_base::goodbit && Length() > 0) {
        std::streambuf* out = os.rdbuf();
        if (!out || out->sputn(Data(), Length()) != Length())
            os.setstate(std::ios_base::badbit);
    }
    return !(os.rdstate() & StreamFailed);
}

std::ostream& operator<<(std::ostream& os, SString s)
{
    s.Write(os);
    return os;
}

std::istream& operator>>(std::istream& is, SString& s)
{
    s.ReadLine(is);
    return is;
}

// ---- diagnostics -------------------------------------------------------

static void DebugContents(std::ostream& out, const char* p, int n)
{
    for (int i = 0; i < n; i++) {
        unsigned char c = p[i];
        if (c >= 32 && c <= 126 && c != '\\') {
            out << c;
            continue;
        }
        out << '\\';
        switch (c) {
        case '\\': out << '\\'; break;
        case '\f': out << 'f'; break;
        case '\n': out << 'n'; break;
        case '\r': out << 'r'; break;
        case '\t': out << 't'; break;
        case '\v': out << 'v'; break;
        default: out << static_cast<int>(c); break;
        }
    }
}

void SString::Debug(int verbose) const
{
    std::ostream& out = std::cerr;
    if (verbose) {
        out << "SStringRep stored at: " << static_cast<const void*>(_rep) << std::endl;
        if (_rep->_alloc <= 0) {
            out << "Number of links:      " << _rep->_links << std::endl
                << "SString is undefined" << std::endl
                << std::endl;
            return;
        }
        out << "Buffer located at:    " << static_cast<const void*>(_rep->_buf) << std::endl
            << "Buffer contents:     '";
    }
    DebugContents(out, Data(), Length());
    if (verbose) {
        out << "'" << std::endl
            << "SString length:       " << _rep->_len << std::endl
            << "Bytes allocated:      " << _rep->_alloc << std::endl
            << "Number of links:      " << _rep->_links << std::endl
            << std::endl;
    }
}

// ---- free functions ----------------------------------------------------

SString BaseName(const SString& path, const SString& suffix)
{
    int start = path.RIndex('/', 0) + 1;
    int end = path.Length() - 1;
    int n = suffix.Length();
    if (n > 0 && path.Length() >= n
        && std::memcmp(path.Data() + path.Length() - n, suffix.Data(), n) == 0)
        end -= n;
    return path.Segment(start, end - start + 1);
}

SString BaseName(const char* path, const SString& suffix)
{
    return BaseName(SString(path), suffix);
}
