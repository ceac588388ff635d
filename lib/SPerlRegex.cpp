// SPerlRegex and PerlRegexConv: patterns written in the Perl shorthand,
// rewritten into POSIX extended syntax before they are compiled.
//
// The translator walks the pattern once.  Outside a bracket expression the
// class escapes become whole bracket expressions; inside one they become
// ranges, and the negated classes cannot be expressed there at all.  Any
// other escape is passed on untouched for the engine to read.  Parentheses
// are counted so that a pattern never has more groups than SRegex reports.
#include "SRegex.h"

#include <iostream>
#include <string>

namespace {

const int MaxGroups = 10;

const char* const ErrorTexts[] = {
    0,
    "Regular expression can't end with a single backslash.",
    "Too many parenthesized elements in regular expression (maximum 10).",
    "Unmatched opening parenthesis in regular expression.",
    "Unterminated range [...] in regular expression.",
    "Unmatched closing parenthesis in regular expression.",
    "Unmatched closing bracket in regular expression.",
    "Special characters not allowed in a range (\\D, \\S, or \\W)",
    "Regular expression terminated prematurely.",
};
const int ErrorCount = sizeof ErrorTexts / sizeof ErrorTexts[0];

// The control byte for \f \n \r \t \v, or 0 for any other letter.
char ControlEscape(char c)
{
    switch (c) {
    case 'f': return '\f';
    case 'n': return '\n';
    case 'r': return '\r';
    case 't': return '\t';
    case 'v': return '\v';
    default: return 0;
    }
}

// The members of the class behind a class escape, or null for other bytes.
const char* ClassMembers(char c)
{
    switch (c) {
    case 'd':
    case 'D': return "0-9";
    case 's':
    case 'S': return " \f\n\r\t\v";
    case 'w':
    case 'W': return "A-Za-z_0-9";
    case 'N': return "\n";
    default: return 0;
    }
}

int IsNegatedClass(char c)
{
    return c == 'D' || c == 'S' || c == 'W' || c == 'N';
}

// Appends the translation of the escape "\c"; returns an error code or 0.
int TranslateEscape(std::string& out, char c, int inBracket)
{
    if (char control = ControlEscape(c)) {
        out += control;
        return 0;
    }
    const char* members = ClassMembers(c);
    if (!members) {
        out += '\\';
        out += c;
        return 0;
    }
    if (inBracket) {
        if (IsNegatedClass(c))
            return RegexClassInRange;
        out += members;
        return 0;
    }
    out += IsNegatedClass(c) ? "[^" : "[";
    out += members;
    out += ']';
    return 0;
}

// The state of one translation: input, position, output, group counts.
class Translator {
public:
    explicit Translator(const SString& perl)
        : _in(perl.Data() ? perl.Data() : ""), _length(perl.Length()), _pos(0),
          _opened(0), _closed(0) { }

    // Returns 0 and the translation in out, or the error code.
    int Run(std::string& out)
    {
        while (_pos < _length) {
            if (int error = _Step(out))
                return error;
        }
        if (_opened > _closed)
            return RegexUnmatchedOpen;
        return _pos == _length ? 0 : RegexPrematureEnd;
    }

private:
    const char* _in;
    int _length;
    int _pos;
    int _opened;
    int _closed;

    // The byte at the position; the NUL behind the input past its end.
    char _Peek() const { return _pos < _length ? _in[_pos] : '\0'; }

    // The byte after a backslash.  A backslash at the very end takes the
    // NUL behind the input and leaves the position past the end, which the
    // caller reports as a premature end (or as an unterminated range).
    int _Escape(std::string& out, int inBracket)
    {
        char next = _Peek();
        _pos++;
        return TranslateEscape(out, next, inBracket);
    }

    int _Step(std::string& out)
    {
        char c = _in[_pos++];
        switch (c) {
        case '\\':
            return _Escape(out, 0);
        case '(':
            if (++_opened > MaxGroups)
                return RegexTooManyGroups;
            out += c;
            return 0;
        case ')':
            if (_opened < _closed + 1)
                return RegexUnmatchedClose;
            _closed++;
            out += c;
            return 0;
        case ']':
            return RegexUnmatchedBracket;
        case '[':
            return _Bracket(out);
        default:
            out += c;
            return 0;
        }
    }

    // A bracket expression, after its "[".  A leading "^" and a "]" right
    // after it (or after the "[") are members, not the end.
    int _Bracket(std::string& out)
    {
        out += '[';
        if (_Peek() == '^') {
            out += '^';
            _pos++;
        }
        if (_Peek() == ']') {
            out += ']';
            _pos++;
        }
        while (_pos < _length) {
            char c = _in[_pos++];
            if (c == '\\') {
                if (int error = _Escape(out, 1))
                    return error;
                continue;
            }
            out += c;
            if (c == ']')
                return 0;
        }
        return RegexUnterminatedRange;
    }
};

}  // namespace

SString PerlRegexConv(const SString& perl)
{
    std::string out;
    Translator translator(perl);
    if (int error = translator.Run(out)) {
        RegexError(error, perl);
        return SString();
    }
    return SString(out.data(), static_cast<int>(out.size()));
}

void RegexError(int code, const SString& pattern)
{
    std::cerr << "Regular expression error -- compile aborted.  Reason:\n\t";
    if (code > 0 && code < ErrorCount)
        std::cerr << ErrorTexts[code] << std::endl;
    std::cerr << "\tThe erroneous expression is '";
    pattern.Debug(0);
    std::cerr << "'." << std::endl;
}

SPerlRegex::SPerlRegex() : _perl(""), _regular("") { }

SPerlRegex::SPerlRegex(const SString& perl, const char* flags)
    : _perl(perl), _regular(PerlRegexConv(perl))
{
    SRegex::Set(_regular, flags);
}

SPerlRegex::~SPerlRegex() { }

void SPerlRegex::Set(const SString& perl, const char* flags)
{
    _perl = perl;
    _regular = PerlRegexConv(perl);
    if (_regular.Length() > 0)
        SRegex::Set(_regular, flags);
}

void SPerlRegex::Debug() const
{
    std::cerr << "Perl Regex:    '";
    _perl.Debug(0);
    std::cerr << "'" << std::endl
              << "Regular Regex: '";
    _regular.Debug(0);
    std::cerr << "'" << std::endl;
}
