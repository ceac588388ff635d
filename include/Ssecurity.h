// MD5 digests in hexadecimal, and the salted stored form of passwords.
#ifndef TARNWICK_SSECURITY_H
#define TARNWICK_SSECURITY_H

#include "SString.h"

// 32 lower-case hexadecimal digits.
SString MD5(const SString& s);
// Two lower-case hexadecimal digits per byte; "" for empty or undefined.
SString Hex(const SString& s);
// The 64-digit stored form of a password: digest, then salt.
SString StringCopy(const SString& password);
// 1 when password matches the stored form, else 0.
int StringComp(const SString& password, const SString& stored);

#endif
