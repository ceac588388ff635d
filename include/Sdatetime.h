// Date stamps for message headers, message ids and log files.
// Failure policy: a formatting failure gives an undefined string.
#ifndef TARNWICK_SDATETIME_H
#define TARNWICK_SDATETIME_H

#include "SString.h"

// Local time as in "Mon, 5 Feb 1996 14:03:07 +0100".
SString RFC822Date();
// UTC as 14 digits, "%Y%m%d%H%M%S".
SString MessageIdDate();
// Local time as 14 digits, "%Y%m%d%H%M%S".
SString LogFileDate();
// Whole days since 1970-01-01 UTC.
int DaysSince1970();

#endif
