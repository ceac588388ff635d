// MD5 digests in hexadecimal, and the salted form in which account
// passwords are stored and checked.
//
// The stored form is 64 hexadecimal digits: digest then salt, 32 each.  The
// salt is the MD5 of ten random bytes, the process id and the date; the
// digest is the MD5 of salt, PasswordSeparatorFirst, password,
// PasswordSeparatorSecond, salt.  Every stored password depends on the two
// separator bytes: they must never change.
//
// Failure policy: nothing fails; a stored form of the wrong length simply
// does not match.
#ifndef TARNWICK_SSECURITY_H
#define TARNWICK_SSECURITY_H

#include "SString.h"

// The separators of the stored form: a printable letter and a byte above
// 127, fixed for good.
constexpr char PasswordSeparatorFirst = 'K';
constexpr char PasswordSeparatorSecond = '\xB7';

// The MD5 digest of the bytes (RFC 1321), as 32 lower-case hexadecimal
// digits; an undefined string digests as an empty one.
SString MD5(const SString& s);
// Every byte as two lower-case hexadecimal digits, high nibble first
// ("\x00\xff" gives "00ff"); a defined empty string for an empty or
// undefined input.
SString Hex(const SString& s);
// A newly salted stored form of password, 64 hexadecimal digits.  Two
// calls give different forms for the same password.  Uses RandomInt, so it
// seeds rand on its first use.
SString StringCopy(const SString& password);
// 1 when password matches the stored form, else 0 (always 0 unless stored
// is exactly 64 bytes long).  The digits are compared in full whatever
// differs, and as written: upper-case digits do not match.
int StringComp(const SString& password, const SString& stored);

#endif
