// The process environment and the process id.  The server's modules read
// their settings ("Tarnwick", "ModuleName", "DispatchSocket") from the
// environment at the moment of use, through GetEnv.
//
// Failure policy: no function fails visibly except PutEnv, which returns 0.
// Not thread-safe: getenv and putenv work on the one process environment.
#ifndef TARNWICK_SPROCESS_H
#define TARNWICK_SPROCESS_H

#include "SString.h"

// The variable's value (a copy); a defined empty string when the variable
// is unset, so unset and set-to-empty look alike.  A null or undefined name
// is looked up as "", which is never set.
SString GetEnv(const char* name);
SString GetEnv(const SString& name);
// Sets name=value in the process environment; 1 on success, 0 when putenv
// fails.  The text handed to putenv is allocated here and never freed, since
// the environment keeps pointing at it: each call leaks its few bytes, by
// design.
int PutEnv(const SString& name, const SString& value);
// The process id in decimal ("%ld").
SString ProcessIdString();

#endif
