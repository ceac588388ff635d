// Small conversions between the library's strings and std::string, shared by
// the test programs.
#ifndef TARNWICK_TEST_TEXT_HELPERS_H
#define TARNWICK_TEST_TEXT_HELPERS_H

#include "SString.h"
#include "SStringList.h"

#include <string>

// The bytes of s; an undefined string gives "".
inline std::string Str(const SString& s) { return std::string(s.Data() ? s.Data() : "", s.Length()); }

// An SString of exactly these bytes, NULs included.
inline SString Bytes(const std::string& s) { return SString(s.data(), static_cast<int>(s.size())); }

// Items joined by "|" (empty items stay visible); "-" for no items.
inline std::string Joined(const SStringList& l)
{
    std::string out = l.Count() ? "" : "-";
    for (int i = 0; i < l.Count(); i++)
        out += (i ? "|" : "") + Str(l.Get(i));
    return out;
}

#endif
