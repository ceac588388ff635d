// SRegex and SPerlRegex: the library's compiled regular expressions.
//
// SRegex owns one pattern compiled in POSIX extended syntax by the C
// library's regcomp, together with an 11-entry table that holds the offsets
// of its last match.  It finds the first match at or after an offset of an
// SString, hands back the whole match and the groups as an SStringList,
// reports their offsets (MatchInfo) and substitutes with a replacement
// template (AppendPasteBuffer).  SPerlRegex is an SRegex whose pattern text
// is written in the Perl shorthand (\d, \s, \w, \t, ...): PerlRegexConv turns
// it into POSIX extended syntax first.  The pattern members of SString and
// SStringList (M, S, Split, Grep) are built on both classes; GrepError is
// their diagnostic.
//
// Bytes are bytes: patterns and subjects are delimited by their lengths, so
// both may hold NUL bytes, and matching never depends on the program's locale
// (the C locale is in force while the engine runs).  "." and bracket
// expressions match a newline; "." does not match a NUL byte (the engine's
// rule; "[^\n]" does).  "^" and "$" refer only to the ends of the searched
// range, never to line breaks inside it.
//
// Failure policy: nothing throws.  A pattern that does not compile leaves
// its error code in the status: Match and Subst then find nothing.  A Perl
// pattern that does not translate, a bad replacement template and a bad Grep
// test are reported on the standard error stream, in the exact texts given
// below, and the operation degrades to "no match".
//
// Not thread-safe: Match and Subst are const but overwrite the match table
// that MatchInfo reads, so one object must not be used from two threads at
// once.  Distinct objects are independent.
#ifndef TARNWICK_SREGEX_H
#define TARNWICK_SREGEX_H

#include <regex.h>

#include <utility>

#include "SString.h"
#include "SStringList.h"

class SRegex {
public:
    // Entries in the match table: the whole match and up to 10 groups.
    static constexpr int MatchEntries = 11;
    // The status of an object whose pattern was empty.  The C library
    // compiles "" into a pattern that matches everywhere; this wrapper
    // refuses it, so that a pattern which failed to translate (and is
    // therefore compiled as "") matches nothing.  The value lies outside
    // the C library's range of error codes.
    static constexpr int EmptyPattern = 100;

    // Never compiled: no allocations, status -1.
    SRegex();
    // Compiles pattern at once; a failure is recorded in the status.  "i" in
    // flags (which may be null) ignores case; other letters are ignored.
    explicit SRegex(const SString& pattern, const char* flags = 0);
    virtual ~SRegex();
    SRegex(const SRegex&) = delete;
    SRegex& operator=(const SRegex&) = delete;

    // Releases the old pattern and compiles the new one; any number of times.
    virtual void Set(const SString& pattern, const char* flags = 0);
    // On the standard error stream: "SRegex is OK", "SRegex was never
    // compiled", or "SRegex didn't compile because of the following reason:"
    // followed by a line with the reason.
    virtual void Debug() const;

    // 0 after a successful compile, -1 when nothing is compiled, otherwise
    // the compile error (one of the C library's REG_ codes, or EmptyPattern).
    int Status() const { return _status; }

    // The first match that begins at or after byte offset start: a list of
    // the whole match and every group (a group that took no part is an empty
    // string).  No match, a start outside 0..length, or a pattern that did
    // not compile give an undefined, empty list.  "^" matches only at offset
    // 0: a start > 0 is never the beginning of a line; "$" matches at the
    // subject's end.  Only ten entries are asked of the engine, so a tenth
    // group is reported as not taking part (intended: translated patterns
    // are limited to ten groups, and the template reaches only groups 1-9).
    SStringList Match(const SString& subject, int start = 0) const;
    // (start, end) of entry i of the last match, end one past the last byte,
    // counted from the start of the subject.  (-1, -1) for a group that took
    // no part, for i < 0, and for i above the number of groups.  It does not
    // check that a match happened: after a failed search the table holds
    // whatever the engine left there.
    std::pair<int, int> MatchInfo(int i) const;
    // Replaces the first match in target (every match with "g" in flags)
    // with the expansion of the replacement template, in place.  Matching
    // always runs on the unchanged target; target is only rewritten when
    // something matched.  Returns the match list of the last match, or an
    // undefined, empty list (target untouched) when nothing matched, the
    // pattern did not compile, or the template is invalid (its diagnostic is
    // printed once).  An empty match does not advance the search:
    // with "g", a pattern that matches the empty string before the end of
    // the target never returns (intended; do not use such patterns with "g").
    SStringList Subst(SString& target, const SString& replacement,
        const char* flags = 0) const;

protected:
    regex_t* _regex;       // owned; null when nothing is compiled
    regmatch_t* _matches;  // owned; MatchEntries entries
    int _status;

    // Allocates and compiles; a pattern of length 0 is refused with
    // EmptyPattern.  On failure the allocations are kept until _Free.
    void _Init(const SString& pattern, const char* flags);
    // Releases both allocations and returns to "never compiled".
    void _Free();
    // One search from start; fills the match table and returns 1 on a match.
    int _Exec(const SString& subject, int start) const;
    // Number of groups that the match table reports (at most 10).
    int _Groups() const;

    friend class SString;
    friend class SStringList;
};

// A regular expression written in the Perl shorthand.  It keeps the text as
// given and its POSIX translation, and compiles the translation.
class SPerlRegex : public SRegex {
public:
    // Both texts "", nothing compiled.
    SPerlRegex();
    // Translates and always compiles the translation: a pattern that does
    // not translate (or is empty) ends in the failed state and matches
    // nothing.
    explicit SPerlRegex(const SString& perl, const char* flags = 0);
    virtual ~SPerlRegex();

