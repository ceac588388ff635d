// Error reports as spool files and on the standard error stream, and the
// out-of-memory handler.
#include "halyard.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <regex>
#include <thread>

#include "Sdatetime.h"
#include "Sprocess.h"
#include "spool_fixture.h"

// Resolves to the address sanitizer's runtime when one is linked in.
extern "C" void __asan_init() __attribute__((weak));

namespace {

class Reports : public SpoolTest {};

// Both counters start at 1 in a fresh process (the death test re-executes the
// program); a report of each function within one second shares the id ".1",
// and the later file wins.
TEST_F(Reports, NewReportIdsCountPerFunction)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            auto now = std::chrono::system_clock::now().time_since_epoch();
            std::this_thread::sleep_for(std::chrono::milliseconds(1020) - now % std::chrono::seconds(1));
            errno = 0;
            ProcessError("first", "Main", "a");
            ProcessError("second", "Main", "b");
            ProcessNotifyError(SControl(), "third", "Main", "c");
            SString id = MessageIdDate() + "." + ProcessIdString();
            SString names = Names("control");
            bool ok = names == id + ".1-Control " + id + ".2-Control"
                && Text("control/" + id + ".1-Control").Index("(third)") >= 0;
            fputs(ok ? "" : names.Data(), stderr);
            TearDown();  // the re-executed child has a root of its own
            _exit(ok ? 0 : 1);
        },
        testing::ExitedWithCode(0), "^$");
}

TEST_F(Reports, ReportsGoToTheSpoolOrToStderr)
{
    SControl control, handled;
    SString("Function: Deliver\nControl-Type: Message\n") >> control;
    control.PutFilename("m1");
    SStringList lines("line 1");
    lines.Push("line 2");
    errno = ENOENT;
    ProcessError(control, "cannot open", "Deliver", lines);
    EXPECT_EQ(SString("Function: Error-Handler\nControl-Type: Message\nError: relay:Deliver (cannot open)\n"
                      "Error-Text: line 1\nError-Text: line 2\nError-Number: 2\nTrace: relay\n"),
              Text("control/m1-Control"));
    EXPECT_EQ("m1\nError-Handler\nMessage\n", dispatcher.Next(1000));

    // A control already through the error handler gets one stderr line, no file.
    handled["Trace:"] = SStringList("Error-Handler");
    testing::internal::CaptureStderr();
    ProcessNotifyError(handled, "lost", "Notify", lines);
    std::string line = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(std::regex_match(line, std::regex("[0-9]{14}:relay:ProcessNotifyError:line 1line 2\n"))) << line;
    EXPECT_EQ(SString("m1-Control"), Names("control"));

    setenv("Tarnwick", "/nonexistent", 1);
    testing::internal::CaptureStderr();
    errno = EACCES;
    ProcessError("disk full", "Spool", "t");
    EXPECT_EQ("Function: Error-Handler\nControl-Type: Error\nPriority: 1\n"
              "Error: relay:Spool (disk full)\nError-Text: t\nError-Number: 13\nTrace: relay\n\n",
              testing::internal::GetCapturedStderr());
}

TEST(NewHandlerDeathTest, FailedAllocationExitsWith106)
{
    if (&__asan_init)
        GTEST_SKIP() << "the address sanitizer's allocator does not call the new-handler";
    EXPECT_EXIT(
        {
            SetNewHandler();
            volatile size_t huge = SIZE_MAX / 4;
            delete[] new char[huge];
        },
        testing::ExitedWithCode(106), "^$");
}

}  // namespace
