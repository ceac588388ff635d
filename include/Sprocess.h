// The process environment and the process id.
#ifndef TARNWICK_SPROCESS_H
#define TARNWICK_SPROCESS_H

#include "SString.h"

// The variable's value; a defined empty string when unset.
SString GetEnv(const char* name);
SString GetEnv(const SString& name);
// Sets name=value; the text handed to putenv is never freed.
void PutEnv(const SString& name, const SString& value);
// The process id in decimal.
SString ProcessIdString();

#endif
