// SRegex: an owning wrapper around the C library's regcomp/regexec.
//
// The engine is asked to keep every byte: a pattern holding a NUL byte goes
// through the length-taking re_compile_pattern, a subject is delimited with
// REG_STARTEND.  The engine runs in the C locale whatever the program chose,
// so that every byte is one character and case folding is ASCII only.
#include "SRegex.h"

#include <locale.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <iostream>
#include <string>

namespace {

// Groups the engine is asked to report, whole match included.
const int EngineEntries = 10;

// Switches the calling thread to the C locale for the lifetime of the object.
class CLocaleScope {
public:
    CLocaleScope() : _saved(uselocale(CLocale())) { }
    ~CLocaleScope()
    {
        if (_saved)
            uselocale(_saved);
    }
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
    locale_t _saved;

    // Made on first use: static patterns elsewhere compile during start-up.
    static locale_t CLocale()
    {
        static locale_t c = newlocale(LC_ALL_MASK, "C", 0);
        return c;
    }
};

// re_compile_pattern reports an error by its message; find the code whose
// regerror text it is.
int CodeOfMessage(const char* message)
{
    char text[128];
    for (int code = REG_BADPAT; code <= REG_ERPAREN; code++) {
        regerror(code, 0, text, sizeof text);
        if (strcmp(text, message) == 0)
            return code == REG_ERPAREN ? REG_EPAREN : code;
    }
    return REG_BADPAT;
}

// Compiles a pattern that holds NUL bytes, which regcomp cannot see past,
// with the same syntax and anchoring that regcomp(REG_EXTENDED) gives.
int CompileBytes(regex_t* re, const char* pattern, int length, int icase)
{
    re->fastmap = static_cast<char*>(malloc(256));  // released by regfree
    reg_syntax_t saved = re_syntax_options;
    re_syntax_options = RE_SYNTAX_POSIX_EXTENDED | (icase ? RE_ICASE : 0);
    const char* error = re_compile_pattern(pattern, length, re);
    re_syntax_options = saved;
    re->newline_anchor = 0;
    if (error)
        return CodeOfMessage(error);
    re_compile_fastmap(re);
    return 0;
}

// Appends entry d of the match list; nothing when the list is shorter.
void PasteGroup(std::string& buf, int digit, const SStringList& matches)
{
    SString group = matches.Get(digit);
    buf.append(group.Data() ? group.Data() : "", group.Length());
}

char ControlByte(char c)
{
    switch (c) {
    case '0': return '\0';
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case 'v': return '\v';
    default: return c;
    }
}

// Expands the template onto buf.  Returns 0 when the template ends inside
// an escape; buf then holds a partial expansion that the caller drops.
int ExpandTemplate(std::string& buf, const SString& tmpl, const SStringList& matches)
{
    const char* t = tmpl.Data() ? tmpl.Data() : "";
    int n = tmpl.Length();
    int i = 0;
    while (i < n) {
        char c = t[i];
        if (c != '\\' && c != '$') {
            buf += c;
            i++;
            continue;
        }
        char next = i + 1 < n ? t[i + 1] : '\0';
        i += 2;
        if (next >= '1' && next <= '9')
            PasteGroup(buf, next - '0', matches);
        else if (c == '\\')
            buf += ControlByte(next);
        else if (next == '&')
            PasteGroup(buf, 0, matches);
        else {
            std::cerr << "Unescaped '$' in regular expression replacement string" << std::endl;
            buf += '$';
        }
    }
    if (i == n)
        return 1;
    std::cerr << "Invalid replacement string in regular expression" << std::endl;
    return 0;
}

}  // namespace

void AppendPasteBuffer(SString* out, const SString& replacement, const SStringList& matches)
{
    std::string buf;
    if (ExpandTemplate(buf, replacement, matches))
        *out += SString(buf.data(), static_cast<int>(buf.size()));
}

SRegex::SRegex() : _regex(0), _matches(0), _status(-1) { }

SRegex::SRegex(const SString& pattern, const char* flags) : _regex(0), _matches(0), _status(-1)
{
    _Init(pattern, flags);
}

SRegex::~SRegex()
{
    _Free();
}

void SRegex::Set(const SString& pattern, const char* flags)
{
    _Free();
    _Init(pattern, flags);
}

