// The pattern members of SString (M, S, Split) and SStringList (Grep).
//
// A pattern given as text is compiled afresh as an SPerlRegex on every call;
// callers in loops pass a compiled SRegex instead.  The one shared pattern is
// the white-space separator of Split(' '), compiled once: its match table is
// module state, so concurrent Split(' ') calls must be kept apart by the
// caller.
#include "SRegex.h"

#include <string.h>

#include <iostream>
#include <string>

#include "Sfiledir.h"

namespace {

// White space for Split(' '): POSIX syntax, compiled as it stands, once.
// Built on first use, so that Split(' ') also works from other modules'
// static initialisers.
const SRegex& WhiteSpaceRegex()
{
    static const SRegex whiteSpace{SString("[ \t\r\n]+")};
    return whiteSpace;
}

// Bytes that a one-character separator must escape to be taken literally.
const char RegexSpecials[] = "$()*+.?[\\]^{|}";

}  // namespace

SStringList SString::M(const SString& pattern, const char* flags) const
{
    SPerlRegex re(pattern, flags);
    return M(re);
}

SStringList SString::M(const char* pattern, const char* flags) const
{
    return M(SString(pattern), flags);
}

SStringList SString::M(const SRegex& re) const
{
    return re.Match(*this, 0);
}

SStringList SString::S(const SString& pattern, const SString& replacement, const char* flags)
{
    if (pattern.Length() > 0) {
        SPerlRegex re(pattern, flags);
        return re.Subst(*this, replacement, flags);
    }
    // An empty pattern inserts: before every character and at the end with
    // "g", otherwise at the front.
    if (HasFlag(flags, 'g')) {
        SString chars = _SplitChars(0).Join(replacement);
        SString result = replacement + chars;
        if (Length() > 0)
            result += replacement;
        *this = result;
    } else {
        Segment(0, 0) = replacement;
    }
    return SStringList("");
}

SStringList SString::S(const char* pattern, const SString& replacement, const char* flags)
{
    return S(SString(pattern), replacement, flags);
}

SStringList SString::S(const SRegex& re, const SString& replacement, const char* flags)
{
    return re.Subst(*this, replacement, flags);
}

// Fields between the matches of re.  Kept on purpose: a leading separator
// gives a leading empty field, adjacent separators an empty field between
// them, a trailing separator no field; empty fields at a match do not count
// against the limit; an empty match splits off one character.
SStringList SString::Split(const SRegex& re, int limit) const
{
    SStringList result;
    if (re.Status() != 0)
        return result;
    int length = Length();
    int p = 0;
    if ((limit == 0 || limit >= 2) && length > 0) {
        int count = 1;
        while (re._Exec(*this, p)) {
            int s = re._matches[0].rm_so;
            int e = re._matches[0].rm_eo;
            if (p < s) {
                result.Push(Segment(p, s - p));
                count++;
                p = e;
            } else if (e > s) {
                result.Push(SString(""));
                p = e;
            } else if (re._Exec(*this, p + 1)) {
                int s2 = re._matches[0].rm_so;
                result.Push(Segment(p, s2 - p));
                count++;
                p = re._matches[0].rm_eo;
            } else {
                p++;
            }
            if ((limit != 0 && count >= limit) || p >= length)
                break;
        }
    }
    if (p < length)
        result.Push(Segment(p, length - p));
    return result;
}

SStringList SString::Split(const SString& separator, int limit) const
{
    if (separator.Length() == 0)
        return _SplitChars(limit);
    SPerlRegex re(separator);
    return Split(re, limit);
}

SStringList SString::Split(const char* separator, int limit) const
{
    if (!separator || !*separator)
        return _SplitChars(limit);
    return Split(SString(separator), limit);
}

SStringList SString::Split(char separator, int limit) const
{
    if (separator == ' ') {
        SStringList result = Split(WhiteSpaceRegex(), limit);
        if (result.Count() >= 2 && result.Get(0).Length() == 0)
            result.Shift();
        return result;
    }
    SString pattern;
    if (memchr(RegexSpecials, separator, sizeof RegexSpecials - 1))
        pattern += '\\';
    pattern += separator;
    return Split(pattern, limit);
}

SStringList SStringList::Grep(const SRegex& re, int mode) const
{
    if (!Defined() || re.Status() != 0)
        return SStringList();
    SStringList matched;
    SStringList unmatched;
    matched.Reset();
    unmatched.Reset();
    SStringItem* item = _rep->_root;
    for (int i = 0; i < _rep->_count; i++, item = item->_next)
        (re._Exec(item->_string, 0) ? matched : unmatched).Push(item->_string);
    return mode == 1 ? matched : unmatched;
}

