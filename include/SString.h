// SString: the byte-string value type of the library, and SSubString, the
// assignable view that the non-const Segment returns.
//
// An SString is a handle onto a shared, reference-counted SStringRep.  Copies
// share the representation; every mutating member first makes it unique
// (copy-on-write) through the one helper _Realloc.  A representation and the
// buffer it is made with share one allocation; a buffer that outgrows it
// moves to an allocation of its own.  Strings hold arbitrary bytes with an
// explicit length and always keep a NUL behind the last byte, so Data() can be
// handed to C functions that expect NUL-terminated text.
//
// A string is either defined (it owns a buffer, possibly of length 0) or
// undefined (no buffer at all).  The two compare equal, but many operations
// treat them differently, and the rest of the library uses "undefined" to say
// that there is no value at all (a missing key, an item that does not exist).
//
// Failure policy: no member reports an error.  Out-of-range positions give
// NUL, -1 or an empty string as documented.  The one hard limit is the size of
// a buffer: asking for 20,000,001 bytes or more ends the process with exit
// status 108 (no message).  Buffers are sized exactly to the next multiple of
// AllocIncrem above the length, never doubled; Debug reports that size.
//
// Not thread-safe: link counts are plain ints, by design.
#ifndef TARNWICK_SSTRING_H
#define TARNWICK_SSTRING_H

#include <iosfwd>

class SStringList;
class SSubString;
class SRegex;

// The shared representation.  Invariants: _links >= 1; with a buffer,
// _buf[_len] == 0 and _alloc > _len; undefined means _buf null, _len 0,
// _alloc 0.
struct SStringRep {
    char* _buf;
    int _len;
    int _links;
    int _alloc;
};

class SString {
public:
    static const int AllocIncrem = 8;
    // A buffer of this many bytes or more ends the process with status 108.
    static const int AllocLimit = 20000001;

    // Construction.  Numbers are formatted with "%d", "%ld" and "%.16g"
    // (a float is widened to double first).
    SString();                      // undefined
    SString(const SString& s);      // shares s
    SString(const char* s);         // defined copy; null gives ""
    SString(const char* s, int n);  // exactly n bytes (n < 0 is 0); null s gives n NULs
    SString(char c, int n);         // n copies of c (n < 0 is 0)
    SString(int i);
    SString(long l);
    SString(double d);
    SString(float f);
    ~SString();

    // Assignment from an SString shares; the other forms build an unshared,
    // defined value (null text assigns "").
    SString& operator=(const SString& s);
    SString& operator=(const char* s);
    SString& operator=(char c);
    SString& operator=(int i);
    SString& operator=(long l);
    SString& operator=(double d);
    SString& operator=(float f);

    // Appending.  An operand of length 0 leaves the target untouched, even an
    // undefined one; appending a char always defines the target.  Appending a
    // string to itself (s += s) is safe.
    SString& operator+=(const SString& s);
    SString& operator+=(const char* s);
    SString& operator+=(char c);
    SString operator+(const SString& s) const;
    SString operator+(const char* s) const;
    SString operator+(char c) const;

    // Accessors.
    int Length() const { return _rep->_len; }
    const char* Data() const { return _rep->_buf; }  // null when undefined
    int Defined() const { return _rep->_alloc > 0; }

    // The byte at i, by value; a negative i counts from the end.  Out of
    // range gives NUL.
    char operator[](int i) const;
    // strtod of the text; an undefined string is 0.0.
    operator float() const;
    operator double() const;
    // A new[]-allocated copy with a final NUL (the caller deletes it); null
    // when allocation fails.
    char* GetBuf() const;
    // Makes this string unshared and defined with exactly n bytes (n < 0 is
    // taken as 0): the bytes it held are kept, new ones are NUL.  Returns the
    // buffer, for filling a result of known size in place.  Write through it
    // before the string is copied, changed or destroyed: a copy would share
    // the bytes.
    char* Resize(int n);

    // Substring.  The const form returns a copy: a negative start shortens n
    // by as much and starts at 0; anything that selects no byte is a defined
    // empty string.  The non-const form returns an assignable view of the
    // same range (see SSubString); a temporary string gets the copy, never a
    // view that would outlive it.
    SString Segment(int start, int n) const&;
    SSubString Segment(int start, int n) &;

    // Searching; a failed search is -1.  Index finds the first occurrence at
    // or after start (an empty needle is never found).  RIndex with a string
    // finds the last occurrence beginning at or before start (0 means the
    // last byte; a negative start counts from the end; an empty needle gives
    // that start position); its comparison stops at a NUL byte, as strncmp
    // does, so needles holding NUL may match early: intended.  RIndex with a
    // char looks strictly before start (0 means the whole string), unlike the
    // string form, also intended.
    int Index(const SString& s, int start = 0) const;
    int Index(const char* s, int start = 0) const;
    int Index(char c, int start = 0) const;
    int RIndex(const SString& s, int start = 0) const;
    int RIndex(const char* s, int start = 0) const;
    int RIndex(char c, int start = 0) const;
    // Occurrences, overlapping ones included ("aaaa" holds "aa" 3 times).
    int Count(const SString& s) const;
    int Count(const char* s) const;
    int Count(char c) const;