void SRegex::_Init(const SString& pattern, const char* flags)
{
    _regex = new regex_t();
    _matches = new regmatch_t[MatchEntries];
    for (int i = 0; i < MatchEntries; i++)
        _matches[i].rm_so = _matches[i].rm_eo = -1;
    int length = pattern.Length();
    if (length == 0) {
        _status = EmptyPattern;
        return;
    }
    const char* bytes = pattern.Data();
    int icase = HasFlag(flags, 'i');
    CLocaleScope c;
    if (memchr(bytes, '\0', length))
        _status = CompileBytes(_regex, bytes, length, icase);
    else
        _status = regcomp(_regex, bytes, REG_EXTENDED | (icase ? REG_ICASE : 0));
}

void SRegex::_Free()
{
    if (!_regex)
        return;
    regfree(_regex);
    delete _regex;
    delete[] _matches;
    _regex = 0;
    _matches = 0;
    _status = -1;
}

void SRegex::Debug() const
{
    if (_status == 0) {
        std::cerr << "SRegex is OK" << std::endl;
        return;
    }
    if (_status == -1) {
        std::cerr << "SRegex was never compiled" << std::endl;
        return;
    }
    // regerror aborts on a code it does not know, so only its own codes
    // are handed to it.
    char reason[100];
    if (_status > REG_NOERROR && _status <= REG_ERPAREN)
        regerror(_status, _regex, reason, sizeof reason);
    else if (_status == EmptyPattern)
        strcpy(reason, "empty regular expression");
    else
        snprintf(reason, sizeof reason, "unknown error code %d", _status);
    std::cerr << "SRegex didn't compile because of the following reason:" << std::endl
              << reason << std::endl;
}

int SRegex::_Groups() const
{
    int groups = static_cast<int>(_regex->re_nsub);
    return groups < MatchEntries - 1 ? groups : MatchEntries - 1;
}

int SRegex::_Exec(const SString& subject, int start) const
{
    int length = subject.Length();
    if (_status != 0 || start < 0 || start > length)
        return 0;
    _matches[0].rm_so = start;
    _matches[0].rm_eo = length;
    _matches[EngineEntries].rm_so = _matches[EngineEntries].rm_eo = -1;
    int flags = REG_STARTEND | (start > 0 ? REG_NOTBOL : 0);
    CLocaleScope c;
    const char* bytes = subject.Data() ? subject.Data() : "";
    return regexec(_regex, bytes, EngineEntries, _matches, flags) == 0;
}

SStringList SRegex::Match(const SString& subject, int start) const
{
    SStringList result;
    if (!_Exec(subject, start))
        return result;
    for (int i = 0; i <= _Groups(); i++) {
        const regmatch_t& m = _matches[i];
        result.Push(subject.Segment(m.rm_so, m.rm_eo - m.rm_so));
    }
    return result;
}

std::pair<int, int> SRegex::MatchInfo(int i) const
{
    if (!_regex || i < 0 || i > _Groups())
        return std::make_pair(-1, -1);
    return std::make_pair(static_cast<int>(_matches[i].rm_so), static_cast<int>(_matches[i].rm_eo));
}

SStringList SRegex::Subst(SString& target, const SString& replacement, const char* flags) const
{
    SStringList result;
    if (_status != 0)
        return result;
    int global = HasFlag(flags, 'g');
    const char* bytes = target.Data() ? target.Data() : "";
    int length = target.Length();
    std::string head;
    int p = 0;
    int tail = length;
    do {
        SStringList m = Match(target, p);
        if (m.Count() == 0)
            break;
        int s = _matches[0].rm_so;
        int e = _matches[0].rm_eo;
        head.append(bytes + p, s - p);
        // A template that cannot be expanded here cannot be expanded for
        // any match: give up without touching the target.
        if (!ExpandTemplate(head, replacement, m))
            return SStringList();
        // An empty match with "g" repeats forever by design; like any string
        // the result stops at the size limit.
        if (head.size() >= static_cast<size_t>(SString::AllocLimit - 1))
            std::exit(108);
        result = m;
        tail = e;
        p = e;
    } while (global && p < length);
    if (result.Count() == 0)
        return result;
    head.append(bytes + tail, length - tail);
    target = SString(head.data(), static_cast<int>(head.size()));
    return result;
}

int HasFlag(const char* flags, char letter) { return flags && strchr(flags, letter); }