namespace {

// A Grep test expression taken apart: its kind, the file-test letter or the
// delimiter, and for pattern tests the pattern, replacement and options.
struct GrepTest {
    char kind;    // 0 none, 'f' file test, 'm' match, 's' substitution
    char letter;  // file-test letter or delimiter
    int negate;
    SString pattern;
    SString replacement;
    SString options;
};

// Reads the test text; the NUL behind it stands for every byte past its end.
class GrepReader {
public:
    explicit GrepReader(const SString& test)
        : _test(test), _text(test.Data() ? test.Data() : ""), _length(test.Length()), _pos(0) { }

    // The opener: negations, blanks and the kind of test.
    void Opener(GrepTest& t)
    {
        t.kind = 0;
        t.letter = '/';
        t.negate = 0;
        while (_pos < _length && !t.kind) {
            char c = _text[_pos++];
            if (c == '!')
                t.negate = !t.negate;
            else if (c == '/')
                t.kind = 'm';
            else if (c == '-' || c == 'm' || c == 's') {
                t.kind = c == '-' ? 'f' : c;
                t.letter = _Next();
            } else if (c != ' ' && c != '\t')
                GrepError(GrepUnknownTest, _test);
        }
    }

    // Pattern, replacement (substitution only) and options.  A missing
    // closing delimiter is not an error: the field runs to the end.
    void PatternFields(GrepTest& t)
    {
        if (t.letter == '\0')
            GrepError(GrepIncomplete, _test);
        t.pattern = _Field(t.letter);
        if (t.kind == 's')
            t.replacement = _Field(t.letter);
        t.options = _pos < _length ? _test.Segment(_pos, _length - _pos) : SString("");
    }

private:
    const SString& _test;
    const char* _text;
    int _length;
    int _pos;

    // The text up to the next unescaped delimiter (or the end); a backslash
    // keeps itself and the byte after it.
    SString _Field(char delimiter)
    {
        std::string field;
        while (_pos < _length) {
            char c = _text[_pos++];
            if (c == delimiter)
                break;
            field += c;
            if (c != '\\')
                continue;
            if (_pos >= _length) {
                GrepError(GrepIncomplete, _test);
                break;
            }
            field += _text[_pos++];
        }
        return SString(field.data(), static_cast<int>(field.size()));
    }

    char _Next()
    {
        if (_pos >= _length)
            return '\0';
        return _text[_pos++];
    }
};

typedef int (*FileTest)(const SString&);

FileTest FileTestOf(char letter)
{
    switch (letter) {
    case 'd': return IsDirectory;
    case 'e': return FileExists;
    case 'f': return IsRegular;
    case 'r': return IsReadable;
    case 'w': return IsWriteable;
    case 'x': return IsExecutable;
    default: return 0;
    }
}

}  // namespace

SStringList SStringList::Grep(const SString& test, SStringList* rest)
{
    if (rest && rest != this)
        rest->Undef();
    if (!Defined())
        return SStringList();
    _MakeUnique();
    SStringList passed;
    SStringList failed;
    passed.Reset();
    failed.Reset();
    // Sorts every item by a test that may edit it in place.
    auto sortItems = [&](auto passes) {
        SStringItem* item = _rep->_root;
        for (int i = 0; i < _rep->_count; i++, item = item->_next)
            (passes(item->_string) ? passed : failed).Push(item->_string);
    };

    GrepTest t;
    GrepReader reader(test);
    reader.Opener(t);
    if (t.kind == 0) {
        GrepError(GrepNoTest, test);
    } else if (t.kind == 'f') {
        FileTest fileTest = FileTestOf(t.letter);
        if (fileTest)
            sortItems(fileTest);
        else
            std::cerr << "Grep: invalid file test" << std::endl;
    } else {
        reader.PatternFields(t);
        SPerlRegex re(t.pattern, t.options.Data());
        if (re.Status() != 0)
            return SStringList();
        if (t.kind == 'm')
            sortItems([&](const SString& item) { return re._Exec(item, 0); });
        else
            sortItems([&](SString& item) {
                return re.Subst(item, t.replacement, t.options.Data()).Count() > 0;
            });
    }
    if (rest)
        *rest = t.negate ? passed : failed;
    return t.negate ? failed : passed;
}

void GrepError(int code, const SString& test)
{
    static const char* const texts[] = {
        0,
        "Grep called without a valid test field.",
        "Unknown test type for Grep function",
        "Incomplete expression in Grep function call",
    };
    if (code >= GrepNoTest && code <= GrepIncomplete)
        std::cerr << texts[code] << std::endl;
    std::cerr << "The test field for Grep was '";
    std::cerr.write(test.Data() ? test.Data() : "", test.Length());
    std::cerr << "'" << std::endl;
}