    // Translates and compiles only a non-empty translation.  Intended: after
    // a failed translation (or an empty pattern) the old compiled pattern
    // stays in force, while Perl() already holds the new text and Regular()
    // is empty.
    virtual void Set(const SString& perl, const char* flags = 0);
    // "Perl Regex:    '<text>'" and "Regular Regex: '<translation>'", one
    // line each, with bytes escaped as SString::Debug(0) does.
    virtual void Debug() const;

    const SString& Perl() const { return _perl; }
    const SString& Regular() const { return _regular; }

protected:
    SString _perl;
    SString _regular;
};

// Translates a Perl-syntax pattern into POSIX extended syntax: \d \s \w and
// \D \S \W \N become bracket expressions (inside brackets \d \s \w become
// their ranges; \D \S \W \N are errors there), \f \n \r \t \v become the
// control bytes, any other escape stays as it is.  Checks that brackets and
// parentheses are balanced and that there are at most 10 groups.  On error
// prints the diagnostic through RegexError and returns an undefined string.
SString PerlRegexConv(const SString& perl);

// Translation error codes; their texts are those RegexError prints.
enum {
    RegexTrailingBackslash = 1,  // not raised by PerlRegexConv
    RegexTooManyGroups = 2,
    RegexUnmatchedOpen = 3,
    RegexUnterminatedRange = 4,
    RegexUnmatchedClose = 5,
    RegexUnmatchedBracket = 6,
    RegexClassInRange = 7,
    RegexPrematureEnd = 8
};

// On the standard error stream: "Regular expression error -- compile
// aborted.  Reason:", a tab and the text of code, then a tab and "The
// erroneous expression is '<pattern>'.".  An unknown code prints no reason.
void RegexError(int code, const SString& pattern);

// Expands the replacement template against a match list (whole match first)
// and appends the result to *out.  \1-\9 and $1-$9 paste a group (nothing
// for a group beyond the list), $& the whole match, \0 a NUL byte, \f \n \r
// \t \v the control bytes, and a backslash before any other byte gives that
// byte.  A '$' before any other byte prints "Unescaped '$' in regular
// expression replacement string", appends "$" and drops that byte
// (intended).  A template ending in a lone '\' or '$' prints "Invalid
// replacement string in regular expression" and leaves *out unchanged.
void AppendPasteBuffer(SString* out, const SString& replacement, const SStringList& matches);

// 1 when the flag string (which may be null) holds letter: only the presence
// of a letter counts ("i" ignore case, "g" every match).
int HasFlag(const char* flags, char letter);

// The pattern members declared with SString and SStringList behave as follows.
//
// SString::M(pattern, flags) compiles an SPerlRegex and returns Match from
// offset 0: the whole match and the groups, or an undefined, empty list.
//
// SString::S(pattern, replacement, flags) substitutes in place through Subst
// and returns its result.  An empty (or null) pattern inserts instead: with
// "g" before every byte and once at the end ("abc" -> "-a-b-c-", "" -> "-"),
// otherwise at the front; the result is then the list holding "".
//
// SString::Split(re, limit) returns the fields between the matches of re; a
// limit of 0 means none, 1 or a negative limit gives the whole string.
// Intended, and kept so: a leading separator gives a leading empty field,
// adjacent separators an empty field between them, a trailing separator no
// field; empty fields at a match do not count against the limit (so the list
// may hold more than limit items); an empty match splits off one byte.  An
// empty string, or a pattern that did not compile, gives an undefined, empty
// list.  A text separator is a Perl pattern (Split(".") splits at every
// byte); an empty or null one splits into bytes, the last item holding the
// rest when limit is reached.  Split(c) with a character is literal
// (Split('.') splits at dots), except Split(' '), which splits at runs of
// blanks, tabs, CRs and newlines and drops the empty field that leading
// white space makes (white space alone gives one empty item).
//
// SStringList::Grep(re, mode) returns the items that match (mode 1) or the
// others; an undefined list or a pattern that did not compile gives an
// undefined list.
//
// SStringList::Grep(test, rest) reads the test left to right: any number of
// "!" (each toggles negation), blanks, then "/re/opts", "m<d>re<d>opts",
// "s<d>re<d>replacement<d>opts" or a file test "-d", "-e", "-f", "-r", "-w",
// "-x" applied to each item as a path (lstat-based for -d and -f).  Options:
// "i" ignores case, "g" substitutes every match.  A backslash keeps itself
// and the next byte, so "\/" reaches the pattern as "\/".  A missing closing
// delimiter is not an error.  A substitution edits the items of this list in
// place (only this handle sees it: the list is unshared first) and passes
// the items it changed.  Returns the passing items (the failing ones under
// negation) and stores the others in *rest.  A pattern that does not compile
// returns an undefined list and leaves *rest undefined; an unknown file test
// prints "Grep: invalid file test" and passes nothing.  *rest may be this
// list.

// Grep diagnostic codes.
enum {
    GrepNoTest = 1,       // "Grep called without a valid test field."
    GrepUnknownTest = 2,  // "Unknown test type for Grep function"
    GrepIncomplete = 3    // "Incomplete expression in Grep function call"
};

// Prints the text of code (if known) and "The test field for Grep was
// '<test>'" on the standard error stream.
void GrepError(int code, const SString& test);

#endif
