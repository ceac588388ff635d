// Date stamps.  The RFC 822 zone is worked out from the local and UTC
// breakdowns of one instant, with nothing beyond standard C (no tm_gmtoff).

#include "Sdatetime.h"

namespace {

int timeZoneReady = 0;

void SetUpTimeZone()
{
    if (!timeZoneReady) {
        tzset();
        timeZoneReady = 1;
    }
}

// strftime into a 64-byte buffer; undefined when tm is null or the text
// does not fit.
SString Format(const struct tm* tm, const char* format)
{
    char text[64];
    size_t n = tm ? strftime(text, sizeof text, format, tm) : 0;
    return n ? SString(text, (int)n) : SString();
}

// A copy of the broken-down time, since gmtime and localtime share one
// static buffer; false when the conversion fails.
bool BreakDown(struct tm* (*convert)(const time_t*), time_t when, struct tm* out)
{
    struct tm* tm = convert(&when);
    if (tm)
        *out = *tm;
    return tm != 0;
}

int DayCompare(const struct tm& a, const struct tm& b)
{
    if (a.tm_year != b.tm_year)
        return a.tm_year < b.tm_year ? -1 : 1;
    if (a.tm_yday != b.tm_yday)
        return a.tm_yday < b.tm_yday ? -1 : 1;
    return 0;
}

SString WithoutByte(const SString& s, int i)
{
    return s.Segment(0, i) + s.Segment(i + 1, s.Length());
}

// Seconds east of UTC.  Hours and minutes alone would be wrong by a day
// whenever the local date is not the UTC date.
long ZoneOffset(const struct tm& local, const struct tm& utc)
{
    long offset = (local.tm_hour - utc.tm_hour) * 3600L + (local.tm_min - utc.tm_min) * 60L;
    return offset + 86400L * DayCompare(local, utc);
}

// "+hhmm" / "-hhmm".
SString ZoneText(long offset)
{
    char sign = '+';
    if (offset < 0) {
        sign = '-';
        offset = -offset;
    }
    if (offset >= 86401)
        offset %= 86400;
    char text[5] = { sign,
                     (char)('0' + (offset / 36000) % 3), (char)('0' + (offset / 3600) % 10),
                     (char)('0' + (offset / 600) % 6), (char)('0' + (offset / 60) % 10) };
    return SString(text, 5);
}

}  // namespace

SString RFC822Date(time_t when)
{
    SetUpTimeZone();
    struct tm utc, local;
    if (!BreakDown(gmtime, when, &utc) || !BreakDown(localtime, when, &local))
        return SString();
    SString date = Format(&local, "%a, %d %b %Y %H:%M:%S ");
    if (!date.Defined())
        return date;
    if (date[5] == '0')
        date = WithoutByte(date, 5);
    return date + ZoneText(ZoneOffset(local, utc));
}

SString RFC822Date()
{
    return RFC822Date(time(0));
}

SString MessageIdDate()
{
    time_t now = time(0);
    return Format(gmtime(&now), "%Y%m%d%H%M%S");
}

SString LogFileDate()
{
    SetUpTimeZone();
    time_t now = time(0);
    return Format(localtime(&now), "%Y%m%d%H%M%S");
}

int DaysSince1970()
{
    return (int)(time(0) / 86400);
}
