// Base64 for MIME bodies.
#ifndef TARNWICK_SMIME_H
#define TARNWICK_SMIME_H

#include "SString.h"

// Lines of 76 characters, each ended by "\r\n" (the last one too).
SString EncodeBase64(const SString& s);
// Skips everything outside the alphabet; stops after the first padded group.
SString DecodeBase64(const SString& s);

#endif