    // Comparisons are bytewise and unsigned, with no case folding; a shorter
    // string sorts first when it is a prefix of the other.  Undefined equals
    // empty.  A null text equals any empty string, is never greater than
    // this, and makes < false.  The char forms are deliberately odd: == holds
    // only for a one-byte string, while < and > look at the FIRST byte alone
    // ("ab" > 'a' is false); an empty string is below every char.
    int operator==(const SString& s) const;
    int operator<(const SString& s) const;
    int operator>(const SString& s) const;
    int operator==(const char* s) const;
    int operator<(const char* s) const;
    int operator>(const char* s) const;
    int operator==(char c) const;
    int operator<(char c) const;
    int operator>(char c) const;
    // Without these, != would silently compare the numeric conversions.
    int operator!=(const SString& s) const { return !(*this == s); }
    int operator!=(const char* s) const { return !(*this == s); }
    int operator!=(char c) const { return !(*this == c); }
    bool operator<=(const SString&) const = delete;
    bool operator>=(const SString&) const = delete;

    // Editing.  Chop removes and returns the last byte (NUL, and no change,
    // when empty).  LowerCase/UpperCase convert ASCII letters in place (no
    // locale) and leave an undefined string defined and empty.
    char Chop();
    SString& LowerCase();
    SString& UpperCase();

    // Fields between literal occurrences of separator: "a,,b," at "," gives
    // "a", "", "b", "".  A limit of 1 gives the whole string; a limit n > 1
    // gives at most n fields, the last holding the rest; 0 means no limit.
    // An undefined string gives an undefined list; an empty separator splits
    // into characters, as Split("") does.
    SStringList SplitExact(const SString& separator, int limit = 0) const;

    // Pattern operations: match, substitute in place, split.  Text patterns
    // are Perl syntax; "i" in flags ignores case, "g" substitutes every match.
    SStringList M(const SString& pattern, const char* flags = 0) const;
    SStringList M(const char* pattern, const char* flags = 0) const;
    SStringList M(const SRegex& re) const;
    SStringList S(const SString& pattern, const SString& replacement, const char* flags = 0);
    SStringList S(const char* pattern, const SString& replacement, const char* flags = 0);
    SStringList S(const SRegex& re, const SString& replacement, const char* flags = 0);
    SStringList Split(const SRegex& re, int limit = 0) const;
    SStringList Split(const SString& separator, int limit = 0) const;
    SStringList Split(const char* separator, int limit = 0) const;
    SStringList Split(char separator, int limit = 0) const;

    // Reads one line, keeping its "\n"; returns nonzero when a non-empty line
    // was read and the stream has not failed.  A last line without "\n" is
    // returned with 1 and the next call returns 0.  End of input sets only
    // the stream's eofbit.
    int ReadLine(std::istream& is);
    // Writes the bytes unchanged (NULs included) unless the stream's state is
    // already not good; nonzero when the stream has not failed.
    int Write(std::ostream& os) const;
    // Dump on the standard error stream: with verbose, the representation's
    // addresses and counters; in both modes the contents, with bytes outside
    // 32..126 and the backslash escaped.
    void Debug(int verbose) const;

protected:
    SStringRep* _rep;

    void _Malloc(int n);
    void _Realloc(int n);
    void _Undef();
    void _Free();
    void _Append(const char* p, int n);
    SStringList _SplitChars(int limit) const;

    friend class SStringList;
};

SString operator+(const char* s, const SString& t);
SString operator+(char c, const SString& t);
std::ostream& operator<<(std::ostream& os, SString s);
std::istream& operator>>(std::istream& is, SString& s);

// The part of path after its last "/", with a trailing suffix removed.
SString BaseName(const SString& path, const SString& suffix = "");
SString BaseName(const char* path, const SString& suffix = "");

// An assignable view of a byte range of a parent string, as returned by the
// non-const SString::Segment.  The view does not own the parent, which must
// outlive it.  Start and length are clamped to the parent when the view is
// made and never change afterwards: a second assignment through the same view
// replaces the same byte range of the new parent, not the text inserted by
// the first (intended).
class SSubString {
public:
    SSubString(SString& parent, int start, int n);
    SSubString(const SSubString& other);

    // The selected bytes; a view of an undefined parent gives an undefined
    // string.
    operator SString() const;

    // Replaces the range in the parent (an undefined parent simply becomes
    // s).  Other handles that shared the parent's bytes keep the old value.
    SSubString& operator=(const SString& s);
    SSubString& operator=(const SSubString& other);

protected:
    SString* _parent;
    int _start;
    int _length;
};

static_assert(sizeof(SString) == sizeof(void*), "an SString is one pointer");
static_assert(sizeof(SStringRep) <= sizeof(char*) + 3 * sizeof(int) + 4,
    "the representation holds only buffer, length, links, size");

#endif
