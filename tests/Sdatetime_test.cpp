#include "Sdatetime.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <tuple>

namespace {

// Runs work in a child process whose TZ is zone and returns what it made,
// so that no zone leaks into other tests.
std::string InZone(const char* zone, const std::function<SString()>& work)
{
    int fds[2];
    if (pipe(fds) != 0)
        return "pipe failed";
    if (fork() == 0) {
        setenv("TZ", zone, 1);
        tzset();
        SString text = work();
        _exit(write(fds[1], text.Data(), text.Length()) == text.Length() ? 0 : 1);
    }
    close(fds[1]);
    char buf[256];  // one short write, read whole
    ssize_t n = read(fds[0], buf, sizeof buf);
    close(fds[0]);
    wait(nullptr);
    return std::string(buf, n > 0 ? n : 0);
}

SString Strftime(const char* format, const struct tm* tm)
{
    char buf[64];
    return SString(buf, (int)strftime(buf, sizeof buf, format, tm));
}

}  // namespace

TEST(RFC822Date, KnownInstantsInZones)
{
    // Expected texts from `date -R`, with the day's leading zero removed.
    const std::tuple<const char*, time_t, const char*> rows[] = {
        {"UTC", 823525387, "Mon, 5 Feb 1996 13:03:07 +0000"},
        {"Asia/Kolkata", 823525387, "Mon, 5 Feb 1996 18:33:07 +0530"},
        {"Pacific/Chatham", 1721044800, "Tue, 16 Jul 2024 00:45:00 +1245"},
        {"Pacific/Chatham", 1704024000, "Mon, 1 Jan 2024 01:45:00 +1345"},
        {"America/Los_Angeles", 823575600, "Mon, 5 Feb 1996 19:00:00 -0800"},
        {"America/New_York", 1704074400, "Sun, 31 Dec 2023 21:00:00 -0500"},
    };
    for (const auto& [zone, when, expected] : rows)
        EXPECT_EQ(InZone(zone, [when = when] { return RFC822Date(when); }), expected) << zone;
}

// Pago Pago (-1100) and Kiritimati (+1400): at any hour one of them is on
// another day than UTC.
TEST(Stamps, NowMatchesStrftimeInZones)
{
    for (const char* zone : {"UTC", "America/New_York", "Asia/Kolkata", "Pacific/Chatham",
                             "Pacific/Pago_Pago", "Pacific/Kiritimati"}) {
        std::string verdict = InZone(zone, [] {
            for (;;) {  // until the three stamps and the expected ones share a second
                time_t now = time(0);
                SString got = RFC822Date() + "|" + MessageIdDate() + "|" + LogFileDate();
                struct tm local = *localtime(&now);
                SString expected = Strftime("%a, ", &local) + SString(local.tm_mday) +
                                   Strftime(" %b %Y %H:%M:%S %z|", &local) +
                                   Strftime("%Y%m%d%H%M%S|", gmtime(&now)) +
                                   Strftime("%Y%m%d%H%M%S", &local);
                if (time(0) == now)
                    return got == expected ? SString("ok") : got + " != " + expected;
            }
        });
        EXPECT_EQ(verdict, "ok") << zone;
    }
}
