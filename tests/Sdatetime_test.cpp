#include "Sdatetime.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <string>

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
    std::string text;
    char buf[256];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;)
        text.append(buf, n);
    close(fds[0]);
    wait(nullptr);
    return text;
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
    struct { const char* zone; time_t when; const char* expected; } rows[] = {
        {"UTC", 823525387, "Mon, 5 Feb 1996 13:03:07 +0000"},
        {"Europe/Berlin", 823525387, "Mon, 5 Feb 1996 14:03:07 +0100"},
        {"America/New_York", 823525387, "Mon, 5 Feb 1996 08:03:07 -0500"},
        {"Asia/Kolkata", 823525387, "Mon, 5 Feb 1996 18:33:07 +0530"},
        {"Pacific/Chatham", 823525387, "Tue, 6 Feb 1996 02:48:07 +1345"},
        {"Pacific/Chatham", 1721044800, "Tue, 16 Jul 2024 00:45:00 +1245"},
        {"America/Los_Angeles", 823575600, "Mon, 5 Feb 1996 19:00:00 -0800"},
        {"America/New_York", 1704074400, "Sun, 31 Dec 2023 21:00:00 -0500"},
        {"Pacific/Chatham", 1704024000, "Mon, 1 Jan 2024 01:45:00 +1345"},
        {"Asia/Kolkata", 1710446400, "Fri, 15 Mar 2024 01:30:00 +0530"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(InZone(row.zone, [&] { return RFC822Date(row.when); }), row.expected) << row.zone;
}

// Pago Pago (-1100) and Kiritimati (+1400): at any hour one of them is on
// another day than UTC.
TEST(Stamps, NowMatchesStrftimeInZones)
{
    for (const char* zone : {"UTC", "America/New_York", "Asia/Kolkata", "Pacific/Chatham",
                             "Pacific/Pago_Pago", "Pacific/Kiritimati"}) {
        std::string both = InZone(zone, [] {
            for (;;) {  // until the three stamps and the expected ones share a second
                time_t now = time(0);
                SString got = RFC822Date() + "|" + MessageIdDate() + "|" + LogFileDate();
                struct tm local = *localtime(&now);
                SString expected = Strftime("%a, ", &local) + SString(local.tm_mday) +
                                   Strftime(" %b %Y %H:%M:%S %z|", &local) +
                                   Strftime("%Y%m%d%H%M%S|", gmtime(&now)) +
                                   Strftime("%Y%m%d%H%M%S", &local);
                if (time(0) == now)
                    return got + "\n" + expected;
            }
        });
        size_t split = both.find('\n');
        ASSERT_NE(split, std::string::npos) << zone;
        EXPECT_EQ(both.substr(0, split), both.substr(split + 1)) << zone;
    }
}
