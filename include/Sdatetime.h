// Date stamps: the RFC 822 date of message headers, the UTC stamp that
// message ids are made of, the local stamp of log file names, and a day
// count.
//
// Local time is the process's time zone (TZ); tzset runs once, before the
// first local-time stamp of the process.  The stamps read the clock once
// each.
//
// Failure policy: a stamp that cannot be formatted is an undefined string;
// nothing is printed.  Not thread-safe: gmtime and localtime are used in
// their non-reentrant forms and the tzset flag is unguarded.
#ifndef TARNWICK_SDATETIME_H
#define TARNWICK_SDATETIME_H

#include <time.h>

#include "SString.h"

// The current local time as an RFC 822 date with a numeric zone, e.g.
// "Mon, 5 Feb 1996 14:03:07 +0100": the day of the month has no leading
// zero, the zone is sign, hours and minutes ("+0530", "-0500", "+1345"),
// and "+0000" for UTC.  The day and month names are strftime's: English
// unless the program has chosen another LC_TIME locale.  Undefined if
// strftime fails.
SString RFC822Date();
// The same for a given time instead of now.
SString RFC822Date(time_t when);
// The current UTC time as 14 digits, "%Y%m%d%H%M%S" ("19960205130307");
// undefined if strftime fails.
SString MessageIdDate();
// The current local time as 14 digits, "%Y%m%d%H%M%S"; undefined if
// strftime fails.
SString LogFileDate();
// Whole days since 1970-01-01 00:00 UTC (seconds / 86400, truncated).
int DaysSince1970();

#endif
