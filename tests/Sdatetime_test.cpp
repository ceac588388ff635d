#include "Sdatetime.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <functional>
#include <string>

namespace {

// Runs work in a child process whose TZ is zone and returns what it made,
// so that no zone leaks into the other tests.
std::string InZone(const char* zone, const std::function<std::string()>& work)
{
    int fds[2];
    if (pipe(fds) != 0)
        return "pipe failed";
    pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        setenv("TZ", zone, 1);
        tzset();
        std::string text = work();
        _exit(write(fds[1], text.data(), text.size()) == (ssize_t)text.size() ? 0 : 1);
    }
    close(fds[1]);
    std::string text;
    char buf[256];
    for (ssize_t n; (n = read(fds[0], buf, sizeof buf)) > 0;)
        text.append(buf, n);
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << zone;
    return text;
}

std::string Text(const SString& s)
{
    return s.Defined() ? std::string(s.Data(), s.Length()) : "(undefined)";
}

std::string Strftime(const char* format, const struct tm* tm)
{
    char buf[64];
    return std::string(buf, strftime(buf, sizeof buf, format, tm));
}

// Calls stamp and, from the same second, builds the expected text with
// expect; retried when the clock ticks in between.
std::string StampAndExpected(const std::function<SString()>& stamp,
                             const std::function<std::string(time_t)>& expect)
{
    for (;;) {
        time_t before = time(0);
        SString got = stamp();
        if (time(0) == before)
            return Text(got) + " | " + expect(before);
    }
}

std::string ExpectedRFC822(time_t now)
{
    struct tm* tm = localtime(&now);
    return Strftime("%a, ", tm) + std::to_string(tm->tm_mday) + Strftime(" %b %Y %H:%M:%S %z", tm);
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
        EXPECT_EQ(InZone(row.zone, [&] { return Text(RFC822Date(row.when)); }), row.expected)
            << row.zone << " " << row.when;
}

TEST(RFC822Date, NowMatchesStrftimeZone)
{
    for (const char* zone : {"UTC", "America/New_York", "Asia/Kolkata", "Pacific/Chatham",
                             "Pacific/Pago_Pago", "Pacific/Kiritimati"}) {
        std::string both = InZone(zone, [] {
            return StampAndExpected([] { return RFC822Date(); }, ExpectedRFC822);
        });
        size_t bar = both.find(" | ");
        ASSERT_NE(bar, std::string::npos) << zone;
        EXPECT_EQ(both.substr(0, bar), both.substr(bar + 3)) << zone;
    }
}

TEST(Stamps, MessageIdIsUtcAndLogFileIsLocal)
{
    std::string both = InZone("Asia/Kolkata", [] {
        return StampAndExpected([] { return MessageIdDate() + " " + LogFileDate(); }, [](time_t now) {
            return Strftime("%Y%m%d%H%M%S ", gmtime(&now)) + Strftime("%Y%m%d%H%M%S", localtime(&now));
        });
    });
    size_t bar = both.find(" | ");
    ASSERT_EQ(both.size(), 2 * 29 + 3u) << both;
    EXPECT_EQ(both.substr(0, bar), both.substr(bar + 3));
    EXPECT_NE(both.substr(0, 14), both.substr(15, 14)) << "UTC and +0530 never agree";
    EXPECT_NEAR(DaysSince1970(), time(0) / 86400, 1);
}
