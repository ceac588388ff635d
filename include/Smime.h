// Base64 (standard alphabet, "=" padding) for MIME bodies.
//
// Encoding writes MIME's line form: lines of 76 characters, every line,
// the last one included, ended by "\r\n".  Decoding is lenient the other
// way: it takes any line form and never reports an error.
//
// Failure policy: none needed; both directions accept every input.  The
// string limit applies: text that would reach 20,000,001 bytes ends the
// process with status 108, so EncodeBase64 takes at most about 14.6 MB.
#ifndef TARNWICK_SMIME_H
#define TARNWICK_SMIME_H

#include "SString.h"

// The Base64 text of the bytes in lines of 76 characters, each ended by
// "\r\n": 57 bytes give exactly one line.  A defined empty string gives
// "\r\n" (one empty line); an undefined string gives an undefined string.
SString EncodeBase64(const SString& s);
// The decoded bytes, as a defined string (empty for empty input).  Bytes
// outside the alphabet (line ends, blanks, anything else) are skipped, and
// so is a trailing group of fewer than 4 characters.  Decoding ends with the
// first group whose last character is "=" ("xx==" gives 1 byte, "xxx=" 2):
// whatever follows is ignored.  A "=" elsewhere in a group is not Base64:
// it counts as the value 64 in the bit arithmetic, which garbles that group
// without any error; intended.
SString DecodeBase64(const SString& s);

#endif
